#include "database/JetFile.h"
#include "database/jet/JetValues.h"

#include "common/FileIo.h"
#include "database/Database.h"

#include <QDate>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

// The libmdb 1.0.0 header needs glib first and is plain C.
#include <glib.h>
extern "C" {
#include <mdbtools.h>
}

namespace ht
{

namespace
{

// Values longer than libmdb's bind size are cut silently; memo texts raise it per value.
constexpr size_t kMinBindSize = 1024 * 1024;
constexpr int kOleBufferSize = 64 * 1024; // an OLE chunk is one LVAL page at most
std::atomic<int> idleTimeoutMs{15000};

[[noreturn]] void jetFail(const QString &path, const QString &what)
{
    throw DbError(QStringLiteral("%1 (%2)").arg(what, path).toStdString());
}

// Header checks libmdb does not make: a file that cannot be a Jet file never reaches it.
void validateJetFile(const QString &path)
{
    QFile file;
    QString why;
    if (!openRegularFile(file, path, kMaxDatabaseBytes, &why))
        jetFail(path, QStringLiteral("Cannot read the Jet database: ") + why);
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

// ---- the stream from the reading child to the parent --------------------------------
// Tags: L table list, C columns, R row, E end of table, X error; values: N null,
// I integer, F floating, T Jet date, M numeric text, S UTF-8 text, B bytes.

class Sink
{
  public:
    explicit Sink(int fd) : m_fd(fd) {}
    void tag(char t) { m_buf.push_back(t); }
    void i64(qint64 v) { m_buf.append(reinterpret_cast<const char *>(&v), sizeof v); }
    void f64(double v) { m_buf.append(reinterpret_cast<const char *>(&v), sizeof v); }
    void bytes(const char *data, size_t len)
    {
        i64(qint64(len));
        m_buf.append(data, len);
        if (m_buf.size() > 64 * 1024)
            flush();
    }
    void text(const char *s) { bytes(s, std::strlen(s)); }
    void flush()
    {
        size_t done = 0;
        while (done < m_buf.size()) {
            const ssize_t n = ::write(m_fd, m_buf.data() + done, m_buf.size() - done);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                _exit(2);
            done += size_t(n);
        }
        m_buf.clear();
    }

  private:
    int m_fd;
    std::string m_buf;
};

class Source
{
  public:
    Source(const QByteArray &data, const QString &path) : m_data(data), m_path(path) {}
    bool atEnd() const { return m_pos >= m_data.size(); }
    char tag() { return *take(1); }
    qint64 i64()
    {
        qint64 v;
        std::memcpy(&v, take(sizeof v), sizeof v);
        return v;
    }
    double f64()
    {
        double v;
        std::memcpy(&v, take(sizeof v), sizeof v);
        return v;
    }
    QByteArray bytes()
    {
        const qint64 len = i64();
        if (len < 0 || len > m_data.size())
            malformed();
        return QByteArray(take(len), len);
    }
    QString text() { return QString::fromUtf8(bytes()); }
    [[noreturn]] void malformed() const { jetFail(m_path, QStringLiteral("The Jet database could not be read")); }

  private:
    const char *take(qint64 n)
    {
        if (n > m_data.size() - m_pos)
            malformed();
        const char *p = m_data.constData() + m_pos;
        m_pos += n;
        return p;
    }
    const QByteArray &m_data;
    QString m_path;
    qint64 m_pos = 0;
};

// Runs `body` in a child process and returns what it wrote. A child that crashes, stalls
// or writes far more than the file could hold is killed and the read fails.
QByteArray readInChild(const QString &path, const std::function<void(Sink &)> &body)
{
    const qint64 limit = std::max<qint64>(64LL << 20, QFileInfo(path).size() * 32);
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0)
        jetFail(path, QStringLiteral("Cannot start reading the Jet database"));
    const pid_t pid = fork();
    if (pid < 0) {
        ::close(fds[0]);
        ::close(fds[1]);
        jetFail(path, QStringLiteral("Cannot start reading the Jet database"));
    }
    if (pid == 0) {
        // libmdb reports damage on stdout/stderr by the megabyte; the parent gets errors as data.
        const int devnull = ::open("/dev/null", O_WRONLY);
        if (devnull >= 0) {
            dup2(devnull, STDOUT_FILENO);
            dup2(devnull, STDERR_FILENO);
        }
        std::signal(SIGPIPE, SIG_DFL);
        ::close(fds[0]);
        Sink sink(fds[1]);
        try {
            body(sink);
        } catch (const std::exception &e) {
            sink.tag('X');
            sink.text(e.what());
        } catch (...) {
            sink.tag('X');
            sink.text("unexpected failure");
        }
        sink.flush();
        _exit(0);
    }

    ::close(fds[1]);
    QByteArray out;
    QString failure;
    char buffer[65536];
    for (;;) {
        pollfd p{fds[0], POLLIN, 0};
        const int ready = ::poll(&p, 1, idleTimeoutMs.load());
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready == 0) {
            failure = QStringLiteral("Reading the Jet database stalled; the file is probably damaged");
            break;
        }
        const ssize_t n = ::read(fds[0], buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        out.append(buffer, n);
        if (out.size() > limit) {
            failure = QStringLiteral("Reading the Jet database produced more data than the file holds");
            break;
        }
    }
    ::close(fds[0]);
    if (!failure.isEmpty())
        ::kill(pid, SIGKILL);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (!failure.isEmpty())
        jetFail(path, failure);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        jetFail(path, QStringLiteral("The Jet database is damaged (reading it failed)"));
    return out;
}

// ---- child side: libmdb ---------------------------------------------------------------

struct MdbOpen {
    MdbHandle *mdb = nullptr;
    ~MdbOpen()
    {
        if (mdb)
            mdb_close(mdb);
    }
};

void openMdb(MdbOpen &open, const QByteArray &path)
{
    open.mdb = mdb_open(path.constData(), MDB_NOFLAGS);
    if (!open.mdb)
        throw std::runtime_error("libmdb cannot open the Jet database");
    mdb_set_bind_size(open.mdb, kMinBindSize); // before the catalog: it reads long properties too
    if (!mdb_read_catalog(open.mdb, MDB_TABLE))
        throw std::runtime_error("The catalog of the Jet database cannot be read");
}

std::vector<MdbCatalogEntry *> userTables(MdbHandle *mdb)
{
    std::vector<MdbCatalogEntry *> tables;
    for (guint i = 0; i < mdb->num_catalog; ++i) {
        auto *entry = static_cast<MdbCatalogEntry *>(g_ptr_array_index(mdb->catalog, i));
        if (entry->object_type == MDB_TABLE && mdb_is_user_table(entry))
            tables.push_back(entry);
    }
    return tables;
}

void listTablesChild(const QByteArray &path, Sink &sink)
{
    MdbOpen open;
    openMdb(open, path);
    const auto tables = userTables(open.mdb);
    sink.tag('L');
    sink.i64(qint64(tables.size()));
    for (const MdbCatalogEntry *entry : tables)
        sink.text(entry->object_name);
}

void sendValue(Sink &sink, MdbHandle *mdb, MdbColumn *col, bool null)
{
    const int start = col->cur_value_start;
    const int len = col->cur_value_len;
    if (col->col_type == MDB_BOOL) { // libmdb keeps a Boolean in the null mask: "null" is False
        sink.tag('I');
        sink.i64(len ? 0 : -1);
        return;
    }
    if (len == 0 && !null && (col->col_type == MDB_TEXT || col->col_type == MDB_MEMO)) {
        sink.tag('S'); // an empty text, which is not NULL
        sink.text("");
        return;
    }
    if (len <= 0 || start < 0 || start + len > int(mdb->fmt->pg_size)) {
        sink.tag('N');
        return;
    }
    const unsigned char *page = mdb->pg_buf;
    switch (col->col_type) {
    case MDB_BYTE:
        sink.tag('I');
        sink.i64(mdb_get_byte(mdb->pg_buf, start));
        return;
    case MDB_INT:
        sink.tag('I');
        sink.i64(qint16(mdb_get_int16(mdb->pg_buf, start)));
        return;
    case MDB_LONGINT:
    case MDB_COMPLEX:
        sink.tag('I');
        sink.i64(qint32(mdb_get_int32(mdb->pg_buf, start)));
        return;
    case MDB_FLOAT:
        sink.tag('F');
        sink.f64(double(mdb_get_single(mdb->pg_buf, start)));
        return;
    case MDB_DOUBLE:
        sink.tag('F');
        sink.f64(mdb_get_double(mdb->pg_buf, start));
        return;
    case MDB_DATETIME:
        sink.tag('T');
        sink.f64(mdb_get_double(mdb->pg_buf, start));
        return;
    case MDB_MONEY: {
        qint64 raw = 0; // little-endian, in 1/10000
        std::memcpy(&raw, page + start, sizeof raw);
        sink.tag('F');
        sink.f64(double(raw) / 10000.0);
        return;
    }
    case MDB_NUMERIC: {
        char *s = mdb_numeric_to_string(mdb, start, col->col_scale, col->col_prec);
        sink.tag('M');
        sink.text(s ? s : "");
        g_free(s);
        return;
    }
    case MDB_TEXT:
    case MDB_MEMO:
    case MDB_REPID: {
        if (col->col_type == MDB_MEMO && len >= MDB_MEMO_OVERHEAD) {
            // UTF-8 needs at most 3 bytes per stored byte (compressed text stores 1 byte per letter).
            const size_t stored =
                size_t(mdb_get_int32(mdb->pg_buf, start)) & 0x3fffffffu; // without the inline/single-page flags
            mdb_set_bind_size(mdb, std::max(kMinBindSize, stored * 3 + 16));
        }
        char *s = mdb_col_to_string(mdb, mdb->pg_buf, start, col->col_type, len);
        mdb_set_bind_size(mdb, kMinBindSize);
        sink.tag('S');
        sink.text(s ? s : "");
        g_free(s);
        return;
    }
    case MDB_BINARY:
        sink.tag('B');
        sink.bytes(reinterpret_cast<const char *>(page + start), size_t(len));
        return;
    case MDB_OLE: {
        size_t size = 0;
        void *data = mdb_ole_read_full(mdb, col, &size);
        sink.tag('B');
        sink.bytes(static_cast<const char *>(data), data ? size : 0);
        free(data);
        return;
    }
    default:
        sink.tag('N');
        return;
    }
}

void readTableChild(const QByteArray &path, const QByteArray &table, Sink &sink)
{
    MdbOpen open;
    openMdb(open, path);
    MdbHandle *mdb = open.mdb;
    MdbCatalogEntry *entry = nullptr;
    for (MdbCatalogEntry *e : userTables(mdb))
        if (table == e->object_name)
            entry = e;
    if (!entry)
        throw std::runtime_error("No such table in the Jet database: " + table.toStdString());
    MdbTableDef *t = mdb_read_table(entry);
    if (!t || !mdb_read_columns(t) || t->num_cols != t->columns->len || t->num_cols == 0)
        throw std::runtime_error("The definition of table " + table.toStdString() + " cannot be read");

    std::vector<MdbColumn *> cols;
    std::vector<std::vector<char>> oleBuffers;
    sink.tag('C');
    sink.i64(t->num_cols);
    for (guint i = 0; i < t->num_cols; ++i) {
        auto *col = static_cast<MdbColumn *>(g_ptr_array_index(t->columns, i));
        cols.push_back(col);
        sink.text(col->name);
        sink.i64(col->col_type);
        sink.i64(col->is_long_auto ? 1 : 0);
        // Only OLE values need a bound buffer (for their 12-byte header); the rest is read off the page.
        if (col->col_type == MDB_OLE) {
            oleBuffers.emplace_back(kOleBufferSize);
            mdb_bind_column(t, int(i) + 1, oleBuffers.back().data(), nullptr);
        }
    }
    mdb_rewind_table(t);
    std::vector<MdbField> fields(cols.size());
    std::vector<char> nulls(cols.size());
    while (mdb_fetch_row(t)) {
        // libmdb gives a NULL and an empty value alike (no bytes): the row's null mask tells them apart.
        std::fill(nulls.begin(), nulls.end(), 1);
        int start = 0;
        size_t size = 0;
        if (mdb_find_row(mdb, int(t->cur_row) - 1, &start, &size) == 0 && (start & 0xC000) == 0) {
            const int count = mdb_crack_row(t, start & 0x1FFF, size, fields.data());
            for (int i = 0; i < count && i < int(fields.size()); ++i)
                if (fields[size_t(i)].colnum >= 0 && size_t(fields[size_t(i)].colnum) < nulls.size())
                    nulls[size_t(fields[size_t(i)].colnum)] = fields[size_t(i)].is_null ? 1 : 0;
        }
        sink.tag('R');
        for (size_t i = 0; i < cols.size(); ++i)
            sendValue(sink, mdb, cols[i], nulls[i] != 0);
    }
    sink.tag('E');
    mdb_free_tabledef(t);
}

// ---- parent side ----------------------------------------------------------------------

QString sqlTypeFor(int jetType)
{
    switch (jetType) {
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

void checkError(Source &in, char tag)
{
    if (tag == 'X')
        throw DbError(in.text().toStdString());
}

} // namespace

QString jetSqlType(int jetType)
{
    return sqlTypeFor(jetType);
}

JetFile::JetFile(QString path, QStringList tables) : m_path(std::move(path)), m_tables(std::move(tables)) {}
JetFile::~JetFile() = default;

void JetFile::setIdleTimeout(int milliseconds)
{
    idleTimeoutMs = milliseconds;
}

std::unique_ptr<JetFile> JetFile::open(const QString &path)
{
    if (!QFileInfo::exists(path))
        jetFail(path, QStringLiteral("Database file not found"));
    validateJetFile(path);
    const QByteArray nativePath = QFile::encodeName(path);
    const QByteArray out = readInChild(path, [&](Sink &sink) { listTablesChild(nativePath, sink); });
    Source in(out, path);
    const char tag = in.tag();
    checkError(in, tag);
    if (tag != 'L')
        in.malformed();
    const qint64 count = in.i64();
    if (count < 0 || count > 100000)
        in.malformed();
    QStringList tables;
    for (qint64 i = 0; i < count; ++i)
        tables << in.text();
    return std::unique_ptr<JetFile>(new JetFile(path, tables));
}

QStringList JetFile::tableNames() const
{
    return m_tables;
}

QString JetFile::findTable(const QString &name) const
{
    for (const QString &table : m_tables)
        if (table.compare(name, Qt::CaseInsensitive) == 0)
            return table;
    return QString();
}

void JetFile::readTable(const QString &table, const std::function<void(const std::vector<JetColumn> &)> &onColumns,
                        const std::function<void(const QVariantList &)> &onRow)
{
    if (!m_tables.contains(table))
        jetFail(m_path, QStringLiteral("No table %1 in the Jet database").arg(table));
    const QByteArray nativePath = QFile::encodeName(m_path);
    const QByteArray tableName = table.toUtf8();
    const QByteArray out = readInChild(m_path, [&](Sink &sink) { readTableChild(nativePath, tableName, sink); });

    Source in(out, m_path);
    char tag = in.tag();
    checkError(in, tag);
    if (tag != 'C')
        in.malformed();
    const qint64 count = in.i64();
    if (count <= 0 || count > 4096)
        in.malformed();
    std::vector<JetColumn> columns;
    for (qint64 i = 0; i < count; ++i) {
        JetColumn c;
        c.name = in.text();
        c.jetType = int(in.i64());
        c.autoNumber = in.i64() != 0;
        c.sqlType = sqlTypeFor(c.jetType);
        columns.push_back(c);
    }
    onColumns(columns);

    QVariantList row;
    while ((tag = in.tag()) == 'R') {
        row.clear();
        for (const JetColumn &c : columns) {
            const bool isText = c.jetType == MDB_TEXT || c.jetType == MDB_MEMO;
            switch (in.tag()) {
            case 'N':
                row << (isText ? QVariant(QString()) : QVariant()); // a null QString: stored as NULL
                break;
            case 'I':
                row << QVariant(qlonglong(in.i64()));
                break;
            case 'F':
                row << QVariant(in.f64());
                break;
            case 'T':
                row << QVariant(jet::jetDateToIso(in.f64()));
                break;
            case 'M':
                row << QVariant(in.text().toDouble());
                break;
            case 'S': {
                const QString text = in.text();
                row << QVariant(text.isNull() ? QString(QLatin1String("")) : text); // "" is no NULL
                break;
            }
            case 'B':
                row << QVariant(in.bytes());
                break;
            default:
                in.malformed();
            }
        }
        onRow(row);
    }
    checkError(in, tag);
    if (tag != 'E')
        in.malformed();
}

} // namespace ht
