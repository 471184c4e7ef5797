#include "database/JetModel.h"

#include "database/JetFile.h"
#include "database/jet/JetCheck.h"

#include <gtest/gtest.h>

using namespace ht::jet;
using namespace Qt::StringLiterals;

namespace ht::test
{

const char *const kAccessFiles[7] = {"test2V2000",           "overflowTestV2000", "delTestV2000", "compIndexTestV2000",
                                     "testUnicodeCompV2003", "indexTestV2000",    "empty"};

Image loadImage(const QString &path)
{
    return Image(readFileBytes(path), path);
}

QString canonical(const QVariant &v)
{
    return v.typeId() == QMetaType::QByteArray ? QString::fromLatin1(v.toByteArray().toHex()) : v.toString();
}

// libmdb converts text as UCS-2: each half of a character beyond the BMP reads as "?".
QString libmdbText(QString text)
{
    for (QChar &c : text)
        if (c.isSurrogate())
            c = QLatin1Char('?');
    return text;
}

// Every user table as libmdb reads it: sorted rows of "column=value" fields, by table name.
std::map<QString, QStringList> readThroughLibmdb(const QString &path)
{
    std::map<QString, QStringList> tables;
    auto file = JetFile::open(path);
    for (const QString &table : file->tableNames()) {
        QStringList fields;
        QStringList &rows = tables[table];
        file->readTable(
            table,
            [&](const std::vector<JetColumn> &columns) {
                for (const JetColumn &c : columns)
                    fields << c.name;
            },
            [&](const QVariantList &row) {
                QStringList cells;
                for (int i = 0; i < row.size(); ++i)
                    cells << fields[i] + QLatin1Char('=') + canonical(row[i]);
                cells.sort();
                rows << cells.join(QLatin1Char('|'));
            });
        rows.sort();
    }
    return tables;
}

// The same from our own reader, with where each row lies.
std::map<QString, QStringList> Model::asLibmdbReadsIt(Editor &editor) const
{
    std::map<QString, QStringList> tables;
    for (const auto &[table, bySlot] : rows) {
        const std::vector<const Column *> columns = columnsInOrder(editor.table(table));
        QStringList &out = tables[table];
        for (const auto &[slot, values] : bySlot) {
            QStringList cells;
            for (size_t i = 0; i < columns.size(); ++i)
                cells << columns[i]->name + QLatin1Char('=') + libmdbText(canonical(values[qsizetype(i)]));
            cells.sort();
            out << cells.join(QLatin1Char('|'));
        }
        out.sort();
    }
    return tables;
}

Model readModel(Editor &editor)
{
    Model m;
    for (const QString &table : editor.tableNames()) {
        auto &bySlot = m.rows[table];
        editor.readRows(table, [&](RowPointer slot, const QVariantList &values) { bySlot[slot.packed()] = values; });
    }
    return m;
}

EditedCopy::EditedCopy(const QString &source)
{
    path = writeIn(dir, u"edited.mdb"_s, readFileBytes(source));
    Editor editor(path);
    model = readModel(editor);
}

void EditedCopy::edit(const std::function<void(Editor &, Model &)> &change)
{
    Editor editor(path);
    change(editor, model);
    editor.commit();
}

// Sound, and libmdb reads what the model says: the edits and everything else as it was.
void EditedCopy::verify(const std::string &where)
{
    const QStringList problems = checkStructure(loadImage(path));
    EXPECT_TRUE(problems.isEmpty()) << where << ": " << problems.join(QLatin1Char('\n')).toStdString();
    Editor editor(path);
    const Model reread = readModel(editor);
    for (const auto &[table, bySlot] : model.rows)
        for (const auto &[slot, values] : bySlot)
            for (qsizetype i = 0; i < values.size(); ++i)
                ASSERT_EQ(canonical(reread.rows.at(table).at(slot)[i]), canonical(values[i]))
                    << where << ": our own reader, table " << table.toStdString() << " column " << i;
    const auto expected = model.asLibmdbReadsIt(editor);
    const auto actual = readThroughLibmdb(path);
    ASSERT_EQ(expected.size(), actual.size()) << where;
    for (const auto &[table, rows] : expected) {
        QStringList missing, unexpected;
        for (const QString &row : rows)
            if (!actual.at(table).contains(row))
                missing << row;
        for (const QString &row : actual.at(table))
            if (!rows.contains(row))
                unexpected << row;
        if (missing.size() == 1 && unexpected.size() == 1) { // name the fields that differ
            const QStringList a = missing[0].split(QLatin1Char('|')), b = unexpected[0].split(QLatin1Char('|'));
            missing[0].clear();
            unexpected[0].clear();
            for (qsizetype i = 0; i < a.size() && i < b.size(); ++i)
                if (a[i] != b[i]) {
                    missing[0] += a[i].left(80) + QLatin1Char(' ');
                    unexpected[0] += b[i].left(80) + QLatin1Char(' ');
                }
        }
        EXPECT_TRUE(missing.isEmpty() && unexpected.isEmpty())
            << where << ", table " << table.toStdString() << "\nexpected but not read:\n"
            << missing.mid(0, 3).join(QLatin1Char('\n')).toStdString() << "\nread instead:\n"
            << unexpected.mid(0, 3).join(QLatin1Char('\n')).toStdString();
    }
}

void setValue(Editor &editor, Model &model, const QString &table, quint32 slot, const QString &column,
              const QVariant &value)
{
    const std::vector<const Column *> columns = columnsInOrder(editor.table(table));
    QVariantList values = model.rows[table][slot];
    for (size_t i = 0; i < columns.size(); ++i)
        if (columns[i]->name == column)
            values[qsizetype(i)] = value;
    editor.updateRow(table, RowPointer::unpack(slot), values);
    model.rows[table][slot] = values;
}

// Texts of the scripts help texts are written in; the last two are beyond the BMP.
const QString kScripts[kScriptCount] = {u"Plain Latin text for the compressible case"_s,
                                        u"Αλάρμ: ο αισθητήρας δεν αποκρίνεται"_s,
                                        u"Авария: датчик не отвечает"_s,
                                        u"警报：传感器无响应"_s,
                                        u"إنذار: المستشعر لا يستجيب"_s,
                                        u"Umlaute äöü ß und € Zeichen"_s,
                                        QString::fromUtf8("\xF0\x9D\x84\x9E Notenschlüssel \xF0\x9F\x98\x80")};

QString textOfLength(int length, int script)
{
    QString text;
    while (text.size() < length)
        text += kScripts[script % std::size(kScripts)] + QLatin1Char(' ');
    text.truncate(length);
    if (text.size() > 0 && text.back().isHighSurrogate())
        text.back() = QLatin1Char('x');
    return text;
}

QString dbErrorOf(const std::function<void()> &f)
{
    try {
        f();
    } catch (const DbError &e) {
        return QString::fromUtf8(e.what());
    }
    return QString();
}

} // namespace ht::test
