INSERT INTO Language VALUES (1, 'English', 'Arial 10 400', '00000409');
INSERT OR REPLACE INTO AlarmDefinition VALUES (1, 'M1', 1, 'S1', '', '', '');
INSERT INTO AlarmText VALUES (1, 1, 'Infeed', 'Stop', 'Jam');
INSERT OR REPLACE INTO AlarmDefinition VALUES (2, 'M1', 2, 'S2', '', '', '');
INSERT INTO AlarmText VALUES (2, 1, 'Outfeed', 'Stop', 'Jam');
