// Whole-page tests: every folder under golden/ is one run of the page writer.
// A folder holds case.txt (the call), helptext.sql (data), optionally
// indextext.sql, templates/, before/ (files standing in the help directory
// before the run), expected/ (pages as UTF-8 text, one line per page line),
// tree.txt (everything the help directory holds afterwards, templates aside)
// and log.txt (lines the error log must hold; without it the log stays empty).

#include "HtmlTestSupport.h"
#include "common/StatusDisplay.h"
#include "html/HtmlWriter.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

QString goldenDir()
{
    return htmlTestDir() + QStringLiteral("/golden");
}

std::vector<std::string> goldenCases()
{
    std::vector<std::string> cases;
    for (const QString &name : QDir(goldenDir()).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        if (!name.startsWith(QLatin1Char('_')))
            cases.push_back(name.toStdString());
    }
    return cases;
}

QString readUtf8(const QString &path)
{
    return QString::fromUtf8(readFileBytes(path));
}

QHash<QString, QString> readCaseSettings(const QString &path)
{
    QHash<QString, QString> settings;
    for (const QString &line : readUtf8(path).split(QLatin1Char('\n'))) {
        const qsizetype eq = line.indexOf(QLatin1Char('='));
        if (eq > 0)
            settings.insert(line.left(eq).trimmed(), line.mid(eq + 1).trimmed());
    }
    return settings;
}

void copyTree(const QString &from, const QString &to)
{
    QDirIterator it(from, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString file = it.next();
        const QString target = to + QDir(from).relativeFilePath(file);
        QDir().mkpath(QFileInfo(target).path());
        QFile::copy(file, target);
    }
}

QStringList listTree(const QString &root)
{
    QStringList entries;
    QDirIterator it(root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        QString rel = QDir(root).relativeFilePath(path);
        if (!rel.contains(QLatin1Char('/')) && rel.startsWith(QLatin1String("Source_")))
            continue; // the templates
        if (QFileInfo(path).isDir())
            rel += QLatin1Char('/');
        entries.append(rel);
    }
    entries.sort();
    return entries;
}

QStringList expectedLines(const QString &path)
{
    QStringList lines;
    for (const QString &line : readUtf8(path).split(QLatin1Char('\n'))) {
        if (!line.trimmed().isEmpty())
            lines.append(line.trimmed());
    }
    lines.sort();
    return lines;
}

class GoldenPages : public ::testing::TestWithParam<std::string>
{
};

TEST_P(GoldenPages, WritesExactlyTheExpectedTree)
{
    const QString caseDir = goldenDir() + QLatin1Char('/') + QString::fromStdString(GetParam()) + QLatin1Char('/');
    const auto settings = readCaseSettings(caseDir + QStringLiteral("case.txt"));

    TestContext tc;
    Context &ctx = tc.ctx;
    const QString helpDir = tc.path(QStringLiteral("help")) + QLatin1Char('/');
    ASSERT_TRUE(QDir().mkpath(helpDir));
    ctx.state.helpTextDB = tc.path(QStringLiteral("helptext.sqlite"));
    createDatabaseFromScripts(ctx.state.helpTextDB, helpTextSchema() << caseDir + QStringLiteral("helptext.sql"));
    ctx.state.langLookupDB = tc.path(QStringLiteral("languages.sqlite"));
    createDatabaseFromScripts(ctx.state.langLookupDB, languagesSchemaAndData());
    if (QFile::exists(caseDir + QStringLiteral("indextext.sql"))) {
        ctx.state.indexTextDB = tc.path(QStringLiteral("indextext.sqlite"));
        createDatabaseFromScripts(ctx.state.indexTextDB,
                                  {indexTextSchema(), caseDir + QStringLiteral("indextext.sql")});
    }
    const QString templates = settings.value(QStringLiteral("templates"));
    if (templates == QLatin1String("samples"))
        copyTree(sourceDir() + QStringLiteral("/samples/templates/"), helpDir);
    else if (templates == QLatin1String("own"))
        copyTree(caseDir + QStringLiteral("templates/"), helpDir);
    copyTree(caseDir + QStringLiteral("before/"), helpDir);

    ctx.state.helpMainDir = helpDir;
    ctx.state.iniPath = tc.path(QStringLiteral("helptext.ini"));
    ctx.state.screenResolution = settings.value(QStringLiteral("resolution"), QStringLiteral("1024"));
    ctx.state.unattended = settings.value(QStringLiteral("unattended"), QStringLiteral("1")) == QLatin1String("1");
    ctx.state.standardIndexTextDB = settings.value(QStringLiteral("project"));

    const QStringList kinds = settings.value(QStringLiteral("kinds")).split(QLatin1Char(','));
    bool alarms = kinds.contains(QLatin1String("Alarms"));
    bool warnings = kinds.contains(QLatin1String("Warnings"));
    bool materialChange = kinds.contains(QLatin1String("MaterialChange"));
    HeadlessStatus status;
    WriteHTMLPage(ctx, &status, alarms, warnings, materialChange, settings.value(QStringLiteral("machine")),
                  settings.value(QStringLiteral("language")),
                  settings.value(QStringLiteral("number"), QStringLiteral("0")).toLong());

    EXPECT_FALSE(ctx.state.writingHtml);
    EXPECT_FALSE(status.visible) << "status display ended";
    const QStringList tree = listTree(helpDir);
    EXPECT_EQ(tree.join(QLatin1Char('\n')).toStdString(),
              expectedLines(caseDir + QStringLiteral("tree.txt")).join(QLatin1Char('\n')).toStdString());

    for (const QString &entry : tree) {
        if (entry.endsWith(QLatin1Char('/')))
            continue;
        const QByteArray actual = readFileBytes(helpDir + entry);
        if (QFile::exists(caseDir + QStringLiteral("expected/") + entry)) {
            QStringList lines = readUtf8(caseDir + QStringLiteral("expected/") + entry).split(QLatin1Char('\n'));
            if (!lines.isEmpty() && lines.last().isEmpty())
                lines.removeLast();
            EXPECT_EQ(actual, pageBytes(lines))
                << entry.toStdString() << ":\n"
                << QString::fromUtf16(reinterpret_cast<const char16_t *>(actual.constData() + 2),
                                      (actual.size() - 2) / 2)
                       .toStdString();
        } else if (QFile::exists(caseDir + QStringLiteral("before/") + entry)) {
            EXPECT_EQ(actual, readFileBytes(caseDir + QStringLiteral("before/") + entry))
                << entry.toStdString() << " must stay as it was";
        } else {
            ADD_FAILURE() << "no expectation for " << entry.toStdString();
        }
    }

    // Nothing beside the help directory but the run's own files.
    const QStringList own{u"help"_qs,         u"helptext.sqlite"_qs,  u"languages.sqlite"_qs, u"indextext.sqlite"_qs,
                          u"helptext.ini"_qs, u"helptextError.log"_qs};
    for (const QString &entry : QDir(tc.dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot))
        EXPECT_TRUE(own.contains(entry)) << "written outside the help directory: " << entry.toStdString();

    const QString log = tc.errorLog();
    if (QFile::exists(caseDir + QStringLiteral("log.txt"))) {
        for (QString line : readUtf8(caseDir + QStringLiteral("log.txt")).split(QLatin1Char('\n'))) {
            if (line.isEmpty())
                continue;
            line.replace(QLatin1String("<LFCR>"), QLatin1String("\n\r"));
            line.replace(QLatin1String("<HELP>"), helpDir);
            EXPECT_TRUE(log.contains(line)) << "log lacks: " << line.toStdString() << "\nlog:\n" << log.toStdString();
        }
    } else {
        EXPECT_EQ(log.toStdString(), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, GoldenPages, ::testing::ValuesIn(goldenCases()),
                         [](const auto &info) { return info.param; });

} // namespace
