#include "console/frm_db_password.h"

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {
constexpr int kDbPasswordMaxLength = 14;
}

frmDBPassword::frmDBPassword(QWidget* parent)
    : PasswordPrompt(parent, u"Database Password"_s,
                     u"The Corvane Desk database has been password protected.  Please enter the database password."_s,
                     kDbPasswordMaxLength)
{
}

} // namespace cvd::console
