// convert-to-sqlite and the reading of Access files: an empty text stays
// empty and a NULL stays NULL, and the copy carries the Access file's keys.
#include "common/FileIo.h"
#include "database/HelpTextFixture.h"
#include "database/JetFile.h"
#include "database/jet/JetImage.h"
#include "database/jet/JetTable.h"

#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

// A text read as a null QString stands for NULL, as the SQLite layer binds it.
bool isNullValue(const QVariant &v)
{
    return v.isNull() || (v.typeId() == QMetaType::QString && v.toString().isNull());
}

} // namespace

TEST(JetConvert, EmptyAndNullTextsStayApartInEveryReading)
{
    QTemporaryDir dir;
    const QString jetPath =
        writeIn(dir, QStringLiteral("keys.mdb"), readFileBytes(jetTestFile(QStringLiteral("helptext_keys"))));
    const struct {
        int alarm;
        QVariant device;
    } cases[] = {{1, QStringLiteral("")}, {2, QVariant()}, {3, QStringLiteral("B7")}};
    {
        auto db = Database::open(jetPath);
        Database::Transaction t(*db);
        for (const auto &c : cases)
            db->exec(QStringLiteral("UPDATE AlarmText SET Device = ? WHERE Alarm_ID = ?"), {c.device, c.alarm});
        t.commit();
    }
    const QString sqlitePath = dir.filePath(QStringLiteral("converted.sqlite"));
    convertJetToSqlite(jetPath, sqlitePath);

    // What libmdb reads (Access files of other versions go that way).
    std::map<int, QVariant> libmdb;
    int id = -1, device = -1;
    JetFile::open(jetPath)->readTable(
        QStringLiteral("AlarmText"),
        [&](const std::vector<JetColumn> &columns) {
            for (int i = 0; i < int(columns.size()); ++i) {
                id = columns[size_t(i)].name == QLatin1String("Alarm_ID") ? i : id;
                device = columns[size_t(i)].name == QLatin1String("Device") ? i : device;
            }
        },
        [&](const QVariantList &row) { libmdb[row[id].toInt()] = row[device]; });

    for (const QString &path : {jetPath, sqlitePath}) {
        auto db = Database::open(path, Database::Mode::ReadOnly);
        for (const auto &c : cases) {
            const Recordset rs = db->query(
                QStringLiteral("SELECT Device IS NULL, Device FROM AlarmText WHERE Alarm_ID = ? AND Language = 1031"),
                {c.alarm});
            ASSERT_EQ(rs.recordCount(), 1);
            EXPECT_EQ(rs.value(0).toBool(), c.device.isNull()) << path.toStdString() << " alarm " << c.alarm;
            EXPECT_EQ(rs.value(1).toString(), c.device.toString()) << path.toStdString() << " alarm " << c.alarm;
            EXPECT_EQ(isNullValue(libmdb[c.alarm]), c.device.isNull()) << "libmdb, alarm " << c.alarm;
            EXPECT_EQ(libmdb[c.alarm].toString(), c.device.toString()) << "libmdb, alarm " << c.alarm;
        }
    }
}
