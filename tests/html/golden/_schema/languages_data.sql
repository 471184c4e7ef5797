-- The languages the cases use, in the language-definition database.
INSERT INTO LookupLanguages VALUES (1, 'English', 'Arial 10 400', '00000409', 1252, NULL);
INSERT INTO LookupLanguages VALUES (2, 'German', 'Arial 10 400', '00000407', 1252, NULL);
INSERT INTO LookupLanguages VALUES (3, 'Russian', 'Times New Roman 10 700', '00000419', 1251, NULL);
