// The checks in the editor: the findings of the item shown, listed under the
// boxes while the translator types; going to the next item with findings;
// copying the source text into the destination.
#include "editor/EditorForm.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/UserInterface.h"
#include "database/Database.h"
#include "editor/EditorKinds.h"
#include "editor/LoadingGuard.h"
#include "review/DatabaseCheck.h"
#include "review/ItemChecker.h"

namespace ht
{

ItemChecker &EditorForm::checker()
{
    if (!m_checker)
        m_checker = std::make_unique<ItemChecker>(ctx, widthLimitsFromSettings(ctx));
    return *m_checker;
}

// What the item's destination texts were last saved against (its source as
// stored now was read with the source texts).
void EditorForm::readReviewState()
{
    m_keptSource.clear();
    if (m_shownItem.number == 0 || m_sourceLanguageNumber.isEmpty() || ctx.state.helpTextDB.isEmpty())
        return;
    try {
        m_keptSource = readTranslatedFrom(ctx.state.helpTextDB, m_shownItem.kind, m_shownItem.id,
                                          m_shownItem.languageNumber, m_sourceLanguageNumber);
    } catch (const std::exception &e) {
        // Without the marks the item is only not marked for review.
        LogError(ctx, QStringLiteral("readReviewState: ") + QString::fromUtf8(e.what()));
    }
}

void EditorForm::refreshFindings(bool stored)
{
    try {
        m_findings.clear();
        const EditorKind &k = editorKind(m_shownItem.kind);
        if (m_shownItem.number != 0 && m_destinationEditable && !m_sourceLanguageNumber.isEmpty()) {
            std::vector<FieldTexts> fields;
            for (qsizetype i = 0; i < k.textFields.size(); ++i) {
                const int box = k.textBoxes[i];
                FieldTexts t{k.textFields[i], view.text(Ctl::TextSource, box), view.text(Ctl::TextDestination, box),
                             std::nullopt};
                // The boxes show line breaks where the database has "/": an unchanged source is compared as shown.
                const auto kept = m_keptSource.constFind(t.field);
                if (kept != m_keptSource.constEnd())
                    t.keptSource = *kept == m_storedSource.value(t.field) ? t.source : *kept;
                fields.push_back(std::move(t));
            }
            m_findings = checker().check(fields, {m_shownItem.languageNumber, m_destinationName, m_destinationFont});
            if (stored || !m_dirty) { // the item list's line tells what is stored
                bool hasSource = false, missing = false;
                QString start;
                for (const FieldTexts &t : fields) {
                    const bool filled = !t.source.trimmed().isEmpty();
                    hasSource = hasSource || filled;
                    missing = missing || (filled && t.destination.trimmed().isEmpty());
                    if (start.isEmpty())
                        start = t.source.trimmed();
                }
                view.setItemListLine(m_shownItem.number,
                                     itemListLine(m_shownItem.number, start, m_findings, missing, hasSource));
            }
            for (const QString &note : checker().takeNotes())
                setStatus(note);
        }
        QStringList lines;
        for (const Finding &f : m_findings) {
            lines << f.message;
            // What changed in the source, the words in brackets.
            if (f.check == QLatin1String("review")) {
                const auto [before, now] =
                    markWordDifference(m_keptSource.value(f.field), m_storedSource.value(f.field));
                lines << QStringLiteral("    source before: \"%1\"; now: \"%2\"").arg(before, now);
            }
        }
        view.setText(Ctl::LabelFindings, lines.join(QLatin1Char('\n')));
        for (int box = 1; box <= 3; ++box) {
            const qsizetype i = k.textBoxes.indexOf(box);
            const bool marked = i >= 0 && std::any_of(m_findings.begin(), m_findings.end(),
                                                      [&](const Finding &f) { return f.field == k.textFields[i]; });
            view.setMarked(Ctl::TextDestination, box, marked);
        }
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("refreshFindings"), e);
    }
}

// "12  ✓  Carton magazine": number, state mark, the first words of the source.
QString EditorForm::itemListLine(int number, const QString &source, const Findings &findings, bool missing,
                                 bool hasSource) const
{
    const bool review = std::any_of(findings.begin(), findings.end(),
                                    [](const Finding &f) { return f.check == QLatin1String("review"); });
    const QChar mark = !hasSource          ? QChar(u' ')
                       : missing           ? QChar(u'○')
                       : review            ? QChar(u'↻')
                       : !findings.empty() ? QChar(u'!')
                                           : QChar(u'✓');
    QStringList words =
        QString(source).replace(QLatin1Char('/'), QLatin1Char(' ')).simplified().split(QLatin1Char(' '));
    const QString start =
        words.mid(0, 6).join(QLatin1Char(' ')) + (words.size() > 6 ? QStringLiteral(" …") : QString());
    return QStringLiteral("%1  %2  %3").arg(number, 4).arg(mark).arg(start).trimmed();
}

// Filled when the machine, kind or a language changed, or a search asked;
// moving between items only selects a line.
void EditorForm::refreshItemList(bool force)
{
    const long count = ctx.state.maxItems[ctx.state.currentKind];
    const QString key = QStringList{m_selection.machine, QString::number(ctx.state.currentKind), m_sourceLanguageNumber,
                                    m_shownItem.languageNumber, QString::number(count)}
                            .join(QLatin1Char('\n'));
    if (force || key != m_itemListKey) {
        if (key != m_itemListKey)
            m_itemListFilter.clear(); // a search of another machine, kind or language pair is over
        m_itemListKey = key;
        QStringList lines;
        QList<int> numbers;
        QList<bool> found(count, m_itemListFilter.isEmpty());
        for (long n = 1; n <= count; ++n)
            lines << QString::number(n);
        if (!m_sourceLanguageNumber.isEmpty() && !m_shownItem.languageNumber.isEmpty() && count > 0) {
            const long first = m_selection.firstItemID;
            checkShownPair([&](const CheckedItem &item) {
                const long n = item.id - first + 1;
                if (n < 1 || n > count)
                    return;
                lines[n - 1] = itemListLine(int(n), item.sourceStart, item.findings, item.missing, item.hasSource);
                for (const FieldTexts &t : item.texts)
                    found[n - 1] = found[n - 1] || t.source.contains(m_itemListFilter, Qt::CaseInsensitive) ||
                                   t.destination.contains(m_itemListFilter, Qt::CaseInsensitive);
            });
        }
        QStringList shown;
        for (long n = 1; n <= count; ++n)
            if (found[n - 1]) {
                numbers << int(n);
                shown << lines[n - 1];
            }
        view.setItemList(numbers, shown);
    }
    view.selectItemListLine(itemNumber());
}

void EditorForm::MenuFind_Click()
{
    try {
        Menu_GotFocus();
        if (!ctx.ui || m_shownItem.languageNumber.isEmpty())
            return;
        const std::optional<QString> typed = ctx.ui->inputBox(
            QStringLiteral(
                "Find in the source and destination texts of this machine and kind (empty: list every item):"),
            QStringLiteral("Find"), m_itemListFilter);
        if (!typed)
            return;
        m_itemListFilter = typed->trimmed();
        refreshItemList(true);
        if (!m_itemListFilter.isEmpty())
            setStatus(QStringLiteral("The item list shows the items that hold \"%1\"").arg(m_itemListFilter));
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuFind_Click"), e);
    }
}

void EditorForm::ItemList_Click(int number)
{
    try {
        if (number == itemNumber() || number < 1)
            return;
        if (!mayReplaceInput())
            return view.selectItemListLine(itemNumber());
        view.setText(Ctl::ComboIndex, QString::number(number));
        showItem();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("ItemList_Click"), e);
    }
}

// Runs the checks over the shown machine and kind for the shown language pair;
// nothing when the database no longer has one of the two languages.
void EditorForm::checkShownPair(const std::function<void(const CheckedItem &)> &each)
{
    DatabaseCheck check(ctx.state.helpTextDB, checker());
    const CheckLanguage *source = nullptr, *destination = nullptr;
    for (const CheckLanguage &l : check.languages()) {
        if (l.number == m_sourceLanguageNumber)
            source = &l;
        if (l.number == m_shownItem.languageNumber)
            destination = &l;
    }
    if (source && destination)
        check.run(*destination, *source, {m_selection.machine, ctx.state.currentKind, {}}, each);
}

void EditorForm::findWithFindings(int direction)
{
    if (!mayReplaceInput())
        return;
    if (m_sourceLanguageNumber.isEmpty() || m_shownItem.languageNumber.isEmpty()) {
        setStatus(QStringLiteral("Choose a source and a destination language first"));
        return;
    }
    QList<int> numbers;
    const long first = m_selection.firstItemID, count = ctx.state.maxItems[ctx.state.currentKind];
    checkShownPair([&](const CheckedItem &item) {
        if (!item.findings.empty() && item.id >= first && item.id < first + count)
            numbers << int(item.id - first + 1);
    });
    if (numbers.isEmpty()) {
        setStatus(QStringLiteral("No item of this machine and kind has findings"));
        return;
    }
    showNearest(numbers, direction);
}

void EditorForm::MenuNextFinding_Click()
{
    try {
        findWithFindings(+1);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuNextFinding_Click"), e);
    }
}

void EditorForm::MenuPreviousFinding_Click()
{
    try {
        findWithFindings(-1);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuPreviousFinding_Click"), e);
    }
}

// The box with the focus takes its source text; with none focused, every box
// of the kind. It is stored at once, as a typed text is when its box is left.
void EditorForm::MenuCopySource_Click()
{
    try {
        if (!m_destinationEditable || m_shownItem.number == 0)
            return;
        const EditorKind &k = editorKind(m_shownItem.kind);
        QList<int> boxes;
        for (int box : k.textBoxes)
            if (view.hasFocus(Ctl::TextDestination, box))
                boxes << box;
        if (boxes.isEmpty())
            boxes = k.textBoxes;
        for (int box : boxes) {
            {
                LoadingGuard loading(*this);
                view.setText(Ctl::TextDestination, box, view.text(Ctl::TextSource, box));
            }
            m_dirty = true;
            m_pendingFocus = box;
        }
        TextDestination_LostFocus(boxes.last());
        refreshFindings();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuCopySource_Click"), e);
    }
}

void EditorForm::MenuReviewed_Click()
{
    try {
        Menu_GotFocus();
        if (m_shownItem.number == 0 || m_sourceLanguageNumber.isEmpty() || m_keptSource.isEmpty())
            return;
        std::vector<KeptSource> sources;
        for (auto it = m_storedSource.constBegin(); it != m_storedSource.constEnd(); ++it)
            sources.push_back({it.key(), it.value()});
        try {
            ht::keepTranslatedFrom(ctx.state.helpTextDB, m_shownItem.kind, m_shownItem.id, m_shownItem.languageNumber,
                                   m_sourceLanguageNumber, sources);
        } catch (const std::exception &e) {
            LogError(ctx, QStringLiteral("MenuReviewed_Click: ") + QString::fromUtf8(e.what()));
            setStatus(QStringLiteral("The review mark could not be cleared (the error log has the details)"));
            return;
        }
        for (const KeptSource &s : sources)
            m_keptSource.insert(s.field, s.text);
        refreshFindings();
        setStatus(QStringLiteral("Reviewed: ") + pendingWhat());
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuReviewed_Click"), e);
    }
}

} // namespace ht
