// Imports into an Access help-text database keyed as Access keys it. Jobs that
// the keys take are compared with SQLite in AccessDifferentialTest; here, a job
// the keys cannot take.
#include "ImportTestSupport.h"

#include "common/StatusDisplay.h"
#include "importer/Importer.h"

namespace ht
{
namespace
{

// A machine name the indexed MachineType cannot take as a key (a character
// outside the key encoder's): the job fails, the file stays byte for byte.
TEST(ImportAccessKeys, AMachineNameTheKeyCannotTakeChangesNothing)
{
    test::ImportWorkspace w;
    test::writeFileBytes(w.db(), test::readFileBytes(test::sourceDir() + "/tests/data/jet/helptext_keys.mdb"));
    ASSERT_EQ(CheckConnection(w.t.ctx, w.db()), w.db());
    HeadlessStatus status;
    Importer importer(w.t.ctx, &status,
                      [](const QString &, const QString &, const QString &) { return AnswerReplaceAll; });
    ImportRequest r;
    r.machine = QString::fromUtf8("Maschine Größe");
    r.language = QStringLiteral("Greek");
    r.source = {test::workbook(QStringLiteral("layout-plain.xlsx")), 2, 1, QStringLiteral("0")};
    const QByteArray before = test::readFileBytes(w.db());
    EXPECT_FALSE(importer.MainProc(r));
    EXPECT_TRUE(test::readFileBytes(w.db()) == before);
    const QString said = w.t.ui.messageTexts().value(w.t.ui.messageTexts().size() - 1);
    EXPECT_TRUE(said.contains("cannot take this row")) << qPrintable(said);
}

} // namespace
} // namespace ht
