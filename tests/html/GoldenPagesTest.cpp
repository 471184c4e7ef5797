// Whole-page tests: every folder under golden/ is one run of the page writer.
// A folder holds case.txt (the call), helptext.sql (data), optionally
// indextext.sql, templates/, before/ (files standing in the help directory
// before the run, byte for byte: a generated page is UTF-16), expected/ (pages as UTF-8 text, one line per page line),
// tree.txt (everything the help directory holds afterwards, templates aside)
// and log.txt (lines the error log must hold; without it the log stays empty).

#include "HtmlTestSupport.h"
#include "common/StatusDisplay.h"
#include "html/HtmlWriter.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

const QString kGolden = htmlTestDir() + u"/golden/"_qs;
const QRegularExpression kNotBlank(u"\\S"_qs);

std::vector<std::string> goldenCases()
{
    std::vector<std::string> cases;
    for (const QString &name : QDir(kGolden).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name))
        if (!name.startsWith(u'_'))
            cases.push_back(name.toStdString());
    return cases;
}

QStringList utf8Lines(const QString &path)
{
    return QString::fromUtf8(readFileBytes(path)).split(u'\n');
}

void copyTree(const QString &from, const QString &to)
{
    QDirIterator it(from, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString target = to + QDir(from).relativeFilePath(it.next());
        QDir().mkpath(QFileInfo(target).path());
        QFile::copy(it.filePath(), target);
    }
}

// Everything below `root` but the templates; folders end in '/'.
QStringList listTree(const QString &root)
{
    QStringList entries;
    QDirIterator it(root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QString rel = QDir(root).relativeFilePath(it.next());
        if (rel.contains(u'/') || !rel.startsWith(u"Source_"_qs))
            entries.append(it.fileInfo().isDir() ? rel + u'/' : rel);
    }
    entries.sort();
    return entries;
}

class GoldenPages : public ::testing::TestWithParam<std::string>
{
};

TEST_P(GoldenPages, WritesExactlyTheExpectedTree)
{
    const QString caseDir = kGolden + QString::fromStdString(GetParam()) + u'/';
    QHash<QString, QString> settings;
    for (const QString &line : utf8Lines(caseDir + u"case.txt"_qs))
        if (const qsizetype eq = line.indexOf(u'='); eq > 0)
            settings.insert(line.left(eq).trimmed(), line.mid(eq + 1).trimmed());

    TestContext tc;
    AppState &st = tc.ctx.state;
    const QString helpDir = tc.path(u"help/"_qs);
    ASSERT_TRUE(QDir().mkpath(helpDir));
    st.helpTextDB = tc.path(u"helptext.sqlite"_qs);
    createDatabaseFromScripts(st.helpTextDB, helpTextSchema() << caseDir + u"helptext.sql"_qs);
    st.langLookupDB = tc.path(u"languages.sqlite"_qs);
    createDatabaseFromScripts(st.langLookupDB, languagesSchemaAndData());
    if (QFile::exists(caseDir + u"indextext.sql"_qs)) {
        st.indexTextDB = tc.path(u"indextext.sqlite"_qs);
        createDatabaseFromScripts(st.indexTextDB, {schemaFile(u"indextext.sql"_qs), caseDir + u"indextext.sql"_qs});
    }
    const QString templates = settings.value(u"templates"_qs);
    if (templates == u"samples"_qs)
        copyTree(sourceDir() + u"/samples/templates/"_qs, helpDir);
    else if (templates == u"own"_qs)
        copyTree(caseDir + u"templates/"_qs, helpDir);
    copyTree(caseDir + u"before/"_qs, helpDir);
    st.helpMainDir = helpDir;
    st.iniPath = tc.path(u"helptext.ini"_qs);
    st.screenResolution = settings.value(u"resolution"_qs, u"1024"_qs);
    st.unattended = settings.value(u"unattended"_qs, u"1"_qs) == u"1"_qs;
    st.standardIndexTextDB = settings.value(u"project"_qs);

    const QStringList kinds = settings.value(u"kinds"_qs).split(u',');
    bool alarms = kinds.contains(u"Alarms"_qs), warnings = kinds.contains(u"Warnings"_qs),
         materialChange = kinds.contains(u"MaterialChange"_qs);
    HeadlessStatus status;
    WriteHTMLPage(tc.ctx, &status, alarms, warnings, materialChange, settings.value(u"machine"_qs),
                  settings.value(u"language"_qs), settings.value(u"number"_qs, u"0"_qs).toLong());

    EXPECT_FALSE(st.writingHtml);
    EXPECT_FALSE(status.visible) << "status display ended";
    QStringList expectedTree = utf8Lines(caseDir + u"tree.txt"_qs).filter(kNotBlank);
    expectedTree.sort();
    const QStringList tree = listTree(helpDir);
    EXPECT_EQ(tree.join(u'\n').toStdString(), expectedTree.join(u'\n').toStdString());

    for (const QString &entry : tree) {
        if (entry.endsWith(u'/'))
            continue;
        const QByteArray actual = readFileBytes(helpDir + entry);
        if (QFile::exists(caseDir + u"expected/"_qs + entry)) {
            QStringList lines = utf8Lines(caseDir + u"expected/"_qs + entry);
            if (lines.last().isEmpty())
                lines.removeLast();
            EXPECT_EQ(actual, pageBytes(lines)) << entry.toStdString() << ":\n" << pageText(actual).toStdString();
        } else if (QFile::exists(caseDir + u"before/"_qs + entry)) {
            EXPECT_EQ(actual, readFileBytes(caseDir + u"before/"_qs + entry)) << entry.toStdString() << " changed";
        } else {
            ADD_FAILURE() << "no expectation for " << entry.toStdString();
        }
    }

    const QStringList own{u"help"_qs,         u"helptext.sqlite"_qs,  u"languages.sqlite"_qs, u"indextext.sqlite"_qs,
                          u"helptext.ini"_qs, u"helptextError.log"_qs};
    for (const QString &entry : QDir(tc.dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot))
        EXPECT_TRUE(own.contains(entry)) << "written outside the help directory: " << entry.toStdString();

    const QString log = tc.errorLog();
    if (!QFile::exists(caseDir + u"log.txt"_qs))
        EXPECT_EQ(log.toStdString(), "");
    else
        for (QString line : utf8Lines(caseDir + u"log.txt"_qs).filter(kNotBlank)) {
            line.replace(u"<LFCR>"_qs, u"\n\r"_qs).replace(u"<HELP>"_qs, helpDir);
            EXPECT_TRUE(log.contains(line)) << "log lacks: " << line.toStdString() << "\nlog:\n" << log.toStdString();
        }
}

INSTANTIATE_TEST_SUITE_P(Cases, GoldenPages, ::testing::ValuesIn(goldenCases()),
                         [](const auto &info) { return info.param; });

} // namespace
