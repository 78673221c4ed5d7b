#include "core/error_path.h"

#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "core/prompter.h"
#include "platform/files.h"
#include "store/database.h"
#include "store/error_codes.h"

using namespace Qt::StringLiterals;

namespace cvd {

namespace {

// Bounds of the two retry counters: a database error may fail 5 times a round for 3 rounds, a file error
// 40 times a round for 41 rounds.
constexpr int kEngineFailuresPerRound = 5;
constexpr int kEngineRounds = 2;
constexpr int kFileFailuresPerRound = 40;
constexpr int kFileRounds = 40;
// Forces the halt of a database error that no retry can mend.
constexpr int kHaltNow = 100;

} // namespace

ErrorInfo database_error_info(const store::Error& error)
{
    return {ErrorKind::Engine, error.code(), error.message(), store::is_transient_error(error.code()), error.file()};
}

ErrorInfo file_error_info(int error_number)
{
    return {ErrorKind::File, error_number, platform::error_text(error_number), true, {}};
}

ErrorInfo other_error_info(int number, const QString& description)
{
    return {ErrorKind::Other, number, description, false, {}};
}

QString halting_text(const ErrorInfo& error, const QString& procedure)
{
    const QString number = QString::number(error.number);
    switch (error.kind) {
    case ErrorKind::Engine:
        // The number stands with one leading blank, as it always has in this box.
        return u"Fatal database error: "_s + u' ' + number + u' ' + error.description + u" in "_s + procedure +
               u" Program Halted"_s;
    case ErrorKind::File:
        return u"Excessive file errors: "_s + number + u' ' + error.description + u" in "_s + procedure;
    case ErrorKind::Other:
        break;
    }
    return u"Error #"_s + number + u' ' + error.description + u" in "_s + procedure;
}

QString damaged_text(const ErrorInfo& error, const QString& damaged_file, const QString& backup)
{
    const QString known_backup =
        backup.isEmpty() ? u"No backup of it is known."_s : u"The most recent backup is "_s + backup + u'.';
    return u"The database "_s + damaged_file + u" is damaged ("_s + QString::number(error.number) + u' ' +
           error.description + u"). Nothing more has been written to it and the program ends now. "_s + known_backup +
           u" Stop every program that uses the database, set the damaged file aside together with its -wal and "
           "-shm files, and put the backup in its place."_s;
}

namespace {

[[noreturn]] void halt(AppState& state, const ErrorInfo& error, const QString& procedure)
{
    const QString text = halting_text(error, procedure);
    state.prompter.show_box({text, state.app_title + u" Fatal Error"_s, BoxIcon::Critical});
    throw ProgramHalted(text);
}

// A file that does not read as a database at all is damaged only when it was open as one of ours; before that,
// it is a file that is not ours, which has a box of its own.
bool is_damaged_database(const AppState& state, const ErrorInfo& error)
{
    if (error.kind != ErrorKind::Engine || !store::is_damage_error(error.number)) {
        return false;
    }
    if ((error.number & 0xff) == store::codes::Corrupt) {
        return true;
    }
    return !error.file.isEmpty() &&
           (error.file == state.global_db.file_name() || error.file == state.user_db.file_name());
}

// The writes stop before the box is shown: it may stand for a long time.
[[noreturn]] void halt_damaged(AppState& state, const ErrorInfo& error, const QString& procedure)
{
    const QString damaged_file = abandon_damaged_database(state, error.file);
    ErrorInfo located = error;
    located.description += u" in "_s + procedure;
    const QString text = damaged_text(located, damaged_file, latest_backup(damaged_file));
    state.prompter.show_box({text, state.app_title + u" Fatal Error"_s, BoxIcon::Critical});
    throw ProgramHalted(text);
}

} // namespace

void handle_error(AppState& state, const QString& procedure, const ErrorInfo& error)
{
    ++state.error_count;
    if (is_damaged_database(state, error)) {
        halt_damaged(state, error, procedure);
    }
    switch (error.kind) {
    case ErrorKind::Engine:
        if (!error.retryable) {
            state.error_count = kHaltNow;
            state.error_round = kHaltNow;
        }
        if (state.error_count > kEngineFailuresPerRound) {
            ++state.error_round;
            state.error_count = 0;
            if (state.error_round > kEngineRounds) {
                halt(state, error, procedure);
            }
        }
        break;
    case ErrorKind::File:
        if (state.error_count > kFileFailuresPerRound) {
            ++state.error_round;
            state.error_count = 0;
            if (state.error_round > kFileRounds) {
                halt(state, error, procedure);
            }
        }
        break;
    case ErrorKind::Other:
        halt(state, error, procedure);
    }
    pause(state, 0.5 + state.clock.random_unit());
}

void pause(AppState& state, double seconds)
{
    state.clock.wait(static_cast<int>(seconds * 1000.0));
}

} // namespace cvd
