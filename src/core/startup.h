#pragma once

#include <QString>
#include <functional>

namespace cvd {

struct AppState;

// The command line after the two switches were taken out.
struct CommandLine
{
    bool local_db = false;
    bool minimized = false;
    QString line; // the rest, trimmed: a message line for SendPage when not empty
};

// Both switches are found by a case-sensitive search anywhere in the text and every occurrence is removed,
// so a switch glued between other characters still counts and leaves those characters behind.
CommandLine parse_command_line(const QString& text);

// Fixes global_db_folder and user_db_folder from local_db and program_folder, creating every level that is
// missing.
void fix_folders(AppState& state);

// The steps that belong to layers above the core, handed in by the program.
struct StartupHooks
{
    // Enqueues a message line; false with a reason when the line was refused.
    std::function<bool(AppState&, const QString& line, QString* reason)> send_page;
};

enum class StartupOutcome {
    Running, // start-up complete: the program now runs
    Exit,    // the program ends now with exit_code
};

struct StartupResult
{
    StartupOutcome outcome = StartupOutcome::Exit;
    int exit_code = 0;
    QString reason; // for a non-zero exit: one line saying why
};

// Exit codes of the program.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailure = 1;
inline constexpr int kExitLineRefused = 3;

// The start-up sequence, in order: folders, the message line, the single-instance test, the first-run
// copy, both databases and their version, the settings, the password gate, the start counter, the
// renumbering of unsent rows, and the settings saved. `program_folder` is the folder of the executable,
// ending in "/". A halting error of the common path propagates as ProgramHalted.
StartupResult run_startup(AppState& state, const QString& command_line, const QString& program_folder,
                          const StartupHooks& hooks);

// The orderly end: the database password written back and the settings saved; the single-instance lock is
// let go last.
void orderly_shutdown(AppState& state);

} // namespace cvd
