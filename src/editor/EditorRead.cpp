// Reading an item: the source texts, the destination texts (unless the item's
// help page was made by hand), the alarm definition values, and the fonts and
// keyboard layout of the languages.
#include "editor/EditorForm.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Platform.h"
#include "common/SafePathName.h"
#include "database/Database.h"
#include "database/LanguageLookup.h"
#include "editor/EditorKinds.h"
#include "editor/EventsHeld.h"
#include "editor/KeyboardLayouts.h"
#include "editor/LoadingGuard.h"
#include "html/HtmlTextFile.h"

#include <cmath>
#include <optional>

namespace ht
{

namespace
{

const QString kNoFont = QStringLiteral("LEER"); // what a language without font specification reads as

// A number column as the text that names it ("3", never "3.0").
QString numberText(const QVariant &v)
{
    bool ok = false;
    const double d = v.toDouble(&ok);
    if (ok && std::isfinite(d) && d == std::floor(d))
        return QString::number(qlonglong(d));
    return v.toString();
}

std::optional<LanguageRecord> readLanguage(Database &db, const QString &name)
{
    const Recordset rs = db.query(QStringLiteral("SELECT Language.Language, Language.Name ,Language.Font, "
                                                 "Language.KBLayout FROM Language Where Language.Name = ?;"),
                                  {name});
    if (rs.recordCount() == 0)
        return std::nullopt;
    const QVariant font = rs.value(QStringLiteral("Font"));
    return LanguageRecord{numberText(rs.value(QStringLiteral("Language"))), font.isNull() ? kNoFont : font.toString(),
                          rs.text(QStringLiteral("KBLayout"))};
}

// The font parts of a language, or nothing when its specification cannot be used.
std::optional<QStringList> fontParts(const std::optional<LanguageRecord> &language)
{
    if (!language || language->font.size() < 2 || language->font == kNoFont)
        return std::nullopt;
    QStringList parts = GetFontSpecs(language->font);
    if (parts.value(FontName) == QLatin1String("-1"))
        return std::nullopt;
    return parts;
}

BoxFont boxFont(const QStringList &parts)
{
    BoxFont f;
    f.family = parts.value(FontName);
    f.pointSize = parts.value(FontSize).toDouble();
    if (!parts.value(FontWeight).isEmpty())
        f.weight = parts.value(FontWeight).toInt();
    f.italic = parts.value(4).toInt() != 0;
    f.underline = parts.value(5).toInt() != 0;
    f.strikeOut = parts.value(6).toInt() != 0;
    return f;
}

} // namespace

QString slashesToLineBreaks(const QString &text)
{
    QString out;
    out.reserve(text.size() + 8);
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != u'/') {
            out += text[i];
            continue;
        }
        out += QStringLiteral("\r\n");
        if (i + 1 < text.size() && text[i + 1] == u' ')
            ++i; // "/ " is one line break: the blank goes with it
    }
    return out;
}

TextQuery textQuery(int kind, long itemId, const QString &language)
{
    const QVariant id = QVariant::fromValue(qlonglong(itemId));
    const QVariant lang = QVariant::fromValue(language.toLongLong());
    switch (kind) {
    case KindWarnings:
        return {QStringLiteral("SELECT WarningText.Warning_ID, WarningText.Language, WarningText.Function From "
                               "WarningText WHERE (((WarningText.Warning_ID)=?) AND ((WarningText.Language)=?));"),
                {id, lang}};
    case KindMaterialChange:
        return {QStringLiteral("SELECT MaterialChangetext.MaterialChange_ID, MaterialChangetext.Language, "
                               "MaterialChangetext.Text From MaterialChangetext WHERE MaterialChangetext.Language= ? "
                               "AND MaterialChangetext.MaterialChange_ID= ?;"),
                {lang, id}};
    default:
        return {QStringLiteral("SELECT Alarmtext.Alarm_ID, Alarmtext.Language, Alarmtext.Device, Alarmtext.Result, "
                               "Alarmtext.Function From Alarmtext WHERE Alarmtext.Language= ? AND Alarmtext.Alarm_ID= "
                               "?;"),
                {lang, id}};
    }
}

TextQuery EditorForm::GetSQLForTextTable(const QString &language) const
{
    return textQuery(ctx.state.currentKind, itemID(), language);
}

QStringList EditorForm::readTexts(Database &db, const QString &language) const
{
    const TextQuery q = GetSQLForTextTable(language);
    const Recordset rs = db.query(q.sql, q.params);
    QStringList texts;
    for (const QString &field : kind().textFields)
        texts << (rs.recordCount() > 0 ? rs.text(field) : QString()); // a missing row shows empty boxes
    return texts;
}

void EditorForm::setTextBoxes(Ctl side, const QStringList &texts)
{
    const EditorKind &k = kind();
    for (qsizetype i = 0; i < k.textBoxes.size(); ++i) {
        view.setText(side, k.textBoxes[i], texts.value(i));
        SingleLineToMultiLine(side, k.textBoxes[i]);
        view.clearUndo(side, k.textBoxes[i]); // undo never reaches back into another item
    }
}

// Sets the boxes of one side in the language's font, else in the fall-back's;
// false when the language's own specification could not be used.
bool EditorForm::applyFont(Ctl side, const LanguageRecord *language, const LanguageRecord *fallback)
{
    std::optional<QStringList> parts = fontParts(language ? std::optional(*language) : std::nullopt);
    const bool own = parts.has_value();
    if (!own && fallback)
        parts = fontParts(*fallback);
    if (parts) {
        for (int box = 1; box <= 3; ++box)
            view.setFont(side, box, boxFont(*parts));
    }
    return own;
}

void EditorForm::showFontError()
{
    view.setVisible(Ctl::LabelFontError, m_sourceFontError || m_destinationFontError);
}

void EditorForm::Source_Read()
{
    try {
        LoadingGuard loading(*this);
        const QString name = view.text(Ctl::ComboLanguageSource);
        if (itemNumber() == 0 || name.isEmpty() || ctx.state.helpTextDB.isEmpty())
            return;
        auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadOnly);
        std::optional<LanguageRecord> language = readLanguage(*db, name);
        if (language && language->font.size() >= 2 && !fontParts(language)) {
            // Read once more after the lists were filled again, as the language may just have changed.
            FillLanguageList();
            language = readLanguage(*db, name);
        }
        m_sourceLanguageNumber = language ? language->number : QString();
        m_sourceFontError = !applyFont(Ctl::TextSource, language ? &*language : nullptr, nullptr);
        showFontError();
        const QStringList texts = language ? readTexts(*db, language->number) : QStringList();
        // As stored, for the review marks: what a translation was saved against.
        m_storedSource.clear();
        for (qsizetype i = 0; i < kind().textFields.size(); ++i)
            m_storedSource.insert(kind().textFields[i], texts.value(i));
        setTextBoxes(Ctl::TextSource, texts);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Source_Read"), e);
    }
}

QString EditorForm::pagePath() const
{
    const AppState &s = ctx.state;
    const QString language = view.text(Ctl::ComboLanguageDestination);
    // Names from the database become folders: only those that stay inside the help directory.
    if (s.helpMainDir.isEmpty() || itemNumber() == 0 || !isSafePathName(m_selection.machine) ||
        !isSafePathName(language))
        return {};
    const QChar sep = pathSeparator();
    return withTrailingSeparator(s.helpMainDir) + m_selection.machine + sep + kind().word + sep + language + sep +
           QString::number(itemNumber()) + QStringLiteral(".html");
}

void EditorForm::lockDestination(bool locked)
{
    for (int box = 1; box <= 3; ++box)
        view.setLocked(Ctl::TextDestination, box, locked);
    for (int box = 1; box <= 4; ++box)
        view.setLocked(Ctl::TextDefinition, box, locked);
}

void EditorForm::Destination_Read()
{
    try {
        LoadingGuard loading(*this);
        const QString name = view.text(Ctl::ComboLanguageDestination);
        if (itemNumber() == 0 || name.isEmpty() || ctx.state.helpTextDB.isEmpty())
            return;
        const QString path = pagePath();
        QStringList page{QStringLiteral("-1")};
        if (!path.isEmpty()) {
            EventsHeld held(ctx); // reading one page is quick: no event comes in halfway through an item
            page = GetTextFileHTML(ctx, path, false, true);
        }
        const bool generatedOrNone =
            page.size() == 1 && (page.first() == QLatin1String("-1") || page.first().isEmpty());
        if (!generatedOrNone) {
            // Made or changed by hand: the database's texts would not reach the page.
            m_destinationEditable = false;
            lockDestination(true);
            const QStringList notice{
                QStringLiteral("HTML file modified by Costumer."),
                QStringLiteral("Harko-Settings will be displayed on  \"Source\" side of this page."),
                QStringLiteral("To reset original values delete file ") + path + QStringLiteral("!")};
            m_shownItem = {};
            if (kind().textBoxes.size() == 3) {
                for (int box = 1; box <= 3; ++box)
                    view.setText(Ctl::TextDestination, box, notice[box - 1]);
            } else {
                view.setText(Ctl::TextDestination, 3, notice.join(QStringLiteral("\r\n"))); // the only box shown
            }
            for (int box = 1; box <= 3; ++box)
                view.clearUndo(Ctl::TextDestination, box);
            for (int box = 1; box <= 4; ++box)
                view.setText(Ctl::TextDefinition, box, QString());
            m_definitionRead = {};
            return;
        }
        auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadOnly);
        std::optional<LanguageRecord> language = readLanguage(*db, name);
        const std::optional<LanguageRecord> english = readLanguage(*db, QStringLiteral("English"));
        m_destinationEditable = language.has_value();
        lockDestination(!m_destinationEditable);
        m_destinationFontError =
            !applyFont(Ctl::TextDestination, language ? &*language : nullptr, english ? &*english : nullptr);
        showFontError();
        if (language)
            view.activateKeyboardLayout(keyboardLayoutId(language->layout), keyboardLayoutText(language->layout, name));
        m_shownItem = {};
        if (language)
            m_shownItem = {m_selection.machine, ctx.state.currentKind, itemNumber(), itemID(), name, language->number};
        m_destinationName = name;
        m_destinationFont = language ? language->font : QString();
        setTextBoxes(Ctl::TextDestination, language ? readTexts(*db, language->number) : QStringList());
        Definition_Read();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Destination_Read"), e);
    }
}

void EditorForm::Definition_Read()
{
    try {
        LoadingGuard loading(*this);
        m_definitionRead = {};
        if (kind().definitions && itemNumber() > 0 && !ctx.state.helpTextDB.isEmpty()) {
            auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadOnly);
            const Recordset rs = db->query(
                QStringLiteral("SELECT AlarmDefinition.AlarmID, AlarmDefinition.MachineType, AlarmDefinition.AlarmNo, "
                               "AlarmDefinition.Sensor, AlarmDefinition.Cam, AlarmDefinition.CPU, "
                               "AlarmDefinition.Rejects From AlarmDefinition WHERE (AlarmDefinition.AlarmID= ?);"),
                {QVariant::fromValue(qlonglong(itemID()))});
            const char *fields[] = {"Sensor", "Cam", "CPU", "Rejects"};
            for (int i = 0; i < 4 && rs.recordCount() > 0; ++i)
                m_definitionRead[i] = rs.text(QLatin1String(fields[i]));
        }
        for (int box = 1; box <= 4; ++box)
            view.setText(Ctl::TextDefinition, box, m_definitionRead[box - 1]);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Definition_Read"), e);
    }
}

void EditorForm::SingleLineToMultiLine(Ctl box, int index)
{
    try {
        const QString text = view.text(box, index);
        if (!text.contains(u'/'))
            return;
        LoadingGuard loading(*this);
        const int caret = view.cursorPosition(box, index);
        view.setText(box, index, slashesToLineBreaks(text));
        view.setCursorPosition(box, index, caret);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("SingleLineToMultiLine"), e);
    }
}

} // namespace ht
