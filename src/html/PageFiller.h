#pragma once
// Filling a page template with the data of one item in one language.

#include "html/HtmlKinds.h"

#include <QString>
#include <QStringList>
#include <vector>

namespace ht
{

struct Context;
struct IndexTextCache;

struct PageData {
    QString fontName, fontSize, fontWeight;
    QStringList textLines;      // the item text, broken to the panel width
    QStringList multiValues[6]; // Sensor, Cam, CPU, Rejects, Device, Result as split at "/" (element 0 unused)
    QString languageNumber;
};

// Replaces the index-text addresses of an alarm template's lines in place.
// False when the index-text database is needed and none is available: the
// run must then stop.
bool exchangeIndexTexts(Context &ctx, const HtmlKind &kind, QStringList &lines, const QString &languageNumber,
                        IndexTextCache &cache);
// The page's lines from template lines whose index texts are in place already.
QStringList fillPageLines(Context &ctx, const HtmlKind &kind, const QStringList &templateLines, const PageData &data);
// The page's lines. `indexTextLost` is set when an alarm template needs the
// index-text database and none is available: the run must then stop.
QStringList fillPageTemplate(Context &ctx, const HtmlKind &kind, const QStringList &templateLines, const PageData &data,
                             IndexTextCache &cache, bool &indexTextLost);

// A template filled once per kind and language with stand-ins for the values,
// so that a page is only literal text and values appended in turn. Gives the
// same page as fillPageTemplate whenever the values cannot take part in finding
// a placeholder; otherwise appendPage declines and the caller fills the page.
class PreparedTemplate
{
  public:
    // `indexTextLost` as for fillPageTemplate.
    PreparedTemplate(Context &ctx, const HtmlKind &kind, const QStringList &templateLines,
                     const QString &languageNumber, IndexTextCache &cache, bool &indexTextLost);

    // Appends the page's lines, each followed by CR LF. False (and nothing
    // appended) when the page must be filled by fillPageTemplate.
    bool appendPage(const PageData &data, QString &out) const;
    // Appends the page's lines either way; needs no database, so that it can
    // run beside the thread that prepared the template (`ctx` only reports).
    void appendFilledPage(Context &ctx, const PageData &data, QString &out) const;

  private:
    struct Piece {
        QString literal;
        int slot; // -1 for literal text
    };
    bool accepts(const PageData &data) const;
    void appendLine(const std::vector<Piece> &line, const PageData &data, QString &out) const;

    struct Line {
        std::vector<Piece> pieces;
        bool mayHoldBr;
    };
    const HtmlKind &m_kind;
    QStringList m_exchanged; // the template lines with their index texts in place
    std::vector<Line> m_lines;
    bool m_usable = true;
    bool m_splitsAtBr = false; // the item text went in: lines split after every "<br>"
};

} // namespace ht
