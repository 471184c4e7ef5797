-- Help-text database as the page writer reads it.
CREATE TABLE AlarmDefinition (AlarmID INTEGER PRIMARY KEY, MachineType TEXT COLLATE NOCASE, AlarmNo INTEGER,
  Sensor TEXT, Cam TEXT, CPU TEXT, Rejects TEXT);
CREATE TABLE AlarmText (Alarm_ID INTEGER, Language INTEGER, Device TEXT, Result TEXT, "Function" TEXT);
CREATE TABLE WarningDefinition (WarningID INTEGER PRIMARY KEY, MachineType TEXT COLLATE NOCASE, WarningNo INTEGER);
CREATE TABLE WarningText (Warning_ID INTEGER, Language INTEGER, "Function" TEXT);
CREATE TABLE MaterialChangeDefinition (MaterialChangeID INTEGER PRIMARY KEY, MachineType TEXT COLLATE NOCASE,
  MaterialChangeNo INTEGER);
CREATE TABLE MaterialChangeText (MaterialChange_ID INTEGER, Language INTEGER, Text TEXT);
CREATE TABLE Language (Language INTEGER PRIMARY KEY, Name TEXT COLLATE NOCASE, Font TEXT, KBLayout TEXT);
