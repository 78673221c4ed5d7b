#pragma once

#include "console/password_prompt.h"

namespace cvd::console {

// "Database Password": asked by the open routines when the database's access gate refuses, up to 14
// characters. There is no screen that sets it; that is done on the file from outside.
class frmDBPassword : public PasswordPrompt
{
    Q_OBJECT

public:
    explicit frmDBPassword(QWidget* parent);
};

} // namespace cvd::console
