-- The languages the importer's template databases offer from the start: those
-- of the language-definition database that comes with the program, with their
-- fonts and keyboard layouts. No text rows: an import makes those for the
-- language it writes.
INSERT INTO Language (Language, Name, Font, KBLayout) VALUES (1, 'English', 'Arial 10 400', '00000409');
INSERT INTO Language (Language, Name, Font, KBLayout) VALUES (2, 'Deutsch', 'Arial 10 400', '00000407');
INSERT INTO Language (Language, Name, Font, KBLayout) VALUES (3, 'Greek', 'Arial 10 400', '00000408');
INSERT INTO Language (Language, Name, Font, KBLayout) VALUES (4, 'Russian', 'Arial 10 400', '00000419');
INSERT INTO Language (Language, Name, Font, KBLayout) VALUES (5, 'Japanese', 'MS-Gothic 10 400', '00000411');
INSERT INTO Language (Language, Name, Font, KBLayout) VALUES (6, 'Francais', 'Arial 10 400', '0000040C');
