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
    QString tools() const { return root.filePath(QStringLiteral("Program/Tools")); }
    QString help() const { return root.filePath(QStringLiteral("Program/Help")); }

    // Copies `binary` from build/bin into <root>/Program/Tools and runs it
    // there as the machine PC. Returns the exit code (-1 when it crashed).
    int run(const QString &binary, const QStringList &args)
    {
        QDir().mkpath(tools());
        test::copyFile(test::binDir() + QLatin1Char('/') + binary, tools() + QLatin1Char('/') + binary);
        QFile::setPermissions(tools() + QLatin1Char('/') + binary,
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("HELPTEXT_MACHINE_ROOT"), root.path());
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        p.setProcessEnvironment(env);
        p.setWorkingDirectory(root.path());
        p.start(tools() + QLatin1Char('/') + binary, args);
        EXPECT_TRUE(p.waitForFinished(120000)) << qPrintable(binary);
        output = QString::fromUtf8(p.readAllStandardError() + p.readAllStandardOutput());
        return p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    }
    QString log(const QString &binary) const
    {
        return QString::fromUtf8(
            test::readFileBytes(tools() + QLatin1Char('/') + binary + QStringLiteral("Error.log")));
    }
    // Every file below the root except those in the help directory.
    QStringList filesOutsideHelp() const
    {
        QStringList files;
        QDirIterator it(root.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString f = it.next();
            if (!f.startsWith(help() + QLatin1Char('/')))
                files << f;
        }
        files.sort();
        return files;
    }

    QTemporaryDir root;
    QString output;
};

TEST_F(StartupProcess, BuildWithoutVariantEnds)
{
    EXPECT_NE(run(QStringLiteral("helptext-nomode"), {}), 0);
    EXPECT_TRUE(log(QStringLiteral("helptext-nomode")).contains(QStringLiteral("CompileOption not set")))
        << qPrintable(output);
}

TEST_F(StartupProcess, MissingStandardPathsAreLoggedOnMachinePC)
{
    EXPECT_EQ(run(QStringLiteral("helptext-editor"), {}), 1) << qPrintable(output);
    EXPECT_EQ(log(QStringLiteral("helptext-editor")), QStringLiteral("File not found: ") +
                                                          root.filePath(QStringLiteral("Program/Helptext.mdb")) +
                                                          QStringLiteral("\r\n"));
}

TEST_F(StartupProcess, HtmlWithoutSecondParameter)
{
    test::makeMachineTree(root.path());
    EXPECT_EQ(run(QStringLiteral("helptext-editor"), {QStringLiteral("/html")}), 0) << qPrintable(output);
    EXPECT_EQ(log(QStringLiteral("helptext-editor")), QStringLiteral("Missing second parameter in commandline\r\n"));
}

TEST_F(StartupProcess, BatchRunWritesPagesInsideTheHelpDirectoryOnly)
{
    test::makeMachineTree(root.path());
    QDir().mkpath(tools());
    const QString binary = QStringLiteral("helptext-editor");
    const QStringList expectedOutside = [&] {
        QStringList files = filesOutsideHelp();
        files << tools() + QLatin1Char('/') + binary;
        files.sort();
        return files;
    }();

    // Any separator and any case, as an operator's script may write it.
    EXPECT_EQ(run(binary, {QStringLiteral("-HTML"), QStringLiteral("-alarms"), QStringLiteral("-Warnings"),
                           QStringLiteral("-materialchange")}),
              0)
        << qPrintable(output) << qPrintable(log(binary));
    EXPECT_EQ(filesOutsideHelp(), expectedOutside) << qPrintable(log(binary));

    const auto page = [&](const QString &rel) {
        const QByteArray bytes = test::readFileBytes(help() + QLatin1Char('/') + rel);
        // Pages are UTF-16 with byte-order mark.
        return QString::fromUtf16(reinterpret_cast<const char16_t *>(bytes.constData()), bytes.size() / 2);
    };
    const QString greek = page(QStringLiteral("CT400/Alarms/Greek/1.html"));
    EXPECT_TRUE(greek.contains(QStringLiteral("Η αποθήκη κουτιών είναι άδεια."))) << qPrintable(greek.left(400));
    EXPECT_TRUE(greek.contains(QStringLiteral("Ταχύτητα τροφοδότη"))); // index-text address resolved
    EXPECT_TRUE(page(QStringLiteral("FL220/Warnings/English/1.html")).contains(QStringLiteral("Cap feeder")));
    EXPECT_TRUE(page(QStringLiteral("CT400/MaterialChange/Deutsch/1.html")).contains(QStringLiteral("Formatwechsel")));
    // Items without any text get no page.
    EXPECT_FALSE(QFile::exists(help() + QStringLiteral("/CT400/Alarms/English/3.html")));
    EXPECT_FALSE(QFile::exists(help() + QStringLiteral("/FL220/Alarms/Deutsch/1.html")));
}

} // namespace
} // namespace ht
