#pragma once

#include <QString>
#include <exception>
#include <utility>

namespace cvd {

struct AppState;

namespace store {
class Error;
}

// What failed, in the terms of the common error path.
enum class ErrorKind {
    Engine, // a database error
    File,   // a failed file system call
    Other,  // anything else: the program halts at once
};

struct ErrorInfo
{
    ErrorKind kind = ErrorKind::Other;
    int number = 0;         // SQLite's result code, the errno, or our own number
    QString description;    // the error's own text
    bool retryable = false; // for database errors: a lock or a passing input/output failure
    QString file;           // for database errors: the file of the connection that failed, when known
};

ErrorInfo database_error_info(const store::Error& error);
ErrorInfo file_error_info(int error_number);
ErrorInfo other_error_info(int number, const QString& description);

// A file system call that failed; thrown by routines that want the common error path to retry them.
class FileError : public std::exception
{
public:
    explicit FileError(int error_number) : m_error(error_number) {}
    int error_number() const { return m_error; }
    const char* what() const noexcept override { return "file error"; }

private:
    int m_error;
};

// Thrown when the common error path has shown its halting box: the program must end now.
class ProgramHalted : public std::exception
{
public:
    explicit ProgramHalted(QString text) : m_text(std::move(text)) {}
    const QString& text() const { return m_text; }
    const char* what() const noexcept override { return "program halted"; }

private:
    QString m_text;
};

// The text of the halting box for an error met in `procedure` ("Procedure: open_database").
QString halting_text(const ErrorInfo& error, const QString& procedure);

// The text of the halting box for a damaged database file: what happened, that nothing more was written to
// it, and the most recent backup to put in its place (`backup` empty when none is known).
QString damaged_text(const ErrorInfo& error, const QString& damaged_file, const QString& backup);

// The common error path. Counts the failure; when the bound for its kind is reached it shows the halting box
// titled app_title + " Fatal Error" and throws ProgramHalted. Otherwise it waits 0.5 to 1.5 seconds and
// returns, and the caller runs the failed statement again. A retryable database error halts at the
// eighteenth failure in a row, a file error at the 1,681st, a database error that is not retryable and any
// other error at the first. A database error that says an open database file is damaged halts at once as
// well, with the damaged-file box, after the file's connections were closed without writing anything more.
void handle_error(AppState& state, const QString& procedure, const ErrorInfo& error);

// A wait that keeps the event loop running.
void pause(AppState& state, double seconds);

// Runs `step` until it succeeds, taking database and file failures through the common error path.
template <typename Step> auto with_retry(AppState& state, const QString& procedure, Step&& step) -> decltype(step());

} // namespace cvd

#include "core/error_path_impl.h"
