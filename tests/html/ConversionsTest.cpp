// Text conversions between stored item texts and page lines, and reading
// templates and pages in every encoding an editor may have saved them in.

#include "HtmlTestSupport.h"
#include "html/HtmlConversions.h"
#include "html/HtmlTextFile.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QStringEncoder>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace ht;
using namespace ht::test;

namespace
{

TEST(Conversions, StoredBreaksBecomeTags)
{
    TestContext tc;
    const std::pair<QString, QString> cases[] = {{u"Open/close"_qs, u"Open<br>close"_qs},
                                                 {u"Open/ close"_qs, u"Open<br>close"_qs},
                                                 {u"Open /close"_qs, u"Open <br>close"_qs},
                                                 {u"a/  b"_qs, u"a<br> b"_qs},
                                                 {u"end/"_qs, u"end<br>"_qs},
                                                 {u"end/ "_qs, u"end<br>"_qs},
                                                 {u"a//b"_qs, u"a<br><br>b"_qs},
                                                 {u"a/ /b"_qs, u"a<br><br>b"_qs},
                                                 {u"a\r\nb"_qs, u"a<br>b"_qs},
                                                 {u"a\r\n b"_qs, u"a<br> b"_qs},
                                                 {u"a\rb\nc"_qs, u"a\rb\nc"_qs},
                                                 {QString(), QString()}};
    for (const auto &[in, out] : cases)
        EXPECT_EQ(SingleLineDBToMultiLineHTML(tc.ctx, in).toStdString(), out.toStdString()) << in.toStdString();
}

TEST(Conversions, LinesSplitAfterEveryLowerCaseTag)
{
    TestContext tc;
    const std::pair<QStringList, QStringList> cases[] = {
        {{u"x"_qs, u"a<br>b"_qs, u"y"_qs}, {u"x"_qs, u"a<br>"_qs, u"b"_qs, u""_qs, u"y"_qs}},
        {{u"a<br>"_qs}, {u"a<br>"_qs, u""_qs, u""_qs}},
        {{u"a<BR>b"_qs}, {u"a<BR>b"_qs}},
        {{u"<br><br>c"_qs}, {u"<br>"_qs, u"<br>"_qs, u"c"_qs, u""_qs}},
        {{}, {}}};
    for (const auto &[in, out] : cases) {
        const QStringList input = in;
        QStringList result{u"stale"_qs};
        ConvertHTMLBrToMultiline(tc.ctx, input, result);
        EXPECT_EQ(result, out) << in.join(u'|').toStdString();
        EXPECT_EQ(input, in);
    }
}

TEST(Conversions, EveryEncodingDecodesToTheSameLines)
{
    const QString s = u"<TITLE>Prüfung Ω</TITLE>\r\nzweite Zeile\r\n"_qs;
    const auto utf16 = [&](bool bigEndian) {
        return QByteArray(QStringEncoder(bigEndian ? QStringEncoder::Utf16BE : QStringEncoder::Utf16LE).encode(s));
    };
    const std::pair<const char *, QByteArray> cases[] = {{"Utf16LeMark", QByteArray("\xFF\xFE", 2) + utf16(false)},
                                                         {"Utf16BeMark", QByteArray("\xFE\xFF", 2) + utf16(true)},
                                                         {"Utf16LeNoMark", utf16(false)},
                                                         {"Utf16BeNoMark", utf16(true)},
                                                         {"Utf8Mark", QByteArray("\xEF\xBB\xBF") + s.toUtf8()},
                                                         {"Utf8NoMark", s.toUtf8()},
                                                         {"LfOnly", QString(s).replace(u"\r\n"_qs, u"\n"_qs).toUtf8()},
                                                         {"NoFinalBreak", s.chopped(2).toUtf8()}};
    for (const auto &[name, bytes] : cases)
        EXPECT_EQ(splitTextLines(decodeTextFileBytes(bytes)),
                  (QStringList{u"<TITLE>Prüfung Ω</TITLE>"_qs, u"zweite Zeile"_qs}))
            << name;
    EXPECT_EQ(splitTextLines(u"a\r\n\r\nb\rc\n"_qs), (QStringList{u"a"_qs, u""_qs, u"b"_qs, u"c"_qs}));
    EXPECT_TRUE(splitTextLines(QString()).isEmpty());
}

TEST(GetTextFileHTML, TellsMissingGeneratedAndHandMadePagesApartAndReportsMissingTemplates)
{
    TestContext tc;
    const auto utf16 = [](const QString &text, bool mark) {
        return QByteArray(mark ? "\xFF\xFE" : "") +
               QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
    };
    const QString generated = u"<html>\r\n<title>made by HARKO & CO</title>\r\n<p>x</p>\r\n"_qs;
    writeFileBytes(tc.path(u"generated.html"_qs), utf16(generated, true));
    writeFileBytes(tc.path(u"generated-unmarked.html"_qs), utf16(generated, false));
    // Pages are UTF-16: one saved by hand as UTF-8 never shows the mark and is kept.
    writeFileBytes(tc.path(u"utf8.html"_qs), generated.toUtf8());
    // Mark split over two lines, or only half of it: made by hand.
    writeFileBytes(tc.path(u"hand.html"_qs), utf16(u"<TITLE>Own page</TITLE>\r\nHarko & Co\r\n"_qs, true));
    writeFileBytes(tc.path(u"empty.html"_qs), QByteArray());
    // A link, a folder or a FIFO standing where a page goes is not this program's page.
    QFile::link(tc.path(u"generated.html"_qs), tc.path(u"link.html"_qs));
    QDir().mkdir(tc.path(u"folder.html"_qs));
    ASSERT_EQ(mkfifo(QFile::encodeName(tc.path(u"fifo.html"_qs)).constData(), 0600), 0);
    const QStringList handMade{u"<TITLE>Own page</TITLE>"_qs, u"Harko & Co"_qs};
    const std::tuple<const char *, bool, QStringList> cases[] = {
        {"none.html", true, {u"-1"_qs}},
        {"generated.html", true, {QString()}},
        {"generated-unmarked.html", true, {QString()}},
        {"hand.html", true, handMade},
        {"empty.html", true, {QString()}},
        {"empty.html", false, {QString()}},
        {"link.html", true, {kUnreadablePage}},
        {"folder.html", true, {kUnreadablePage}},
        {"fifo.html", true, {kUnreadablePage}},
        // The template read does not look for the mark.
        {"generated.html", false, {u"<html>"_qs, u"<title>made by HARKO & CO</title>"_qs, u"<p>x</p>"_qs}}};
    for (const auto &[file, checkMark, answer] : cases)
        EXPECT_EQ(GetTextFileHTML(tc.ctx, tc.path(QString::fromLatin1(file)), false, checkMark), answer) << file;
    const QStringList utf8 = GetTextFileHTML(tc.ctx, tc.path(u"utf8.html"_qs), false, true);
    EXPECT_TRUE(utf8.size() > 1 || (utf8.size() == 1 && !utf8[0].isEmpty() && utf8[0] != u"-1"_qs));
    EXPECT_EQ(tc.errorLog(), QString());

    // A missing template, or one that is no regular file, is reported when asked for: logged unattended, else shown.
    tc.ctx.state.unattended = true;
    for (const QString &name : {u"Source_Alarms.html"_qs, u"fifo.html"_qs, u"folder.html"_qs}) {
        const QString logBefore = tc.errorLog();
        EXPECT_EQ(GetTextFileHTML(tc.ctx, tc.path(name), true, false), QStringList{QString()});
        EXPECT_EQ(tc.errorLog().mid(logBefore.size()),
                  u"Error reading predefined HTML-File \""_qs + tc.path(name) + u"\"!\r\n"_qs);
    }

    tc.ctx.state.unattended = false;
    EXPECT_EQ(GetTextFileHTML(tc.ctx, tc.path(u"Source_Alarms.html"_qs), true, false), QStringList{QString()});
    ASSERT_EQ(tc.ui.shown.size(), 1u);
    EXPECT_EQ(tc.ui.shown[0].icon, Icon::Critical);
}

TEST(WriteHtmlPageFile, WritesUtf16WithMarkAndCrLfAfterEveryLine)
{
    TestContext tc;
    const QString path = tc.path(u"page.html"_qs);
    writeFileBytes(path, QByteArray(500, 'x')); // a longer old page is replaced entirely
    ASSERT_TRUE(writeHtmlPageFile(path, {u"Ä"_qs, QString(), u"𝄞"_qs}));
    EXPECT_EQ(readFileBytes(path),
              QByteArray("\xFF\xFE\xC4\x00\r\x00\n\x00\r\x00\n\x00\x34\xD8\x1E\xDD\r\x00\n\x00", 20));
}

} // namespace
