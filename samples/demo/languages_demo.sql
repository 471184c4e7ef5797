-- Demo content of a language-definition database; runs after languages.sql.
-- The numbers are the Windows language identifiers, as in real language-definition
-- databases; the help-text databases number their languages the same way.
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (1033, 'English', 'Arial 10 400', '00000409', 1252, NULL);
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (1031, 'Deutsch', 'Arial 10 400', '00000407', 1252, NULL);
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (1032, 'Greek', 'Arial 10 400', '00000408', 1253, NULL);
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (1049, 'Russian', 'Arial 10 400', '00000419', 1251, NULL);
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (1041, 'Japanese', 'MS-Gothic 10 400', '00000411', 932, NULL);
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (1036, 'Francais', 'Arial 10 400', '0000040C', 1252, NULL);
