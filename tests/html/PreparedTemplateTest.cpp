// A template prepared once per language must give every page exactly what
// filling the template line by line gives, or decline the page.

#include "html/HtmlTextFile.h"
#include "html/IndexText.h"
#include "html/PageFiller.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

struct PreparedCase {
    const char *name;
    ItemKind kind;
    QStringList templateLines;
    PageData data;
    bool prepared; // the page is made from the prepared template
};

PageData pageData(const QString &font, const QStringList &sensors, const QStringList &text)
{
    PageData d;
    d.fontName = font;
    d.fontSize = u"10"_qs;
    d.fontWeight = u"400"_qs;
    d.textLines = text;
    d.multiValues[0] = QStringList{QString()} + sensors;
    d.multiValues[4] = {QString(), u"Motor 1"_qs};
    d.languageNumber = u"1"_qs;
    return d;
}

const QStringList kAlarmTemplate{
    u"<STYLE>BODY { font-family: \"###FONT###\"; font-size: ###SIZE###pt; font-weight: ###WEIGHT###; }</STYLE>"_qs,
    u"<TR><TD>###SENSOR.1###</TD><TD>###SENSOR.2###</TD><TD>###SENSOR.3###</TD><TD>###SENSOR.4###</TD></TR>"_qs,
    u"<TD>###DEVICE.2###</TD><TD>###DEVICE.1###</TD>"_qs, u"<P>###FUNCTION###</P>"_qs, u"</BODY>"_qs};
const QStringList kText{u"Check the belt"_qs, u" before restarting"_qs};

class PreparedTemplateAgrees : public ::testing::TestWithParam<PreparedCase>
{
};

TEST_P(PreparedTemplateAgrees, WithTheLineByLineFill)
{
    const PreparedCase &c = GetParam();
    TestContext tc;
    IndexTextCache cache;
    bool lost = false;
    const HtmlKind &kind = htmlKind(c.kind);
    QString expected;
    appendTextLines(fillPageTemplate(tc.ctx, kind, c.templateLines, c.data, cache, lost), expected);

    const PreparedTemplate prepared(tc.ctx, kind, c.templateLines, c.data.languageNumber, cache, lost);
    QString page;
    ASSERT_EQ(prepared.appendPage(c.data, page), c.prepared);
    if (c.prepared)
        EXPECT_EQ(page.toStdString(), expected.toStdString());
    else
        EXPECT_TRUE(page.isEmpty());
}

const PreparedCase kCases[] = {
    {"AlarmPage", KindAlarms, kAlarmTemplate, pageData(u"Arial"_qs, {u"B1"_qs, u"B2"_qs}, kText), true},
    {"AllFourSensors", KindAlarms, kAlarmTemplate,
     pageData(u"Arial"_qs, {u"B1"_qs, u"B2"_qs, u"B3"_qs, u"B4"_qs}, kText), true},
    {"BreakTagInAValueSplitsToo", KindAlarms, kAlarmTemplate,
     pageData(u"Arial"_qs, {u"B1<br>B2"_qs}, {u"a<br>"_qs, u"b"_qs}), true},
    {"OnlyTheFirstPlaceholderOfALine",
     KindWarnings,
     {u"###FONT### ###FONT###"_qs, u"###TEXT###"_qs, u"###FUNCTION######FUNCTION###"_qs},
     pageData(u"Arial"_qs, {}, kText),
     true},
    {"PlaceholdersSharingHashes",
     KindWarnings,
     {u"###FONT###SIZE###"_qs, u"<br>###WEIGHT###"_qs},
     pageData(u"Arial"_qs, {}, kText),
     true},
    {"TemplateBreakTagsSplitWithTheText",
     KindWarnings,
     {u"x<br>y<br>"_qs, u"###FUNCTION###"_qs, u"</P>"_qs},
     pageData(u"Arial"_qs, {}, kText),
     true},
    {"NoItemTextNoSplit", KindMaterialChange, {u"a<br>b ###FONT###"_qs}, pageData(u"Arial"_qs, {}, kText), true},
    // A value that could complete a placeholder, or hold one: filled line by line.
    {"ValueAfterAHalfPlaceholder",
     KindWarnings,
     {u"###FUNC###WEIGHT######"_qs, u"###FUNCTION###"_qs},
     pageData(u"Arial"_qs, {}, kText),
     false},
    {"HashInAValue", KindWarnings, {u"###FONT### ###SIZE###"_qs}, pageData(u"###SIZE###"_qs, {}, kText), false},
    {"MoreValuesThanSlots", KindAlarms, kAlarmTemplate,
     pageData(u"Arial"_qs, {u"1"_qs, u"2"_qs, u"3"_qs, u"4"_qs, u"5"_qs}, kText), false},
    {"NoTextLines", KindWarnings, {u"###FUNCTION###"_qs}, pageData(u"Arial"_qs, {}, {}), false},
    {"StandInCharacterInTheTemplate", KindWarnings, {u"\uE000 ###FONT###"_qs}, pageData(u"Arial"_qs, {}, kText), false},
};

INSTANTIATE_TEST_SUITE_P(Cases, PreparedTemplateAgrees, ::testing::ValuesIn(kCases),
                         [](const auto &info) { return std::string(info.param.name); });

} // namespace
