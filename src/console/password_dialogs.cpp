#include "console/password_dialogs.h"

#include <QInputDialog>
#include <QLineEdit>

// Plain input dialogs until the password windows of their own land.
namespace cvd::console {

std::optional<QString> ask_app_password(QWidget* parent, const QString& prompt)
{
    bool ok = false;
    const QString text =
        QInputDialog::getText(parent, QStringLiteral("Password Required"), prompt, QLineEdit::Password, {}, &ok);
    return ok ? std::optional<QString>(text) : std::nullopt;
}

std::optional<QString> ask_db_password(QWidget* parent)
{
    bool ok = false;
    const QString text = QInputDialog::getText(
        parent, QStringLiteral("Database Password"),
        QStringLiteral("The Corvane Desk database has been password protected.  Please enter the database password."),
        QLineEdit::Password, {}, &ok);
    return ok ? std::optional<QString>(text) : std::nullopt;
}

} // namespace cvd::console
