#pragma once

#include "support/printers.h"
#include "support/scoped_environment.h"

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

using cvd::testing::ScopedEnvironment;

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
