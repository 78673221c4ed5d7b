#pragma once

#include "app/terminal_prompter.h"
#include "core/app_state.h"
#include "core/clock.h"

#include <QStringList>

namespace cvd::tools {

// A program state for working on the databases directly, with the folders the program itself would use.
struct DirectAccess
{
    explicit DirectAccess(bool local_db);

    app::TerminalPrompter prompter;
    SystemClock clock;
    AppState state;
};

// Takes "--localdb" (or "/localdb") out of the arguments; true when it was there.
bool take_local_switch(QStringList& arguments);

} // namespace cvd::tools
