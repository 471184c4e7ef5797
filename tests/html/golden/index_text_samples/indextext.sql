INSERT INTO TidxGroups VALUES (1, 0, 'Feeder');
INSERT INTO TidxGroups VALUES (2, 1, 'Motor');
INSERT INTO TidxTexts VALUES (1, 2, 'Speed', 'Belt speed', 'Bandgeschwindigkeit', NULL);
