#include "importer/Workbook.h"

#include "common/FileIo.h"
#include "importer/WorkbookFormats.h"

#include <cmath>
#include <cstring>

namespace ht
{

namespace
{

quint64 key(quint32 row, quint32 column)
{
    return (quint64(row) << 32) | column;
}

bool startsWith(const QByteArray &bytes, const char *magic, int length)
{
    return bytes.size() >= length && std::memcmp(bytes.constData(), magic, length) == 0;
}

} // namespace

void Sheet::set(quint32 row, quint32 column, const QString &text)
{
    if (text.isEmpty())
        m_cells.remove(key(row, column));
    else
        m_cells.insert(key(row, column), text);
}

QString Sheet::cell(quint32 row, quint32 column) const
{
    return m_cells.value(key(row, column));
}

QString Workbook::cell(int sheet, qint64 row, qint64 column) const
{
    if (sheet < 0 || sheet >= sheetCount() || row < 0 || column < 0 || row > 0xFFFFFFFFLL || column > 0xFFFFFFFFLL)
        return {};
    return m_sheets[size_t(sheet)].cell(quint32(row), quint32(column));
}

QString numberText(double value)
{
    if (!std::isfinite(value))
        return QString::number(value);
    if (value == std::floor(value) && std::fabs(value) < 1e15)
        return QString::number(qlonglong(value));
    return QString::number(value, 'g', 15);
}

void refuseWorkbook(const QString &name, const QString &why)
{
    throw WorkbookError(
        (QStringLiteral("The workbook \"") + name + QStringLiteral("\" ") + why + QLatin1Char('.')).toStdString());
}

Workbook Workbook::open(const QString &path)
{
    QByteArray bytes;
    QString error;
    switch (readRegularFile(path, kMaxWorkbookBytes, true, bytes, &error)) {
    case FileRead::Ok:
        break;
    case FileRead::Missing:
        refuseWorkbook(path, QStringLiteral("does not exist"));
    case FileRead::NotRegular:
        refuseWorkbook(path, QStringLiteral("is not a file"));
    case FileRead::TooLarge:
        refuseWorkbook(path, QStringLiteral("is too large to be an item list"));
    case FileRead::Failed:
        refuseWorkbook(path, QStringLiteral("cannot be read: ") + error);
    }
    return read(bytes, path);
}

Workbook Workbook::read(const QByteArray &bytes, const QString &name)
{
    Workbook book;
    if (bytes.isEmpty())
        refuseWorkbook(name, QStringLiteral("is empty"));
    if (startsWith(bytes, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8)) {
        readBiffWorkbook(bytes, name, book);
    } else if (startsWith(bytes, "PK\x03\x04", 4)) {
        readXlsxWorkbook(bytes, name, book);
    } else if (bytes.size() >= 4 && uchar(bytes[0]) == 0x09 &&
               (bytes[1] == 0x00 || bytes[1] == 0x02 || bytes[1] == 0x04)) {
        // A bare workbook stream without the compound file: Excel 2, 3 or 4.
        refuseWorkbook(name, QStringLiteral("was saved by an Excel version older than Excel 5, which cannot be read; "
                                            "save it as an Excel 97-2003 or .xlsx workbook"));
    } else {
        refuseWorkbook(name, QStringLiteral("is not an Excel workbook (.xls or .xlsx)"));
    }
    if (book.m_sheets.empty())
        refuseWorkbook(name, QStringLiteral("holds no worksheet"));
    return book;
}

} // namespace ht
