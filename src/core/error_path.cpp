#include "core/error_path.h"

#include "core/app_state.h"
#include "core/clock.h"
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
    return {ErrorKind::Engine, error.code(), error.message(), store::is_transient_error(error.code())};
}

ErrorInfo file_error_info(int error_number)
{
    return {ErrorKind::File, error_number, platform::error_text(error_number), true};
}

ErrorInfo other_error_info(int number, const QString& description)
{
    return {ErrorKind::Other, number, description, false};
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

namespace {

[[noreturn]] void halt(AppState& state, const ErrorInfo& error, const QString& procedure)
{
    const QString text = halting_text(error, procedure);
    state.prompter.show_box({text, state.app_title + u" Fatal Error"_s, BoxIcon::Critical});
    throw ProgramHalted(text);
}

} // namespace

void handle_error(AppState& state, const QString& procedure, const ErrorInfo& error)
{
    ++state.error_count;
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
