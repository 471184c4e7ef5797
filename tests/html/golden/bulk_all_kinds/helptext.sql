INSERT INTO Language VALUES (1, 'English', 'Arial 10 400', '00000409');
INSERT INTO Language VALUES (2, 'German', 'Arial 10 400', '00000407');
INSERT INTO Language VALUES (3, 'Russian', 'Times New Roman 10 700', '00000419');
-- Machine "0" holds the free template rows: never a page, never a folder.
INSERT OR REPLACE INTO AlarmDefinition VALUES (1, '0', 1, 'B9', '', '', '');
INSERT INTO AlarmText VALUES (1, 1, 'Free', 'Free', 'Free row');
INSERT OR REPLACE INTO AlarmDefinition VALUES (11, 'M1', 1, 'B1/B2', '', 'C1/C2/C3/C4/C5', ' R1 ');
INSERT INTO AlarmText VALUES (11, 1, 'Motor', 'Stop', 'Check belt/ Restart drive');
INSERT INTO AlarmText VALUES (11, 2, 'Motor', 'Halt', 'Riemen prüfen');
-- Alarm 2: all texts empty in English (its generated page goes), only a device in German.
INSERT OR REPLACE INTO AlarmDefinition VALUES (12, 'M1', 2, NULL, NULL, NULL, NULL);
INSERT INTO AlarmText VALUES (12, 1, '', NULL, '  ');
INSERT INTO AlarmText VALUES (12, 2, 'X', '', '');
INSERT OR REPLACE INTO WarningDefinition VALUES (1, '0', 1);
INSERT INTO WarningText VALUES (1, 1, 'Free row');
INSERT OR REPLACE INTO WarningDefinition VALUES (11, 'M1', 1);
INSERT INTO WarningText VALUES (11, 1, 'Oil low');
INSERT INTO WarningText VALUES (11, 2, 'Öl niedrig/Nachfüllen');
-- Warning 2's English page carries the mark but is not UTF-16: saved by hand, so kept.
INSERT OR REPLACE INTO WarningDefinition VALUES (12, 'M1', 2);
INSERT INTO WarningText VALUES (12, 1, 'Filter');
-- M2 has warnings but no alarm rows: its folders are made when its first page is.
INSERT OR REPLACE INTO WarningDefinition VALUES (21, 'M2', 3);
INSERT INTO WarningText VALUES (21, 1, 'Door open');
INSERT OR REPLACE INTO MaterialChangeDefinition VALUES (11, 'M1', 1);
INSERT INTO MaterialChangeText VALUES (11, 1, 'Change reel' || char(13) || char(10) || 'then press start');
INSERT INTO MaterialChangeText VALUES (11, 3, 'Сменить рулон');
