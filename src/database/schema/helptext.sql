-- The help-text database: alarms and warnings of up to five machines, their texts
-- in every language present, and the item counts per machine.
-- Every definition table holds five blocks of rows, one block per machine; a
-- row of machine type "0" is free. New databases start with all blocks free.
-- Text keys compare without regard to case, as the Access databases did.

CREATE TABLE AlarmDefinition (
    AlarmID INTEGER PRIMARY KEY,
    MachineType TEXT COLLATE NOCASE,
    AlarmNo INTEGER,
    Sensor TEXT,
    Cam TEXT,
    CPU TEXT,
    Rejects TEXT
);
CREATE INDEX AlarmDefinitionMachine ON AlarmDefinition (MachineType, AlarmNo);

CREATE TABLE AlarmText (
    Alarm_ID INTEGER NOT NULL,
    Language INTEGER NOT NULL,
    Device TEXT,
    Result TEXT,
    Function TEXT,
    PRIMARY KEY (Alarm_ID, Language)
);

CREATE TABLE WarningDefinition (
    WarningID INTEGER PRIMARY KEY,
    MachineType TEXT COLLATE NOCASE,
    WarningNo INTEGER
);
CREATE INDEX WarningDefinitionMachine ON WarningDefinition (MachineType, WarningNo);

CREATE TABLE WarningText (
    Warning_ID INTEGER NOT NULL,
    Language INTEGER NOT NULL,
    Function TEXT,
    PRIMARY KEY (Warning_ID, Language)
);

-- The languages present: Language is the number used in the text tables.
CREATE TABLE Language (
    Language INTEGER PRIMARY KEY,
    Name TEXT COLLATE NOCASE,
    Font VARCHAR(255),
    KBLayout TEXT
);

CREATE TABLE Discription (
    DiscriptionID INTEGER NOT NULL,
    Language INTEGER NOT NULL,
    Text TEXT,
    PRIMARY KEY (DiscriptionID, Language)
);

-- Items per machine of each kind: 256 standard items plus those an import added.
CREATE TABLE DBSys (
    Item TEXT COLLATE NOCASE PRIMARY KEY,
    Data TEXT
);
INSERT INTO DBSys (Item, Data) VALUES ('MaxLenAlarm', '256');
INSERT INTO DBSys (Item, Data) VALUES ('MaxLenWarning', '256');
INSERT INTO DBSys (Item, Data) VALUES ('MaxLenMaterialChange', '1000');

-- Five free blocks: IDs 1..1280, numbers 1..256 in every block.
WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 5 * 256)
INSERT INTO AlarmDefinition (AlarmID, MachineType, AlarmNo)
SELECT i, '0', (i - 1) % 256 + 1 FROM n;

WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 5 * 256)
INSERT INTO WarningDefinition (WarningID, MachineType, WarningNo)
SELECT i, '0', (i - 1) % 256 + 1 FROM n;
