-- The index-text database of the operator-panel software: texts in a tree of
-- groups, addressed by the dotted names from the outermost group down to the
-- text; column L<n> holds the text in language number n. Languages are numbered
-- as in the language-definition database: Windows language identifiers
-- (L1031 German, L1033 English, ...); the columns L1 to L10 serve older files.

CREATE TABLE TidxGroups (
    ID INTEGER PRIMARY KEY,
    ParentID INTEGER,
    Name TEXT COLLATE NOCASE
);
CREATE INDEX TidxGroupsParent ON TidxGroups (ParentID);

CREATE TABLE TidxTexts (
    ID INTEGER PRIMARY KEY,
    ParentID INTEGER,
    Name TEXT COLLATE NOCASE,
    L1 TEXT,
    L2 TEXT,
    L3 TEXT,
    L4 TEXT,
    L5 TEXT,
    L6 TEXT,
    L7 TEXT,
    L8 TEXT,
    L9 TEXT,
    L10 TEXT,
    L1031 TEXT,
    L1032 TEXT,
    L1033 TEXT,
    L1036 TEXT,
    L1041 TEXT,
    L1049 TEXT
);
CREATE INDEX TidxTextsParent ON TidxTexts (ParentID);
