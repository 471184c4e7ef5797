// Finding the work left: the next or previous item that has a source text but
// no destination text yet, going to an item by number, and how many items of
// the machine and kind are translated.
#include "editor/EditorForm.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/UserInterface.h"
#include "database/Database.h"
#include "editor/EditorKinds.h"

namespace ht
{

namespace
{

// "an item has text": any of its text fields holds more than blanks.
QString hasText(const EditorKind &k, const QString &alias)
{
    QStringList any;
    for (const QString &field : k.textFields)
        any << QStringLiteral("trim(coalesce(%1.%2, '')) <> ''").arg(alias, field);
    return QLatin1Char('(') + any.join(QStringLiteral(" OR ")) + QLatin1Char(')');
}

struct LanguageNumbers {
    QVariant source, destination;
};

// The numbers of the two chosen languages; invalid when a language is not chosen or unknown.
LanguageNumbers languageNumbers(Database &db, const QString &source, const QString &destination)
{
    const auto number = [&](const QString &name) -> QVariant {
        if (name.isEmpty())
            return {};
        const Recordset rs = db.query(
            QStringLiteral("SELECT Language.Language, Language.Name FROM Language Where Language.Name = ?;"), {name});
        return rs.recordCount() > 0 ? rs.value(0) : QVariant();
    };
    return {number(source), number(destination)};
}

} // namespace

QList<int> EditorForm::untranslatedNumbers()
{
    QList<int> numbers;
    const long count = ctx.state.maxItems[ctx.state.currentKind];
    if (ctx.state.helpTextDB.isEmpty() || count < 1)
        return numbers;
    auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadOnly);
    const LanguageNumbers lang =
        languageNumbers(*db, view.text(Ctl::ComboLanguageSource), view.text(Ctl::ComboLanguageDestination));
    if (!lang.source.isValid() || !lang.destination.isValid())
        return numbers;
    const EditorKind &k = kind();
    const QString sql =
        QStringLiteral("SELECT s.%2 FROM %1 s WHERE s.Language = ? AND s.%2 BETWEEN ? AND ? AND %3 "
                       "AND NOT EXISTS (SELECT 1 FROM %1 d WHERE d.%2 = s.%2 AND d.Language = ? "
                       "AND %4) ORDER BY s.%2")
            .arg(k.textTable, k.textId, hasText(k, QStringLiteral("s")), hasText(k, QStringLiteral("d")));
    const qlonglong first = m_selection.firstItemID;
    for (const QVariantList &row : db->query(sql, {lang.source, first, first + count - 1, lang.destination}).rows())
        numbers << int(row[0].toLongLong() - first + 1);
    return numbers;
}

void EditorForm::findUntranslated(int direction)
{
    // The text typed is stored first, so that its item no longer counts as untranslated.
    if (!mayReplaceInput())
        return;
    if (view.text(Ctl::ComboLanguageSource).isEmpty() || view.text(Ctl::ComboLanguageDestination).isEmpty()) {
        setStatus(QStringLiteral("Choose a source and a destination language first"));
        return;
    }
    const QList<int> numbers = untranslatedNumbers();
    if (numbers.isEmpty()) {
        setStatus(QStringLiteral("Every item with a source text is translated"));
        return;
    }
    showNearest(numbers, direction);
}

// The next (direction > 0) or previous of `numbers` (ascending, not empty) from
// the item shown; past the last one the search goes on from the other end.
void EditorForm::showNearest(const QList<int> &numbers, int direction)
{
    const int current = itemNumber();
    int target = direction > 0 ? numbers.first() : numbers.last();
    if (direction > 0) {
        for (int n : numbers)
            if (n > current) {
                target = n;
                break;
            }
    } else {
        for (auto n = numbers.crbegin(); n != numbers.crend(); ++n)
            if (*n < current) {
                target = *n;
                break;
            }
    }
    view.setText(Ctl::ComboIndex, QString::number(target));
    showItem();
}

void EditorForm::MenuNextUntranslated_Click()
{
    try {
        findUntranslated(+1);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuNextUntranslated_Click"), e);
    }
}

void EditorForm::MenuPreviousUntranslated_Click()
{
    try {
        findUntranslated(-1);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuPreviousUntranslated_Click"), e);
    }
}

void EditorForm::MenuGoToItem_Click()
{
    try {
        if (!mayReplaceInput())
            return;
        const long count = ctx.state.maxItems[ctx.state.currentKind];
        if (count < 1 || !ctx.ui)
            return;
        const std::optional<QString> typed = ctx.ui->inputBox(QStringLiteral("Item number (1 to %1):").arg(count),
                                                              QStringLiteral("Go to item"), view.text(Ctl::ComboIndex));
        if (!typed || typed->trimmed().isEmpty())
            return;
        // The same corrections as typing into the item number box.
        view.setText(Ctl::ComboIndex, typed->trimmed());
        ComboIndex_KeyDown(0);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuGoToItem_Click"), e);
    }
}

void EditorForm::goToItem(const QString &machine, int kind, const QString &destination, int number)
{
    try {
        if (!mayReplaceInput())
            return;
        // Rows of a database changed meanwhile may name what is gone: the editor stays where it is.
        if (!m_machines.contains(machine) || !m_languages.contains(destination) || kind < KindAlarms ||
            kind > KindMaterialChange || (kind == KindMaterialChange && !ctx.state.materialChangePresent))
            return;
        ctx.state.currentKind = kind;
        m_selection.machine = machine;
        view.setText(Ctl::ComboLanguageDestination, destination);
        Form_Load();
        view.setText(Ctl::ComboIndex, QString::number(number));
        ComboIndex_KeyDown(0);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("goToItem"), e);
    }
}

QString EditorForm::sourceLanguage() const
{
    return view.text(Ctl::ComboLanguageSource);
}

// "translated n of m": of the m items of the machine and kind that have a
// source text, n have a destination text.
void EditorForm::refreshStatus()
{
    try {
        QString text;
        const long count = ctx.state.maxItems[ctx.state.currentKind];
        if (!ctx.state.helpTextDB.isEmpty() && count > 0 && !ctx.state.writingHtml) {
            auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadOnly);
            const LanguageNumbers lang =
                languageNumbers(*db, view.text(Ctl::ComboLanguageSource), view.text(Ctl::ComboLanguageDestination));
            if (lang.source.isValid() && lang.destination.isValid()) {
                const EditorKind &k = kind();
                const QString sql =
                    QStringLiteral("SELECT count(*), count(d.%2) FROM %1 s LEFT JOIN %1 d ON d.%2 = s.%2 AND "
                                   "d.Language = ? AND %4 WHERE s.Language = ? AND s.%2 BETWEEN ? AND ? AND %3")
                        .arg(k.textTable, k.textId, hasText(k, QStringLiteral("s")), hasText(k, QStringLiteral("d")));
                const qlonglong first = m_selection.firstItemID;
                const Recordset rs = db->query(sql, {lang.destination, lang.source, first, first + count - 1});
                text =
                    QStringLiteral("translated %1 of %2").arg(rs.value(1).toLongLong()).arg(rs.value(0).toLongLong());
            }
        }
        view.setText(Ctl::LabelTranslated, text);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("refreshStatus"), e);
    }
}

} // namespace ht
