#pragma once

#include "desk/setup_rules.h"

#include <QString>
#include <functional>

class QLineEdit;

namespace cvd::console {

// Runs `fix` on the box each time the focus leaves it: the setup dialogs correct a box when it is left, never
// while it is typed in.
void when_left(QLineEdit* box, std::function<void(QLineEdit&)> fix);
// A number box kept inside the range when left.
void clamp_when_left(QLineEdit* box, desk::NumberRange range);
// A text box cut to `limit` characters when left, trimmed of blanks first when `trimmed` is set.
void cut_when_left(QLineEdit* box, qsizetype limit, bool trimmed);

} // namespace cvd::console
