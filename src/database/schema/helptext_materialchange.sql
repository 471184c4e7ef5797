-- The optional material-change tables of the help-text database (run after
-- helptext.sql): five free blocks of 1000 material changes.

CREATE TABLE MaterialChangeDefinition (
    MaterialChangeID INTEGER PRIMARY KEY,
    MachineType TEXT COLLATE NOCASE,
    MaterialChangeNo INTEGER
);
CREATE INDEX MaterialChangeDefinitionMachine ON MaterialChangeDefinition (MachineType, MaterialChangeNo);

CREATE TABLE MaterialChangeText (
    MaterialChange_ID INTEGER NOT NULL,
    Language INTEGER NOT NULL,
    Text TEXT,
    PRIMARY KEY (MaterialChange_ID, Language)
);

WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 5 * 1000)
INSERT INTO MaterialChangeDefinition (MaterialChangeID, MachineType, MaterialChangeNo)
SELECT i, '0', (i - 1) % 1000 + 1 FROM n;
