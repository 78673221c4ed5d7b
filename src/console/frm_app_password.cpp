#include "console/frm_app_password.h"

#include "core/passwords.h"

using namespace Qt::StringLiterals;

namespace cvd::console {

frmAppPassword::frmAppPassword(QWidget* parent, const QString& prompt)
    : PasswordPrompt(parent, u"Password Required"_s, prompt.isEmpty() ? u"Please enter the password."_s : prompt,
                     kPasswordMaxLength)
{
}

} // namespace cvd::console
