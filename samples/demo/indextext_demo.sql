-- Demo content of an index-text database; runs after indextext.sql. The alarm
-- template's address Feeder.Motor.Speed resolves here in all four demo languages,
-- in the columns of their numbers (L1033 English, L1031 German, L1032 Greek, L1049 Russian).
INSERT INTO TidxGroups (ID, ParentID, Name) VALUES (1, 0, 'Feeder');
INSERT INTO TidxGroups (ID, ParentID, Name) VALUES (2, 1, 'Motor');
INSERT INTO TidxGroups (ID, ParentID, Name) VALUES (3, 0, 'Sealer');
INSERT INTO TidxTexts (ID, ParentID, Name, L1033, L1031, L1032, L1049) VALUES (1, 2, 'Speed', 'Feeder speed in cycles per minute', 'Zuführgeschwindigkeit in Takten pro Minute', 'Ταχύτητα τροφοδότη σε κύκλους ανά λεπτό', 'Скорость подачи в тактах в минуту');
INSERT INTO TidxTexts (ID, ParentID, Name, L1033, L1031, L1032, L1049) VALUES (2, 3, 'Temperature', 'Sealing temperature', 'Siegeltemperatur', 'Θερμοκρασία σφράγισης', 'Температура запайки');
