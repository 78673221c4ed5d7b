#pragma once

#include "core/app_state.h"
#include "core/clock.h"
#include "terminal/terminal_prompter.h"

#include <QStringList>

namespace cvd::tools {

// A program state for working on the databases directly, with the folders the program itself would use.
struct DirectAccess
{
    explicit DirectAccess(bool local_db);

    terminal::TerminalPrompter prompter;
    SystemClock clock;
    AppState state;
};

// Takes "--localdb" (or "/localdb") out of the arguments; true when it was there.
bool take_local_switch(QStringList& arguments);

// Reads an optional "FLAG N" pair (a count of seconds or days, 0 or more) into `value`. False when the
// options hold anything else, which the caller reports as a usage error; `value` keeps its default when the
// pair is absent.
bool read_count_option(const QStringList& options, const QString& flag, int& value);

} // namespace cvd::tools
