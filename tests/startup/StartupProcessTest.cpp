// The real executables, copied into a machine-PC tree and run there.
#include "StartupTestSupport.h"

#include "support/TestSupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace ht
{
namespace
{

class StartupProcess : public ::testing::Test
{
  protected:
    QString tools(const QString &file = {}) const { return root.filePath("Program/Tools/" + file); }
    QString help() const { return root.filePath("Program/Help"); }

    // Copies `binary` from build/bin into <root>/Program/Tools and runs it there
    // as the machine PC. Returns the exit code (-1 when it crashed).
    int run(const QString &binary, const QStringList &args = {})
    {
        QDir().mkpath(tools());
        test::copyFile(test::binDir() + '/' + binary, tools(binary));
        QFile::setPermissions(tools(binary), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("HELPTEXT_MACHINE_ROOT", root.path());
        env.insert("QT_QPA_PLATFORM", "offscreen");
        p.setProcessEnvironment(env);
        p.setWorkingDirectory(root.path());
        p.start(tools(binary), args);
        EXPECT_TRUE(p.waitForFinished(120000)) << qPrintable(binary);
        output = QString::fromUtf8(p.readAllStandardError() + p.readAllStandardOutput());
        log = QString::fromUtf8(test::readFileBytes(tools(binary + "Error.log")));
        return p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    }
    // Every file below the root except those in the help directory.
    QStringList filesOutsideHelp() const
    {
        QStringList files;
        QDirIterator it(root.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext())
            if (const QString f = it.next(); !f.startsWith(help() + '/'))
                files << f;
        files.sort();
        return files;
    }

    QTemporaryDir root;
    QString output, log;
};

TEST_F(StartupProcess, BuildWithoutVariantEnds)
{
    EXPECT_NE(run("helptext-nomode"), 0);
    EXPECT_TRUE(log.contains("CompileOption not set")) << qPrintable(output);
}

TEST_F(StartupProcess, MissingStandardPathsAreLoggedOnMachinePC)
{
    EXPECT_EQ(run("helptext-editor"), 1) << qPrintable(output);
    EXPECT_EQ(log, "File not found: " + root.filePath("Program/Helptext.mdb") + "\r\n");
}

// A script learns from the exit code whether the run did what it asked for.
TEST_F(StartupProcess, ExitCodeTellsHowTheStartWent)
{
    struct Case {
        const char *name;
        QStringList args;
        const char *inTheWay; // a file standing where a machine's folder goes
        int exitCode;
        QString logged, stderrSays;
    };
    const Case cases[] = {
        {"HtmlWithoutKind", {"/html"}, nullptr, 2, "Missing second parameter in commandline\r\n", {}},
        {"WindowWithoutDisplay", {}, nullptr, 2, {}, "a display is needed to show the window"},
        {"MachineFolderBlocked", {"/html/Warnings"}, "CT400", 1, "a file of that name is in the way.", {}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        QDir(root.path()).removeRecursively();
        test::makeMachineTree(root.path());
        if (c.inTheWay)
            test::writeText(help() + '/' + c.inTheWay, "not a folder");
        EXPECT_EQ(run("helptext-editor", c.args), c.exitCode) << qPrintable(output);
        EXPECT_TRUE(log.contains(c.logged)) << qPrintable(log);
        EXPECT_TRUE(output.contains(c.stderrSays)) << qPrintable(output);
    }
    // The blocked machine cost only its own pages.
    EXPECT_TRUE(QFile::exists(help() + "/FL220/Warnings/English/1.html"));
}

TEST_F(StartupProcess, BatchRunWritesPagesInsideTheHelpDirectoryOnly)
{
    test::makeMachineTree(root.path());
    // Without a display the machine PC's settings file tells the panel's width.
    test::writeText(tools("helptext-editor.ini"), "[Setup]\r\nScreenResolution=1280\r\n");
    QStringList expectedOutside = filesOutsideHelp() << tools("helptext-editor");
    expectedOutside.sort();

    // Any separator and any case, as an operator's script may write it.
    EXPECT_EQ(run("helptext-editor", {"-HTML", "-alarms", "-Warnings", "-materialchange"}), 0)
        << qPrintable(output) << qPrintable(log);
    EXPECT_EQ(filesOutsideHelp(), expectedOutside) << qPrintable(log);

    const auto page = [&](const QString &rel) {
        const QByteArray bytes = test::readFileBytes(help() + '/' + rel);
        // Pages are UTF-16 with byte-order mark.
        return QString::fromUtf16(reinterpret_cast<const char16_t *>(bytes.constData()), bytes.size() / 2);
    };
    const QString greek = page("CT400/Alarms/Greek/1.html");
    EXPECT_TRUE(greek.contains("Η αποθήκη κουτιών είναι άδεια.")) << qPrintable(greek.left(400));
    EXPECT_TRUE(greek.contains("Ταχύτητα τροφοδότη")); // index-text address resolved
    EXPECT_TRUE(greek.contains("font-size: 18pt")) << "laid out for the 1280 panel";
    EXPECT_TRUE(page("FL220/Warnings/English/1.html").contains("Cap feeder"));
    EXPECT_TRUE(page("CT400/MaterialChange/Deutsch/1.html").contains("Formatwechsel"));
    // Items without any text get no page.
    EXPECT_FALSE(QFile::exists(help() + "/CT400/Alarms/English/3.html"));
    EXPECT_FALSE(QFile::exists(help() + "/FL220/Alarms/Deutsch/1.html"));
}

} // namespace
} // namespace ht
