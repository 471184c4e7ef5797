INSERT INTO TidxGroups VALUES (1, 0, 'Feeder');
INSERT INTO TidxGroups VALUES (2, 1, 'Motor');
INSERT INTO TidxTexts (ID, ParentID, Name, L1, L2, L3) VALUES (1, 2, 'Speed', 'Belt speed', 'Bandgeschwindigkeit', NULL);
