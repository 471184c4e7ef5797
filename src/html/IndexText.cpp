#include "html/IndexText.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Platform.h"
#include "common/StringUtils.h"
#include "common/UserInterface.h"
#include "database/Database.h"

namespace ht
{

IndexTextCache::IndexTextCache() = default;
IndexTextCache::~IndexTextCache() = default;

namespace
{

const QString kMarker = QStringLiteral("###DIREKT:");
const QString kClose = QStringLiteral("###");
constexpr qsizetype kMaxSegments = 64;

bool isDigitsOnly(const QString &s)
{
    if (s.isEmpty())
        return false;
    for (QChar c : s) {
        if (c < u'0' || c > u'9')
            return false;
    }
    return true;
}

// The texts of `segments` (outermost group first, the text's own name last),
// read in the order the database returns them; the last one read counts.
QString lookUpAddress(Database &db, const QStringList &segments, const QString &column)
{
    // Txt sits in G0, G0 in G1, ...: the same chain the dotted address names.
    const int groups = int(segments.size()) - 1;
    QString sql = QStringLiteral("SELECT Txt.") + column + QStringLiteral(" FROM TidxTexts AS Txt");
    for (int k = 0; k < groups; ++k) {
        const QString child = k == 0 ? QStringLiteral("Txt") : QStringLiteral("G%1").arg(k - 1);
        sql += QStringLiteral(" INNER JOIN TidxGroups AS G%1 ON G%1.ID = %2.ParentID").arg(k).arg(child);
    }
    sql += QStringLiteral(" WHERE Txt.Name = ? COLLATE NOCASE");
    QVariantList params{segments.last()};
    for (int k = 0; k < groups; ++k) {
        sql += QStringLiteral(" AND G%1.Name = ? COLLATE NOCASE").arg(k);
        params.append(segments.at(groups - 1 - k));
    }
    Recordset rs = db.query(sql, params);
    QString result = QStringLiteral("-1");
    for (rs.moveFirst(); !rs.eof(); rs.moveNext())
        result = rs.value(0).toString();
    return result;
}

} // namespace

QString GetHTMLDirectIndexTextAddress(const QString &line)
{
    const qsizetype at = line.indexOf(kMarker);
    if (at < 0)
        return QString();
    // Scanned up to three characters before the end: an unclosed marker gives
    // the rest of the line less its last three characters.
    const qsizetype start = at + kMarker.size();
    const qsizetype last = line.size() - 4;
    qsizetype end = start;
    while (end <= last && QStringView(line).mid(end, 3) != kClose)
        ++end;
    return line.mid(start, end - start);
}

QString GetScopiaIndexText(Context &ctx, const QString &dbPath, const QString &languageNumber, const QString &address,
                           int mode, IndexTextCache *cache)
{
    try {
        if (dbPath.isEmpty() || mode != 1)
            return QStringLiteral("-1");
        // The language number becomes part of a column name: digits only.
        if (!isDigitsOnly(languageNumber))
            return QStringLiteral("-1");
        const QStringList segments = address.split(QLatin1Char('.'));
        if (segments.size() < 2)
            return QStringLiteral("-1"); // a text always sits in a group: at least one dot
        // One table per segment: the database joins 64 at the most, and no
        // panel nests its texts that deep.
        if (segments.size() > kMaxSegments)
            return QStringLiteral("-1");

        std::unique_ptr<Database> own;
        Database *db = nullptr;
        if (cache && cache->db && cache->dbPath == dbPath) {
            db = cache->db.get();
        } else {
            own = Database::open(dbPath, Database::Mode::ReadOnly);
            db = own.get();
            if (cache) {
                cache->db = std::move(own);
                cache->dbPath = dbPath;
            }
        }
        const QString column = QStringLiteral("L") + languageNumber;
        if (!db->hasColumn(QStringLiteral("TidxTexts"), column)) {
            LogError(ctx, QStringLiteral("GetScopiaIndexText: no column ") + column + QStringLiteral(" in TidxTexts"));
            return QStringLiteral("-1");
        }
        return lookUpAddress(*db, segments, column);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("GetScopiaIndexText"), e);
        return QStringLiteral("-1");
    }
}

namespace
{

// Makes sure ctx.state.indexTextDB names an existing file, asking when it does not.
void ensureIndexTextDatabase(Context &ctx)
{
    QString &path = ctx.state.indexTextDB;
    const QString before = path;
    if (!path.isEmpty() && !fileExists(path))
        path.clear();
    if (!path.isEmpty())
        return;
    if (ctx.state.unattended || !ctx.ui) {
        LogError(ctx, QStringLiteral("Couldn't connect to ") + before);
        return;
    }
    const auto choice = ctx.ui->openFile(QStringLiteral("Bitte Indextextdatenbank auswählen!"),
                                         QStringLiteral("Index text database (*.mdb;*.vws)|*.mdb;*.vws|"
                                                        "SQLite database (*.db;*.sqlite)|*.db;*.sqlite"),
                                         before);
    if (choice && fileExists(choice->path))
        path = choice->path;
}

} // namespace

QString ExchangeDirectAdress_IndexText(Context &ctx, const QString &line, const QString &languageNumber,
                                       IndexTextCache &cache)
{
    // The markers are replaced from left to right, each once: an index text
    // that itself holds a marker is put in as it is, never looked up again.
    QString out;
    qsizetype from = 0;
    try {
        QHash<QString, QString> &texts = cache.textsByLanguage[languageNumber];
        for (qsizetype at = line.indexOf(kMarker); at >= 0; at = line.indexOf(kMarker, from)) {
            if (ctx.processEvents)
                ctx.processEvents();
            const qsizetype start = at + kMarker.size();
            const qsizetype close = line.indexOf(kClose, start);
            if (close < 0)
                break; // an unclosed marker stays as it is, with the rest of the line
            const QString address = line.mid(start, close - start);
            auto found = texts.constFind(address);
            if (found == texts.constEnd()) {
                ensureIndexTextDatabase(ctx);
                ++cache.databaseLookups;
                QString text = GetScopiaIndexText(ctx, ctx.state.indexTextDB, languageNumber, address, 1, &cache);
                if (text == QLatin1String("-1"))
                    text.clear();
                found = texts.insert(address, text);
            }
            out.append(QStringView(line).mid(from, at - from));
            out.append(*found);
            from = close + kClose.size();
        }
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("ExchangeDirectAdress_IndexText"), e);
    }
    if (from == 0)
        return line;
    out.append(QStringView(line).mid(from));
    return out;
}

} // namespace ht
