-- Demo content of a language-definition database; runs after languages.sql.
-- The numbers are the ones the demo help-text database uses for its languages.
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (1, 'English', 'Arial 10 400', '00000409', 1252, NULL);
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (2, 'Deutsch', 'Arial 10 400', '00000407', 1252, NULL);
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (3, 'Greek', 'Arial 10 400', '00000408', 1253, NULL);
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (4, 'Russian', 'Arial 10 400', '00000419', 1251, NULL);
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (5, 'Japanese', 'MS-Gothic 10 400', '00000411', 932, NULL);
INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage, SubstBy) VALUES (6, 'Francais', 'Arial 10 400', '0000040C', 1252, NULL);
