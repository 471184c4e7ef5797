// Imports into an Access help-text database keyed as Access keys it (primary keys
// on the IDs, on (item, Language), on Language.Language and DBSys.Item, and an
// index on AlarmDefinition.MachineType): imports into existing machines, a new
// machine bound to a free block and a rename, with every index rebuilt sound.
#include "ImportTestSupport.h"

#include "common/StatusDisplay.h"
#include "database/JetFile.h"
#include "database/jet/JetCheck.h"
#include "importer/DelMachine.h"
#include "importer/Importer.h"

namespace ht
{
namespace
{

// Device|Result|Function of an alarm's text and the alarm's Sensor, as libmdb reads the file.
QString alarmThroughLibmdb(const QString &path, int id, int language)
{
    QStringList found;
    const auto read = [&](const QString &table, const QStringList &key, const QVariantList &values,
                          const QStringList &wanted) {
        QStringList names;
        JetFile::open(path)->readTable(
            table,
            [&](const std::vector<JetColumn> &columns) {
                for (const JetColumn &c : columns)
                    names << c.name;
            },
            [&](const QVariantList &row) {
                for (int i = 0; i < key.size(); ++i)
                    if (row.value(int(names.indexOf(key[i]))).toLongLong() != values[i].toLongLong())
                        return;
                for (const QString &w : wanted)
                    found << row.value(int(names.indexOf(w))).toString();
            });
    };
    read(QStringLiteral("AlarmText"), {QStringLiteral("Alarm_ID"), QStringLiteral("Language")}, {id, language},
         {QStringLiteral("Device"), QStringLiteral("Result"), QStringLiteral("Function")});
    read(QStringLiteral("AlarmDefinition"), {QStringLiteral("AlarmID")}, {id}, {QStringLiteral("Sensor")});
    return found.join(u'|');
}

TEST(ImportAccessKeys, IntoExistingAndNewMachinesWithTheirKeysKeptSound)
{
    test::ImportWorkspace w;
    test::writeFileBytes(w.db(), test::readFileBytes(test::sourceDir() + "/tests/data/jet/helptext_keys.mdb"));
    ASSERT_EQ(CheckConnection(w.t.ctx, w.db()), w.db());
    HeadlessStatus status;
    Importer importer(w.t.ctx, &status,
                      [](const QString &, const QString &, const QString &) { return AnswerReplaceAll; });
    const auto request = [](const QString &machine) {
        ImportRequest r;
        r.machine = machine;
        r.language = QStringLiteral("Greek");
        r.source = {test::workbook(QStringLiteral("layout-plain.xlsx")), 2, 1, QStringLiteral("0")};
        return r;
    };
    const auto lastMessage = [&] { return w.t.ui.messageTexts().value(w.t.ui.messageTexts().size() - 1); };

    ASSERT_TRUE(importer.MainProc(request(QStringLiteral("P200")))) << qPrintable(lastMessage());
    EXPECT_EQ(jet::checkStructure(jet::Image(test::readFileBytes(w.db()), w.db())), QStringList());
    EXPECT_EQ(alarmThroughLibmdb(w.db(), 256 + 5, 1032), "Συσκευή 5|Αποτέλεσμα 5|Λειτουργία 5|B5");

    // A new machine binds free rows and a rename changes them: both change the indexed MachineType.
    ASSERT_TRUE(importer.MainProc(request(QStringLiteral("P300")))) << qPrintable(lastMessage());
    ASSERT_TRUE(renameMachineNamed(w.t.ctx, QStringLiteral("P300"), QStringLiteral("P310")))
        << qPrintable(lastMessage());
    EXPECT_EQ(jet::checkStructure(jet::Image(test::readFileBytes(w.db()), w.db())), QStringList());
    EXPECT_EQ(alarmThroughLibmdb(w.db(), 2 * 256 + 5, 1032), "Συσκευή 5|Αποτέλεσμα 5|Λειτουργία 5|B5");

    // A machine name the indexed MachineType cannot take as a key (a character
    // outside the key encoder's): the job fails, the file stays byte for byte.
    const QByteArray before = test::readFileBytes(w.db());
    EXPECT_FALSE(importer.MainProc(request(QString::fromUtf8("Maschine Größe"))));
    EXPECT_TRUE(test::readFileBytes(w.db()) == before);
    EXPECT_TRUE(lastMessage().contains("cannot take this row")) << qPrintable(lastMessage());
}

} // namespace
} // namespace ht
