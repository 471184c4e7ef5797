-- The language-definition database: every language the system knows.
-- Font holds a font specification ("Arial 10 400"), KBLayout the keyboard layout
-- identifier, CodePage the Windows code page of the language's texts. SubstBy,
-- when set, names the language that stands in for this one.

CREATE TABLE LookupLanguages (
    Language INTEGER PRIMARY KEY,
    Name TEXT COLLATE NOCASE,
    Font VARCHAR(255),
    KBLayout TEXT,
    CodePage INTEGER,
    SubstBy INTEGER
);
CREATE INDEX LookupLanguagesName ON LookupLanguages (Name);
