-- Demo content of a help-text database; runs after the schema scripts
-- helptext.sql and helptext_materialchange.sql. Two machines in the first two
-- blocks, four languages (Greek and Russian among them), a handful of translated items.
-- Languages carry the numbers of the language-definition database (languages_demo.sql),
-- the Windows language identifiers: a language has one number in every database.

INSERT INTO Language (Language, Name, Font, KBLayout) VALUES (1033, 'English', 'Arial 10 400', '1033');
INSERT INTO Language (Language, Name, Font, KBLayout) VALUES (1031, 'Deutsch', 'Arial 10 400', '1031');
INSERT INTO Language (Language, Name, Font, KBLayout) VALUES (1032, 'Greek', 'Arial 10 400', '1032');
INSERT INTO Language (Language, Name, Font, KBLayout) VALUES (1049, 'Russian', 'Arial 10 400', '1049');

-- Block 1 belongs to the cartoner CT400, block 2 to the filler FL220.
UPDATE AlarmDefinition SET MachineType = 'CT400' WHERE AlarmID BETWEEN 1 AND 256;
UPDATE AlarmDefinition SET MachineType = 'FL220' WHERE AlarmID BETWEEN 257 AND 512;
UPDATE WarningDefinition SET MachineType = 'CT400' WHERE WarningID BETWEEN 1 AND 256;
UPDATE WarningDefinition SET MachineType = 'FL220' WHERE WarningID BETWEEN 257 AND 512;
UPDATE MaterialChangeDefinition SET MachineType = 'CT400' WHERE MaterialChangeID BETWEEN 1 AND 1000;
UPDATE MaterialChangeDefinition SET MachineType = 'FL220' WHERE MaterialChangeID BETWEEN 1001 AND 2000;

-- Every definition row has one (still empty) text row per language.
INSERT INTO AlarmText (Alarm_ID, Language, Device, Result, Function)
SELECT AlarmID, Language, '', '', '' FROM AlarmDefinition, Language;
INSERT INTO WarningText (Warning_ID, Language, Function)
SELECT WarningID, Language, '' FROM WarningDefinition, Language;
INSERT INTO MaterialChangeText (MaterialChange_ID, Language, Text)
SELECT MaterialChangeID, Language, '' FROM MaterialChangeDefinition, Language;

-- Alarm definitions: "/" separates several values of one field.
UPDATE AlarmDefinition SET Sensor = 'B1/B2', Cam = 'K3', CPU = 'CPU1', Rejects = 'R1' WHERE AlarmID = 1;
UPDATE AlarmDefinition SET Sensor = 'B7', Cam = '', CPU = 'CPU1/CPU2', Rejects = '' WHERE AlarmID = 2;
UPDATE AlarmDefinition SET Sensor = 'B20/B21/B22', Cam = 'K1', CPU = 'CPU2', Rejects = 'R4' WHERE AlarmID = 257;

-- CT400 alarm 1
UPDATE AlarmText SET Device = 'Carton magazine', Result = 'Machine stops', Function = 'The carton magazine is empty./Refill the magazine and acknowledge the alarm.' WHERE Alarm_ID = 1 AND Language = 1033;
UPDATE AlarmText SET Device = 'Faltschachtelmagazin', Result = 'Maschine hält an', Function = 'Das Faltschachtelmagazin ist leer./Magazin auffüllen und Alarm quittieren.' WHERE Alarm_ID = 1 AND Language = 1031;
UPDATE AlarmText SET Device = 'Αποθήκη κουτιών', Result = 'Η μηχανή σταματά', Function = 'Η αποθήκη κουτιών είναι άδεια./Γεμίστε την αποθήκη και επιβεβαιώστε τον συναγερμό.' WHERE Alarm_ID = 1 AND Language = 1032;
-- CT400 alarm 2
UPDATE AlarmText SET Device = 'Main drive/Brake', Result = 'Emergency stop', Function = 'The main drive reports an overload./Check the brake and the belt tension.' WHERE Alarm_ID = 2 AND Language = 1033;
UPDATE AlarmText SET Device = 'Hauptantrieb/Bremse', Result = 'Not-Halt', Function = 'Der Hauptantrieb meldet Überlast./Bremse und Riemenspannung prüfen.' WHERE Alarm_ID = 2 AND Language = 1031;
-- FL220 alarm 1
UPDATE AlarmText SET Device = 'Filling valve', Result = 'Bottle rejected', Function = 'The filling valve did not close in time.' WHERE Alarm_ID = 257 AND Language = 1033;
UPDATE AlarmText SET Device = 'Βαλβίδα πλήρωσης', Result = 'Απόρριψη φιάλης', Function = 'Η βαλβίδα πλήρωσης δεν έκλεισε εγκαίρως.' WHERE Alarm_ID = 257 AND Language = 1032;

-- Warnings
UPDATE WarningText SET Function = 'Glue level low./Refill the glue tank soon.' WHERE Warning_ID = 1 AND Language = 1033;
UPDATE WarningText SET Function = 'Leimstand niedrig./Leimbehälter bald nachfüllen.' WHERE Warning_ID = 1 AND Language = 1031;
UPDATE WarningText SET Function = 'Χαμηλή στάθμη κόλλας.' WHERE Warning_ID = 1 AND Language = 1032;
UPDATE WarningText SET Function = 'Заканчивается клей./Скоро долейте клеевой бак.' WHERE Warning_ID = 1 AND Language = 1049;
UPDATE WarningText SET Function = 'Carton magazine almost empty./Refill it before the next batch.' WHERE Warning_ID = 2 AND Language = 1033;
UPDATE WarningText SET Function = 'Cap feeder almost empty.' WHERE Warning_ID = 257 AND Language = 1033;

-- Material change
UPDATE MaterialChangeText SET Text = 'Change the carton format:/1. Empty the magazine./2. Set the guide rails to the new size.' WHERE MaterialChange_ID = 1 AND Language = 1033;
UPDATE MaterialChangeText SET Text = 'Formatwechsel Faltschachtel:/1. Magazin leeren./2. Führungsschienen auf neues Format stellen.' WHERE MaterialChange_ID = 1 AND Language = 1031;
UPDATE MaterialChangeText SET Text = 'Change the bottle size at the star wheel.' WHERE MaterialChange_ID = 1001 AND Language = 1033;
