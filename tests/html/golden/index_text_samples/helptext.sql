INSERT INTO Language VALUES (1, 'English', 'Arial 10 400', '00000409');
INSERT INTO Language VALUES (2, 'German', 'Times New Roman 12 700', '00000407');
INSERT OR REPLACE INTO AlarmDefinition VALUES (31, 'M1', 7, 'S1', 'K1/K2', '', NULL);
INSERT INTO AlarmText VALUES (31, 1, 'Infeed', 'Stop', 'Jam');
INSERT INTO AlarmText VALUES (31, 2, 'Einlauf', 'Stopp', 'Stau im Einlauf/Band prüfen');
INSERT OR REPLACE INTO AlarmDefinition VALUES (32, 'M1', 8, 'S2', '', '', NULL);
INSERT INTO AlarmText VALUES (32, 2, 'Auslauf', 'Stopp', 'Stau im Auslauf');
