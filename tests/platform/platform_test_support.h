#pragma once

#include "support/printers.h"

#include <QByteArray>
#include <QDir>
#include <QList>
#include <QString>
#include <QStringList>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <optional>
#include <ostream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace cvd::platform::testing {

// Sets and unsets environment variables for one test and puts the old values back at the end.
class ScopedEnvironment
{
public:
    ScopedEnvironment() = default;
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

    ~ScopedEnvironment()
    {
        for (auto it = m_saved.crbegin(); it != m_saved.crend(); ++it) {
            if (it->second) {
                ::setenv(it->first.constData(), it->second->constData(), 1);
            } else {
                ::unsetenv(it->first.constData());
            }
        }
    }

    void set(const char* name, const QString& value)
    {
        save(name);
        ::setenv(name, value.toUtf8().constData(), 1);
    }

    void unset(const char* name)
    {
        save(name);
        ::unsetenv(name);
    }

private:
    void save(const char* name)
    {
        const char* old = std::getenv(name);
        m_saved.append({QByteArray(name), old ? std::optional<QByteArray>(QByteArray(old)) : std::nullopt});
    }

    QList<std::pair<QByteArray, std::optional<QByteArray>>> m_saved;
};

// Runs work in a forked child whose files may not grow beyond max_file_bytes, so that writes fail part way
// (EFBIG) even for root, whom folder permissions do not stop. Returns the child's exit status, or -1.
inline int run_with_file_size_limit(rlim_t max_file_bytes, const std::function<int()>& work)
{
    const pid_t child = ::fork();
    if (child == 0) {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{max_file_bytes, max_file_bytes};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) {
            ::_exit(99);
        }
        ::_exit(work());
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status)) {
        return -1;
    }
    return WEXITSTATUS(status);
}

// Every entry of a folder, hidden ones included, sorted.
inline QStringList all_entries(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

} // namespace cvd::platform::testing
