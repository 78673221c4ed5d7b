#pragma once

#include "console/password_prompt.h"

namespace cvd::console {

// "Password Required": the level password for the start gate and the guarded actions, up to 20 characters.
// It is asked for before the send window exists, so it takes the prompt instead of the console's context.
class frmAppPassword : public PasswordPrompt
{
    Q_OBJECT

public:
    frmAppPassword(QWidget* parent, const QString& prompt);
};

} // namespace cvd::console
