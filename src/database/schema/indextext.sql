-- The index-text database of the operator-panel software: texts in a tree of
-- groups, addressed by the dotted names from the outermost group down to the
-- text; column L<n> holds the text in language number n.

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
    L10 TEXT
);
CREATE INDEX TidxTextsParent ON TidxTexts (ParentID);
