#include "common/forms/QtUserInterface.h"

#include "common/Platform.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace ht
{

namespace
{

QWidget *dialogParent()
{
    return QApplication::activeWindow();
}

QMessageBox::StandardButtons standardButtons(Buttons buttons)
{
    switch (buttons) {
    case Buttons::OK:
        return QMessageBox::Ok;
    case Buttons::OKCancel:
        return QMessageBox::Ok | QMessageBox::Cancel;
    case Buttons::YesNo:
        return QMessageBox::Yes | QMessageBox::No;
    case Buttons::YesNoCancel:
        return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    case Buttons::RetryCancel:
        return QMessageBox::Retry | QMessageBox::Cancel;
    case Buttons::RetryDiscardCancel:
        return QMessageBox::Retry | QMessageBox::Discard | QMessageBox::Cancel;
    }
    return QMessageBox::Ok;
}

QMessageBox::Icon messageIcon(Icon icon)
{
    switch (icon) {
    case Icon::Critical:
        return QMessageBox::Critical;
    case Icon::Question:
        return QMessageBox::Question;
    case Icon::Exclamation:
        return QMessageBox::Warning;
    case Icon::Information:
        return QMessageBox::Information;
    case Icon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

Answer toAnswer(int button, Buttons buttons)
{
    switch (button) {
    case QMessageBox::Ok:
        return Answer::OK;
    case QMessageBox::Cancel:
        return Answer::Cancel;
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    case QMessageBox::Retry:
        return Answer::Retry;
    case QMessageBox::Discard:
        return Answer::Discard;
    default:
        return defaultAnswer(buttons); // closed with the window's close box
    }
}

// The classic messages break lines as LF CR; a lone CR would show as a glyph.
QString displayText(QString text)
{
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(QLatin1String("\n\r"), QLatin1String("\n"));
    text.remove(QLatin1Char('\r'));
    return text;
}

} // namespace

QString qtFileFilter(const QString &classicFilter)
{
    const QStringList parts = classicFilter.split(QLatin1Char('|'));
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QString patterns = parts[i + 1];
        patterns.replace(QLatin1Char(';'), QLatin1Char(' '));
        filters << parts[i] + QStringLiteral(" (") + patterns + QLatin1Char(')');
    }
    return filters.join(QStringLiteral(";;"));
}

Answer QtUserInterface::messageBox(const QString &text, Buttons buttons, Icon icon, const QString &title)
{
    QMessageBox box(messageIcon(icon), title.isEmpty() ? QApplication::applicationDisplayName() : title,
                    displayText(text), standardButtons(buttons), dialogParent());
    return toAnswer(box.exec(), buttons);
}

std::optional<QString> QtUserInterface::inputBox(const QString &prompt, const QString &title,
                                                 const QString &defaultValue)
{
    bool ok = false;
    const QString value =
        QInputDialog::getText(dialogParent(), title, displayText(prompt), QLineEdit::Normal, defaultValue, &ok);
    if (!ok)
        return std::nullopt;
    return value;
}

std::optional<OpenFileChoice> QtUserInterface::openFile(const QString &title, const QString &filter,
                                                        const QString &startPath)
{
    // Qt's own dialog, so that the "open read-only" box can be added like the
    // classic one had it.
    QFileDialog dialog(dialogParent(), title, startPath, qtFileFilter(filter));
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    if (fileExists(startPath))
        dialog.selectFile(startPath);
    auto *readOnly = new QCheckBox(QStringLiteral("Open as read-only"), &dialog);
    if (auto *grid = qobject_cast<QGridLayout *>(dialog.layout()))
        grid->addWidget(readOnly, grid->rowCount(), 0, 1, grid->columnCount());
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return OpenFileChoice{dialog.selectedFiles().constFirst(), readOnly->isChecked()};
}

std::optional<QString> QtUserInterface::saveFile(const QString &title, const QString &filter,
                                                 const QString &startPath)
{
    QFileDialog dialog(dialogParent(), title, startPath, qtFileFilter(filter));
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    // Whether to replace a file is the program's question, with its own wording.
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty() ||
        dialog.selectedFiles().constFirst().isEmpty())
        return std::nullopt;
    return dialog.selectedFiles().constFirst();
}

std::optional<QString> QtUserInterface::chooseDirectory(const QString &title, const QString &preset)
{
    QFileDialog dialog(dialogParent(), title, preset);
    dialog.setObjectName(QStringLiteral("dlgSelectDir"));
    dialog.setAccessibleName(title);
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    const QString dir = dialog.selectedFiles().constFirst();
    if (dir.isEmpty())
        return std::nullopt;
    // The help main directory always ends with a separator (a root already does).
    return withTrailingSeparator(QDir::toNativeSeparators(dir));
}

std::optional<int> QtUserInterface::chooseScreenWidth(int preset)
{
    const QStringList widths{QStringLiteral("800"), QStringLiteral("1024"), QStringLiteral("1280")};
    const qsizetype current = std::max<qsizetype>(0, widths.indexOf(QString::number(preset)));
    bool ok = false;
    const QString chosen = QInputDialog::getItem(dialogParent(), QStringLiteral("Screen size"),
                                                 QStringLiteral("Screen width of the machine's panel (pixels):"),
                                                 widths, int(current), false, &ok);
    if (!ok)
        return std::nullopt;
    return chosen.toInt();
}

std::optional<int> QtUserInterface::chooseOption(const QString &name, const QString &title, const QStringList &options)
{
    QDialog dialog(dialogParent());
    dialog.setObjectName(name);
    dialog.setWindowTitle(title);
    dialog.setAccessibleName(title);
    auto *layout = new QVBoxLayout(&dialog);
    auto *group = new QButtonGroup(&dialog);
    // "dlgSelectHTMLOption" has the option group "OptionSelectHTMLOption".
    const QString groupName = QStringLiteral("Option") + (name.startsWith(QLatin1String("dlg")) ? name.mid(3) : name);
    for (qsizetype i = 0; i < options.size(); ++i) {
        auto *option = new QRadioButton(options[i], &dialog);
        option->setObjectName(groupName + QString::number(i + 1));
        option->setAccessibleName(options[i]);
        option->setChecked(i == 0);
        group->addButton(option, int(i));
        layout->addWidget(option);
    }
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("ButtonOK"));
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("ButtonCancel"));
    layout->addWidget(buttons);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    if (dialog.exec() != QDialog::Accepted || group->checkedId() < 0)
        return std::nullopt;
    return group->checkedId();
}

} // namespace ht
