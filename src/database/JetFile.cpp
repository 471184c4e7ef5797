#include "database/JetFile.h"

#include "database/Database.h"

#include <QDate>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <cmath>
#include <cstring>

// The libmdb 1.0.0 header needs glib first and is plain C.
#include <glib.h>
extern "C" {
#include <mdbtools.h>
}

namespace ht
{

namespace
{

// Values longer than libmdb's bind size are cut silently; memo texts set it per value.
constexpr size_t kMinBindSize = 1024 * 1024;
constexpr int kOleBufferSize = 64 * 1024; // one LVAL page at most, with room to spare

[[noreturn]] void jetFail(const QString &path, const QString &what)
{
    throw DbError(QStringLiteral("%1 (%2)").arg(what, path).toStdString());
}

// Header checks libmdb does not make: a damaged file must be refused before libmdb reads it.
void validateJetFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        jetFail(path, QStringLiteral("Cannot read the Jet database"));
    const QByteArray head = file.read(0x20);
    const QByteArray engine = head.mid(4, 15);
    if (head.size() < 0x20 || (engine != "Standard Jet DB" && engine != "Standard ACE DB"))
        jetFail(path, QStringLiteral("Not a Jet database"));
    const qint64 pageSize = head[0x14] == 0 ? 2048 : 4096; // Jet 3 files use 2 KiB pages
    const qint64 size = file.size();
    // Page 0 is the header, page 2 holds the catalog's table definition.
    if (size % pageSize != 0 || size < 3 * pageSize)
        jetFail(path, QStringLiteral("The Jet database is damaged or incomplete (size %1 bytes)").arg(size));
}

QString fromUtf8AndFree(char *text)
{
    if (!text)
        return QString();
    QString s = QString::fromUtf8(text);
    g_free(text);
    return s;
}

// Jet dates count days from 1899-12-30; the fraction is the time of day, also for negative days.
QString jetDateToIso(double value)
{
    if (!std::isfinite(value) || std::fabs(value) > 3e6)
        return QString();
    const double days = std::trunc(value);
    qint64 seconds = std::llround(std::fabs(value - days) * 86400.0);
    QDate date = QDate(1899, 12, 30).addDays(qint64(days));
    if (seconds >= 86400) { // rounding up to midnight
        seconds -= 86400;
        date = date.addDays(days < 0 ? -1 : 1);
    }
    return QDateTime(date, QTime(0, 0).addSecs(int(seconds))).toString(Qt::ISODate);
}

QString sqlTypeFor(const MdbColumn *col)
{
    switch (col->col_type) {
    case MDB_TEXT:
    case MDB_MEMO:
    case MDB_REPID:
        return QStringLiteral("TEXT COLLATE NOCASE");
    case MDB_BOOL:
    case MDB_BYTE:
    case MDB_INT:
    case MDB_LONGINT:
    case MDB_COMPLEX:
        return QStringLiteral("INTEGER");
    case MDB_FLOAT:
    case MDB_DOUBLE:
    case MDB_MONEY:
    case MDB_NUMERIC:
        return QStringLiteral("REAL");
    case MDB_DATETIME:
        return QStringLiteral("TEXT");
    default:
        return QStringLiteral("BLOB");
    }
}

struct TableDefGuard {
    MdbTableDef *table;
    std::vector<std::vector<char>> buffers;
    ~TableDefGuard()
    {
        if (table)
            mdb_free_tabledef(table); // unbinds nothing; buffers outlive it below
    }
};

} // namespace

struct JetFile::Handle {
    QString path;
    MdbHandle *mdb = nullptr;
    std::vector<MdbCatalogEntry *> tables; // user tables, owned by mdb's catalog
    ~Handle()
    {
        if (mdb)
            mdb_close(mdb);
    }
};

JetFile::JetFile(std::unique_ptr<Handle> handle) : h(std::move(handle)) {}
JetFile::~JetFile() = default;

std::unique_ptr<JetFile> JetFile::open(const QString &path)
{
    if (!QFileInfo::exists(path))
        jetFail(path, QStringLiteral("Database file not found"));
    validateJetFile(path);
    auto handle = std::make_unique<Handle>();
    handle->path = path;
    handle->mdb = mdb_open(QFile::encodeName(path).constData(), MDB_NOFLAGS);
    if (!handle->mdb)
        jetFail(path, QStringLiteral("libmdb cannot open the Jet database"));
    mdb_set_bind_size(handle->mdb, kMinBindSize);
    if (!mdb_read_catalog(handle->mdb, MDB_TABLE))
        jetFail(path, QStringLiteral("The catalog of the Jet database cannot be read"));
    for (guint i = 0; i < handle->mdb->num_catalog; ++i) {
        auto *entry = static_cast<MdbCatalogEntry *>(g_ptr_array_index(handle->mdb->catalog, i));
        if (entry->object_type == MDB_TABLE && mdb_is_user_table(entry))
            handle->tables.push_back(entry);
    }
    return std::unique_ptr<JetFile>(new JetFile(std::move(handle)));
}

QStringList JetFile::tableNames() const
{
    QStringList names;
    for (const MdbCatalogEntry *entry : h->tables)
        names << QString::fromUtf8(entry->object_name);
    return names;
}

QString JetFile::findTable(const QString &name) const
{
    for (const QString &table : tableNames())
        if (table.compare(name, Qt::CaseInsensitive) == 0)
            return table;
    return QString();
}

void JetFile::readTable(const QString &table, const std::function<void(const std::vector<JetColumn> &)> &onColumns,
                        const std::function<void(const QVariantList &)> &onRow)
{
    MdbCatalogEntry *entry = nullptr;
    for (MdbCatalogEntry *e : h->tables)
        if (QString::fromUtf8(e->object_name) == table)
            entry = e;
    if (!entry)
        jetFail(h->path, QStringLiteral("No table %1 in the Jet database").arg(table));

    MdbHandle *mdb = h->mdb;
    TableDefGuard guard{mdb_read_table(entry), {}};
    MdbTableDef *t = guard.table;
    if (!t || !mdb_read_columns(t) || t->num_cols != t->columns->len)
        jetFail(h->path, QStringLiteral("The definition of table %1 cannot be read").arg(table));

    std::vector<JetColumn> columns;
    std::vector<MdbColumn *> cols;
    for (guint i = 0; i < t->num_cols; ++i) {
        auto *col = static_cast<MdbColumn *>(g_ptr_array_index(t->columns, i));
        cols.push_back(col);
        columns.push_back({QString::fromUtf8(col->name), col->col_type, sqlTypeFor(col), col->is_long_auto != 0});
        // Only OLE values need a bound buffer (their 12-byte header); the rest is converted from the page.
        if (col->col_type == MDB_OLE) {
            guard.buffers.emplace_back(kOleBufferSize);
            mdb_bind_column(t, int(i) + 1, guard.buffers.back().data(), nullptr);
        }
    }
    onColumns(columns);

    mdb_rewind_table(t);
    while (mdb_fetch_row(t)) {
        QVariantList row;
        row.reserve(int(cols.size()));
        for (MdbColumn *col : cols) {
            const int start = col->cur_value_start;
            const int len = col->cur_value_len;
            if (col->col_type == MDB_BOOL) { // libmdb keeps a Boolean in the null mask
                row << QVariant(qlonglong(len ? 0 : -1));
                continue;
            }
            if (len <= 0 || start < 0 || start + len > int(mdb->fmt->pg_size)) {
                const bool text = col->col_type == MDB_TEXT || col->col_type == MDB_MEMO;
                row << (text ? QVariant(QString()) : QVariant());
                continue;
            }
            const unsigned char *page = mdb->pg_buf;
            switch (col->col_type) {
            case MDB_BYTE:
                row << QVariant(qlonglong(mdb_get_byte(mdb->pg_buf, start)));
                break;
            case MDB_INT:
                row << QVariant(qlonglong(qint16(mdb_get_int16(mdb->pg_buf, start))));
                break;
            case MDB_LONGINT:
            case MDB_COMPLEX:
                row << QVariant(qlonglong(qint32(mdb_get_int32(mdb->pg_buf, start))));
                break;
            case MDB_FLOAT:
                row << QVariant(double(mdb_get_single(mdb->pg_buf, start)));
                break;
            case MDB_DOUBLE:
                row << QVariant(mdb_get_double(mdb->pg_buf, start));
                break;
            case MDB_DATETIME:
                row << QVariant(jetDateToIso(mdb_get_double(mdb->pg_buf, start)));
                break;
            case MDB_MONEY: {
                qint64 raw = 0;
                std::memcpy(&raw, page + start, sizeof raw); // little-endian, 1/10000 units
                row << QVariant(double(raw) / 10000.0);
                break;
            }
            case MDB_NUMERIC:
                row << QVariant(
                    fromUtf8AndFree(mdb_numeric_to_string(mdb, start, col->col_scale, col->col_prec)).toDouble());
                break;
            case MDB_TEXT:
            case MDB_MEMO:
            case MDB_REPID: {
                if (col->col_type == MDB_MEMO && len >= MDB_MEMO_OVERHEAD) {
                    // UTF-8 needs at most 3 bytes per stored byte (compressed text is 1 byte per letter).
                    const size_t stored = size_t(mdb_get_int32(mdb->pg_buf, start)) & 0x3fffffffu;
                    mdb_set_bind_size(mdb, std::max(kMinBindSize, stored * 3 + 16));
                }
                row << QVariant(fromUtf8AndFree(mdb_col_to_string(mdb, mdb->pg_buf, start, col->col_type, len)));
                mdb_set_bind_size(mdb, kMinBindSize);
                break;
            }
            case MDB_BINARY:
                row << QVariant(QByteArray(reinterpret_cast<const char *>(page + start), len));
                break;
            case MDB_OLE: {
                size_t size = 0;
                void *data = mdb_ole_read_full(mdb, col, &size);
                row << QVariant(QByteArray(static_cast<const char *>(data), qsizetype(size)));
                free(data);
                break;
            }
            default:
                row << QVariant();
                break;
            }
        }
        onRow(row);
    }
}

} // namespace ht
