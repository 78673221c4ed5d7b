#include "console/console_prompter.h"

#include "console/password_dialogs.h"

#include <QFileDialog>
#include <QMessageBox>

namespace cvd::console {

namespace {

QMessageBox::Icon box_icon(BoxIcon icon)
{
    switch (icon) {
    case BoxIcon::Information:
        return QMessageBox::Information;
    case BoxIcon::Warning:
        return QMessageBox::Warning;
    case BoxIcon::Critical:
        return QMessageBox::Critical;
    case BoxIcon::Question:
        return QMessageBox::Question;
    case BoxIcon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons box_buttons(BoxButtons buttons)
{
    switch (buttons) {
    case BoxButtons::OkCancel:
        return QMessageBox::Ok | QMessageBox::Cancel;
    case BoxButtons::YesNo:
        return QMessageBox::Yes | QMessageBox::No;
    case BoxButtons::YesNoCancel:
        return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    case BoxButtons::Ok:
        break;
    }
    return QMessageBox::Ok;
}

BoxAnswer box_answer(int button)
{
    switch (button) {
    case QMessageBox::Yes:
        return BoxAnswer::Yes;
    case QMessageBox::No:
        return BoxAnswer::No;
    case QMessageBox::Cancel:
        return BoxAnswer::Cancel;
    default:
        return BoxAnswer::Ok;
    }
}

std::optional<QString> chosen(const QString& path)
{
    if (path.isEmpty()) {
        return std::nullopt;
    }
    return path;
}

} // namespace

BoxAnswer ConsolePrompter::show_box(const Notice& notice)
{
    QMessageBox box(box_icon(notice.icon), notice.title, notice.text, box_buttons(notice.buttons), m_parent);
    // Texts written with CR LF keep their line breaks and nothing else.
    box.setText(QString(notice.text).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
    box.setObjectName(QStringLiteral("messageBox"));
    return box_answer(box.exec());
}

std::optional<QString> ConsolePrompter::ask_password(PasswordKind kind, const QString& prompt)
{
    if (kind == PasswordKind::Database) {
        return ask_db_password(m_parent);
    }
    return ask_app_password(m_parent, prompt);
}

std::optional<QString> ConsolePrompter::choose_open_file(const FileChoice& choice)
{
    return chosen(QFileDialog::getOpenFileName(m_parent, choice.caption, choice.start_name, choice.filter));
}

std::optional<QString> ConsolePrompter::choose_save_file(const FileChoice& choice)
{
    return chosen(QFileDialog::getSaveFileName(m_parent, choice.caption, choice.start_name, choice.filter));
}

} // namespace cvd::console
