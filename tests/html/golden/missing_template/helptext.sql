INSERT INTO Language VALUES (1, 'English', 'Arial 10 400', '00000409');
INSERT OR REPLACE INTO AlarmDefinition VALUES (1, 'M1', 1, '', '', '', '');
INSERT OR REPLACE INTO WarningDefinition VALUES (1, 'M1', 1);
INSERT INTO WarningText VALUES (1, 1, 'Oil low');
