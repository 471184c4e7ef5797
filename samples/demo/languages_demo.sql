-- Demo content of a language-definition database; runs after languages.sql.
-- The numbers are the Windows language identifiers, as in real language-definition
-- databases; the help-text databases number their languages the same way.
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (1033, 'English', 'Arial 10 400', '1033', 1252, NULL);
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (1031, 'Deutsch', 'Arial 10 400', '1031', 1252, NULL);
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (1032, 'Greek', 'Arial 10 400', '1032', 1253, NULL);
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (1049, 'Russian', 'Arial 10 400', '1049', 1251, NULL);
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (1041, 'Japanese', 'MS-Gothic 10 400', '1041', 932, NULL);
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (1036, 'Francais', 'Arial 10 400', '1036', 1252, NULL);
