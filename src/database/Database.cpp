#include "database/Database.h"

#include "common/StringUtils.h"
#include "database/Collation.h"
#include "database/DatabaseImpl.h"
#include "database/JetFile.h"
#include "database/JetPages.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlRecord>
#include <atomic>
#include <sqlite3.h>

namespace ht
{

namespace
{

std::atomic<int> busyTimeoutMs{5000};

// SQLite's result code behind a failure reported by Qt.
int sqliteCode(const QSqlError &error)
{
    return error.nativeErrorCode().toInt();
}

QString newConnectionName()
{
    static std::atomic<int> counter{0};
    return QStringLiteral("helptext-db-%1").arg(++counter);
}

sqlite3 *sqliteHandle(const QSqlDatabase &db)
{
    const QVariant v = db.driver()->handle();
    if (!v.isValid() || qstrcmp(v.typeName(), "sqlite3*") != 0)
        return nullptr;
    return *static_cast<sqlite3 *const *>(v.constData());
}

// The table SQLite could not find, from its "no such table: X" message (X may hold blanks).
QString missingTable(const QString &errorText)
{
    static const QRegularExpression re(QStringLiteral("no such table: (?:main\\.)?(.+)$"));
    const auto m = re.match(errorText);
    return m.hasMatch() ? m.captured(1) : QString();
}

} // namespace

Database::Impl::Impl() : connection(newConnectionName()) {}

Database::Impl::~Impl()
{
    if (db.isValid()) {
        db.close();
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase(connection);
    }
}

void Database::Impl::fail(const QString &what, const QString &detail, int sqliteCode) const
{
    QString text = what;
    // The detail is mostly the statement: a huge one must not flood the error log.
    if (!detail.isEmpty())
        text += QStringLiteral(": ") + shortForLog(detail, 1000);
    text = QStringLiteral("%1 (%2)").arg(text, path);
    const int primary = sqliteCode & 0xff; // without the extended part
    if (primary == SQLITE_BUSY || primary == SQLITE_LOCKED)
        throw DbBusy(("The database is in use by another program: " + text).toStdString());
    throw DbError(text.toStdString());
}

void Database::Impl::openConnection(const QString &name, bool readOnly)
{
    db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
    if (!db.isValid())
        fail(QStringLiteral("The SQLite driver of Qt is not available"), {});
    db.setDatabaseName(name);
    if (readOnly)
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
    if (!db.open())
        fail(QStringLiteral("Cannot open the database"), db.lastError().text(), sqliteCode(db.lastError()));
    handle = sqliteHandle(db);
    if (!handle)
        fail(QStringLiteral("No SQLite handle behind the connection"), {});
    busyWaitMs = busyTimeoutMs;
    sqlite3_busy_timeout(handle, busyWaitMs);
    const QString err = installCaselessText(handle);
    if (!err.isEmpty())
        fail(QStringLiteral("Cannot install the caseless text comparison"), err);
}

QSqlQuery Database::Impl::run(const QString &sql, const QVariantList &params)
{
    QSet<QString> copiedNow; // a table copied in for this statement must not be asked for again
    for (;;) {
        QSqlQuery q(db);
        q.setForwardOnly(true);
        bool ok = q.prepare(sql);
        if (ok) {
            for (const QVariant &p : params)
                q.addBindValue(p);
            ok = q.exec();
        }
        if (ok && jetPages && transactionDepth == 0 && jetPages->pending()) {
            // A change outside a transaction goes into the file at once.
            try {
                writeJetChanges();
            } catch (const DbBusy &) {
                dropJetChanges();
                throw;
            } catch (const DbError &e) {
                dropJetChanges();
                fail(QString::fromUtf8(e.what()), {});
            }
        }
        if (ok)
            return q;
        const QSqlError err = q.lastError();
        if (jetPages && !jetPages->refusal.isEmpty()) {
            const QString what = std::exchange(jetPages->refusal, QString());
            fail(QStringLiteral("%1 cannot be done in an Access file: this program changes its rows, never its design; "
                                "convert the database to SQLite for this job")
                     .arg(what),
                 sql);
        }
        if (jet) {
            const QString table = missingTable(err.databaseText());
            if (!table.isEmpty() && !copiedNow.contains(table.toLower()) && ensureJetTable(table)) {
                copiedNow.insert(table.toLower());
                continue;
            }
        }
        fail(QStringLiteral("SQL failed: %1").arg(err.text()), sql, sqliteCode(err));
    }
}

bool Database::Impl::hasSqliteTable(const QString &table)
{
    QSqlQuery q(db);
    q.prepare(QStringLiteral("SELECT 1 FROM sqlite_schema WHERE type = 'table' AND name = ? COLLATE NOCASE"));
    q.addBindValue(table);
    return q.exec() && q.next();
}

bool Database::Impl::ensureJetTable(const QString &table)
{
    const QString name = jet->findTable(table);
    if (name.isEmpty())
        return false;
    if (hasSqliteTable(name))
        return true;
    if (jetPages && jetPages->writable) {
        copyJetTableByPages(name);
        return true;
    }
    // The memory copy refuses writes (query_only) except while a table is copied in.
    QSqlQuery(db).exec(QStringLiteral("PRAGMA query_only = 0"));
    const bool outer = transactionDepth == 0;
    try {
        if (outer)
            QSqlQuery(db).exec(QStringLiteral("BEGIN"));
        if (jetPages)
            copyJetTableByPages(name);
        else
            copyJetTable(*jet, name, connection);
        if (outer)
            QSqlQuery(db).exec(QStringLiteral("COMMIT"));
    } catch (...) {
        if (outer)
            QSqlQuery(db).exec(QStringLiteral("ROLLBACK"));
        QSqlQuery(db).exec(QStringLiteral("PRAGMA query_only = 1"));
        throw;
    }
    QSqlQuery(db).exec(QStringLiteral("PRAGMA query_only = 1"));
    return true;
}

// ---------------------------------------------------------------------------

Database::Database(std::unique_ptr<Impl> impl) : d(std::move(impl)) {}
Database::~Database() = default;

std::unique_ptr<Database> Database::open(const QString &path, Mode mode)
{
    auto impl = std::make_unique<Impl>();
    impl->path = path;
    impl->mode = mode;
    QString refusal;
    impl->format = detectDatabaseFormat(path, &refusal);
    switch (impl->format) {
    case DbFormat::Missing:
        impl->fail(QStringLiteral("Database file not found"), {});
    case DbFormat::Unknown:
        impl->fail(QStringLiteral("Not a database file"), refusal);
    case DbFormat::Jet:
        impl->jet = JetFile::open(path);
        impl->openConnection(QStringLiteral(":memory:"), false);
        if (mode == Mode::ReadWrite) {
            impl->openJetForWriting();
        } else {
            impl->openJetForReading();
            QSqlQuery(impl->db).exec(QStringLiteral("PRAGMA query_only = 1"));
        }
        break;
    case DbFormat::SQLite: {
        const QFileInfo info(path);
        if (mode == Mode::ReadWrite) {
            // SQLite would quietly fall back to reading only; a write must not be the first to notice.
            if (!info.isWritable())
                impl->fail(QStringLiteral("The database file is write-protected"), {});
            if (!QFileInfo(info.absolutePath()).isWritable())
                impl->fail(QStringLiteral("The folder of the database is write-protected"), {});
        }
        impl->openConnection(path, mode == Mode::ReadOnly);
        if (mode == Mode::ReadWrite && sqlite3_db_readonly(impl->handle, "main") == 1)
            impl->fail(QStringLiteral("The database can only be opened for reading"), {});
        // Reading the schema proves that the file is a usable database, not just its header.
        QSqlQuery probe(impl->db);
        if (!probe.exec(QStringLiteral("SELECT count(*) FROM sqlite_schema"))) {
            // Held locked by another program is no damage.
            const int code = sqliteCode(probe.lastError()) & 0xff;
            impl->fail(code == SQLITE_BUSY || code == SQLITE_LOCKED ? QStringLiteral("Cannot read the database")
                                                                    : QStringLiteral("The database is damaged"),
                       probe.lastError().text(), sqliteCode(probe.lastError()));
        }
        break;
    }
    }
    return std::unique_ptr<Database>(new Database(std::move(impl)));
}

void Database::setBusyTimeout(int milliseconds)
{
    busyTimeoutMs = milliseconds;
}

std::unique_ptr<Database> Database::create(const QString &path)
{
    if (QFileInfo::exists(path))
        throw DbError(QStringLiteral("Cannot create the database, the file exists (%1)").arg(path).toStdString());
    auto impl = std::make_unique<Impl>();
    impl->path = path;
    impl->format = DbFormat::SQLite;
    impl->mode = Mode::ReadWrite;
    try {
        impl->openConnection(path, false);
        // SQLite writes nothing until the first change; write the header now so that the
        // file is recognised as a database from the start.
        impl->run(QStringLiteral("CREATE TABLE helptext_new(x)"), {});
        impl->run(QStringLiteral("DROP TABLE helptext_new"), {});
    } catch (const DbError &) {
        impl.reset();
        QFile::remove(path);
        throw;
    }
    return std::unique_ptr<Database>(new Database(std::move(impl)));
}

QString Database::path() const
{
    return d->path;
}
DbFormat Database::format() const
{
    return d->format;
}

Recordset Database::query(const QString &sql, const QVariantList &params)
{
    QStringList fields;
    std::vector<QVariantList> rows;
    forEachRow(
        sql, params,
        [&](QVariantList &row) {
            rows.push_back(std::move(row));
            return true;
        },
        &fields);
    return Recordset(std::move(fields), std::move(rows));
}

bool Database::forEachRow(const QString &sql, const QVariantList &params,
                          const std::function<bool(QVariantList &row)> &handle, QStringList *fieldNames)
{
    QSqlQuery q = d->run(sql, params);
    const int columns = q.record().count();
    if (fieldNames) {
        const QSqlRecord record = q.record();
        for (int i = 0; i < columns; ++i)
            fieldNames->append(record.fieldName(i));
    }
    while (q.next()) {
        QVariantList row;
        row.reserve(columns);
        for (int i = 0; i < columns; ++i)
            row << q.value(i);
        if (!handle(row))
            return false;
    }
    if (q.lastError().isValid())
        d->fail(QStringLiteral("Reading the result failed: %1").arg(q.lastError().text()), sql,
                sqliteCode(q.lastError()));
    return true;
}

int Database::exec(const QString &sql, const QVariantList &params)
{
    QSqlQuery q = d->run(sql, params);
    d->lastInsertId = q.lastInsertId();
    return q.numRowsAffected();
}

QVariant Database::lastInsertId() const
{
    return d->lastInsertId;
}

void Database::execScript(const QString &sql)
{
    char *error = nullptr;
    const int rc = sqlite3_exec(d->handle, sql.toUtf8().constData(), nullptr, nullptr, &error);
    if (rc != SQLITE_OK) {
        const QString text = QString::fromUtf8(error ? error : "unknown error");
        sqlite3_free(error);
        d->fail(QStringLiteral("SQL script failed: %1").arg(text), sql, rc);
    }
}

void Database::checkIntact()
{
    if (d->format != DbFormat::SQLite)
        return;
    const Recordset check = query(QStringLiteral("PRAGMA quick_check"));
    if (check.recordCount() != 1 || check.value(0).toString() != QLatin1String("ok"))
        d->fail(QStringLiteral("The database is damaged"), check.recordCount() ? check.value(0).toString() : QString());
}

// ---------------------------------------------------------------------------

Database::Transaction::Transaction(Database &db) : m_db(db), m_level(db.d->transactionDepth + 1)
{
    const QString begin = m_db.d->mode == Mode::ReadWrite ? QStringLiteral("BEGIN IMMEDIATE") : QStringLiteral("BEGIN");
    m_db.d->run(m_level == 1 ? begin : QStringLiteral("SAVEPOINT helptext_%1").arg(m_level), {});
    m_db.d->transactionDepth = m_level;
}

Database::Transaction::~Transaction()
{
    if (m_done)
        return;
    m_db.d->transactionDepth = m_level - 1;
    try {
        if (m_level == 1) {
            if (m_db.d->jetPages)
                m_db.d->jetPages->forget();
            m_db.d->run(QStringLiteral("ROLLBACK"), {});
        } else {
            m_db.d->run(QStringLiteral("ROLLBACK TO helptext_%1").arg(m_level), {});
            m_db.d->run(QStringLiteral("RELEASE helptext_%1").arg(m_level), {});
        }
    } catch (const DbError &) {
        // SQLite may already have rolled back on its own (e.g. after a full disk); nothing left to undo.
    }
}

void Database::Transaction::commit()
{
    if (m_done)
        return;
    if (m_level == 1)
        m_db.d->writeJetChanges(); // the file first: when it fails, everything is rolled back
    m_db.d->run(m_level == 1 ? QStringLiteral("COMMIT") : QStringLiteral("RELEASE helptext_%1").arg(m_level), {});
    m_done = true;
    m_db.d->transactionDepth = m_level - 1;
}

} // namespace ht
