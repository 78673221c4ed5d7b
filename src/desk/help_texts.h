#pragma once

#include "core/prompter.h"

#include <QString>

namespace cvd::desk {

// The two help boxes of the send window: one line per shortcut, description, tabs and key, each ended by CR LF.
Notice keyboard_shortcuts_notice();
Notice mouse_shortcuts_notice();

} // namespace cvd::desk
