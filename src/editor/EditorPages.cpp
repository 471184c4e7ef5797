// The editor's page menus: generating the help pages of a kind or of all
// kinds, and choosing the help main directory.
#include "editor/EditorForm.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "editor/EditorKinds.h"
#include "html/HelpDirectory.h"
#include "html/HtmlWriter.h"

namespace ht
{

void EditorForm::MenuGenerateHelpHTML_Click()
{
    try {
        Menu_GotFocus();
        const int k = ctx.state.currentKind;
        if (k < KindAlarms || k > KindMaterialChange || ctx.state.writingHtml)
            return;
        const int option = GetGenerateHTMLOption(ctx, editorKind(k).word);
        if (option == 0)
            return;
        bool alarms = option == 2 || k == KindAlarms;
        bool warnings = option == 2 || k == KindWarnings;
        // A database without material-change tables has no such pages.
        bool materialChange = (option == 2 || k == KindMaterialChange) && ctx.state.materialChangePresent;
        runPages(true, [&] {
            WriteHTMLPage(ctx, view.statusTarget(), alarms, warnings, materialChange, QString(), QString(), 0);
        });
        refreshStatus(); // the run's progress texts gave way to nothing
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuGenerateHelpHTML_Click"), e);
    }
}

void EditorForm::MenuSelectHelptextdirectory_Click()
{
    try {
        Menu_GotFocus();
        bool checkOnly = ctx.state.unattended;
        bool select = true;
        const QString dir = GetHelpMainDir(ctx, checkOnly, select);
        if (dir.isEmpty())
            return;
        ctx.state.helpMainDir = dir;
        if (!hasUnsavedInput())
            showItem(); // the pages there decide which items are locked
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuWarnings_Click"), e);
    }
}

} // namespace ht
