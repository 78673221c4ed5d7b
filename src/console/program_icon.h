#pragma once

#include <QIcon>

namespace cvd::console {

// The program's icon for its windows and the tray: the desktop theme's "corvane-desk" where it is installed,
// else the copy built into the program.
QIcon program_icon();

} // namespace cvd::console
