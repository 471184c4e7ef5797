#include "review/ReviewReports.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace ht
{

namespace
{

QString csvField(const QString &value)
{
    if (!value.contains(QLatin1Char('"')) && !value.contains(QLatin1Char(',')) && !value.contains(QLatin1Char('\n')) &&
        !value.contains(QLatin1Char('\r')))
        return value;
    return QLatin1Char('"') + QString(value).replace(QLatin1String("\""), QLatin1String("\"\"")) + QLatin1Char('"');
}

QString csvLine(const QStringList &values)
{
    QStringList quoted;
    for (const QString &v : values)
        quoted << csvField(v);
    return quoted.join(QLatin1Char(',')) + QLatin1Char('\n');
}

// A text line stays one line whatever the message holds.
QString oneLine(QString s)
{
    return s.replace(QLatin1String("\r\n"), QLatin1String(" "))
        .replace(QLatin1Char('\n'), QLatin1Char(' '))
        .replace(QLatin1Char('\t'), QLatin1Char(' '));
}

QString html(const QString &s)
{
    return s.toHtmlEscaped();
}

QString percent(int part, int whole)
{
    return whole == 0 ? QStringLiteral("–") : QString::number(100.0 * part / whole, 'f', 0) + QLatin1Char('%');
}

// From red (nothing) through yellow to green (all).
QString shade(int part, int whole)
{
    if (whole == 0)
        return QStringLiteral("#eeeeee");
    const double f = double(part) / whole;
    const int hue = int(f * 120);
    return QStringLiteral("hsl(%1, 70%, 80%)").arg(hue);
}

QString warnShade(int count)
{
    return count == 0 ? QStringLiteral("#e6f4e6") : QStringLiteral("#fde2c8");
}

} // namespace

bool isFindingFormat(const QString &format)
{
    return format == QLatin1String("text") || format == QLatin1String("csv") || format == QLatin1String("json");
}

bool isReportFormat(const QString &format)
{
    return isFindingFormat(format) || format == QLatin1String("html");
}

QString formatFindings(const std::vector<ItemFinding> &findings, const QString &format)
{
    QString out;
    if (format == QLatin1String("csv"))
        out += csvLine({QStringLiteral("machine"), QStringLiteral("kind"), QStringLiteral("item"),
                        QStringLiteral("language"), QStringLiteral("field"), QStringLiteral("check"),
                        QStringLiteral("message")});
    if (format == QLatin1String("json"))
        out += QLatin1String("[\n");
    for (size_t i = 0; i < findings.size(); ++i) {
        const ItemFinding &f = findings[i];
        const QString kind = QLatin1String(kindWord(f.kind)), number = QString::number(f.number);
        if (format == QLatin1String("csv")) {
            out += csvLine({f.machine, kind, number, f.language, f.finding.field, f.finding.check, f.finding.message});
        } else if (format == QLatin1String("json")) {
            const QJsonObject o{
                {QStringLiteral("machine"), f.machine},        {QStringLiteral("kind"), kind},
                {QStringLiteral("item"), qint64(f.number)},    {QStringLiteral("language"), f.language},
                {QStringLiteral("field"), f.finding.field},    {QStringLiteral("check"), f.finding.check},
                {QStringLiteral("message"), f.finding.message}};
            out += QString::fromUtf8(QJsonDocument(o).toJson(QJsonDocument::Compact));
            out += i + 1 < findings.size() ? QLatin1String(",\n") : QLatin1String("\n");
        } else {
            out +=
                QStringList{
                    f.machine, kind, number, f.language, f.finding.field, f.finding.check, oneLine(f.finding.message)}
                    .join(QLatin1Char('\t')) +
                QLatin1Char('\n');
        }
    }
    if (format == QLatin1String("json"))
        out += QLatin1String("]\n");
    return out;
}

QString formatReport(const ProgressReport &report, const QString &format)
{
    const QStringList header{QStringLiteral("machine"),       QStringLiteral("kind"),        QStringLiteral("language"),
                             QStringLiteral("items"),         QStringLiteral("translated"),  QStringLiteral("missing"),
                             QStringLiteral("with findings"), QStringLiteral("needs review")};
    const auto values = [](const ProgressCell &c) {
        return QStringList{c.machine,
                           QLatin1String(kindWord(c.kind)),
                           c.language,
                           QString::number(c.items),
                           QString::number(c.translated),
                           QString::number(c.missing),
                           QString::number(c.withFindings),
                           QString::number(c.needsReview)};
    };
    ProgressCell total;
    for (const ProgressCell &c : report.cells) {
        total.items += c.items;
        total.translated += c.translated;
        total.missing += c.missing;
        total.withFindings += c.withFindings;
        total.needsReview += c.needsReview;
    }
    QString out;
    if (format == QLatin1String("csv")) {
        out += csvLine(header);
        for (const ProgressCell &c : report.cells)
            out += csvLine(values(c));
        return out;
    }
    if (format == QLatin1String("json")) {
        QJsonArray rows;
        for (const ProgressCell &c : report.cells)
            rows.append(QJsonObject{{QStringLiteral("machine"), c.machine},
                                    {QStringLiteral("kind"), QLatin1String(kindWord(c.kind))},
                                    {QStringLiteral("language"), c.language},
                                    {QStringLiteral("items"), c.items},
                                    {QStringLiteral("translated"), c.translated},
                                    {QStringLiteral("missing"), c.missing},
                                    {QStringLiteral("withFindings"), c.withFindings},
                                    {QStringLiteral("needsReview"), c.needsReview}});
        const QJsonObject doc{{QStringLiteral("database"), report.database},
                              {QStringLiteral("source"), report.sourceLanguage},
                              {QStringLiteral("made"), report.made.toString(Qt::ISODate)},
                              {QStringLiteral("rows"), rows}};
        return QString::fromUtf8(QJsonDocument(doc).toJson(QJsonDocument::Indented));
    }
    if (format == QLatin1String("text")) {
        out +=
            QStringLiteral("Translation progress of %1 (source %2), %3\n")
                .arg(report.database, report.sourceLanguage, report.made.toString(QStringLiteral("yyyy-MM-dd HH:mm")));
        QList<QStringList> table{header};
        for (const ProgressCell &c : report.cells)
            table << values(c);
        QStringList totals = values(total);
        totals[0] = QStringLiteral("total");
        totals[1] = totals[2] = QString();
        table << totals;
        QList<qsizetype> widths(header.size(), 0);
        for (const QStringList &row : table)
            for (qsizetype i = 0; i < row.size(); ++i)
                widths[i] = std::max(widths[i], row[i].size());
        for (const QStringList &row : table) {
            QStringList cells;
            for (qsizetype i = 0; i < row.size(); ++i)
                cells << (i < 3 ? row[i].leftJustified(widths[i]) : row[i].rightJustified(widths[i]));
            out += cells.join(QStringLiteral("  ")).trimmed() + QLatin1Char('\n');
        }
        return out;
    }
    // One page with its style inside: it opens from a mail or a share as it is.
    out += QStringLiteral(
        "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n<title>Translation progress</title>\n"
        "<style>\nbody{font-family:Arial,Helvetica,sans-serif;margin:24px;color:#222}\n"
        "h1{font-size:22px;margin:0 0 4px}p.meta{color:#555;margin:0 0 16px}\n"
        "table{border-collapse:collapse}th,td{border:1px solid #bbb;padding:4px 10px;white-space:nowrap}\n"
        "th{background:#f0f0f0;text-align:left}td.n{text-align:right}\n"
        "tr.total td{font-weight:bold;border-top:2px solid #666}\n"
        "p.legend{color:#555;font-size:13px;max-width:60em}\n</style></head><body>\n");
    out += QStringLiteral(
               "<h1>Translation progress</h1>\n<p class=\"meta\">Database: %1<br>Source language: %2<br>Date: %3</p>\n")
               .arg(html(report.database), html(report.sourceLanguage),
                    html(report.made.toString(QStringLiteral("yyyy-MM-dd HH:mm"))));
    out += QStringLiteral("<table>\n<tr><th>Machine</th><th>Kind</th><th>Language</th><th>Items</th><th>Translated</th>"
                          "<th>Missing</th><th>With findings</th><th>Needs review</th></tr>\n");
    const auto row = [&](const ProgressCell &c, const QString &cls, const QString &machine, const QString &kind,
                         const QString &language) {
        return QStringLiteral("<tr class=\"%1\"><td>%2</td><td>%3</td><td>%4</td><td class=\"n\">%5</td>"
                              "<td class=\"n\" style=\"background:%6\">%7 (%8)</td>"
                              "<td class=\"n\" style=\"background:%9\">%10</td>"
                              "<td class=\"n\" style=\"background:%11\">%12</td>"
                              "<td class=\"n\" style=\"background:%13\">%14</td></tr>\n")
            .arg(cls, html(machine), html(kind), html(language), QString::number(c.items), shade(c.translated, c.items),
                 QString::number(c.translated), percent(c.translated, c.items), warnShade(c.missing),
                 QString::number(c.missing))
            .arg(warnShade(c.withFindings), QString::number(c.withFindings), warnShade(c.needsReview),
                 QString::number(c.needsReview));
    };
    static const char *const kindCaption[] = {"Alarms", "Warnings", "Material change"};
    for (const ProgressCell &c : report.cells)
        out += row(c, QString(), c.machine, QLatin1String(kindCaption[std::clamp(c.kind, 1, 3) - 1]), c.language);
    out += row(total, QStringLiteral("total"), QStringLiteral("Total"), QString(), QString());
    out += QStringLiteral("</table>\n<p class=\"legend\">Items: those whose source text is filled. Translated: every "
                          "field the source fills has text. Missing: at least one such field is empty. With findings: "
                          "a check found something (line breaks, blanks, punctuation, numbers, width, spelling). "
                          "Needs review: the source changed after the translation was saved.</p>\n</body></html>\n");
    return out;
}

} // namespace ht
