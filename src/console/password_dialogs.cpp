#include "console/password_dialogs.h"

#include "console/frm_app_password.h"
#include "console/frm_db_password.h"

namespace cvd::console {

std::optional<QString> ask_app_password(QWidget* parent, const QString& prompt)
{
    frmAppPassword dialog(parent, prompt);
    return dialog.ask();
}

std::optional<QString> ask_db_password(QWidget* parent)
{
    frmDBPassword dialog(parent);
    return dialog.ask();
}

} // namespace cvd::console
