#pragma once

#include <QList>
#include <QString>

namespace cvd::platform {

struct ProcessEntry
{
    qint64 pid = 0;
    QString name; // /proc/<pid>/comm
    // Base name of the target of /proc/<pid>/exe; empty when it cannot be read. The kernel's " (deleted)"
    // mark of a program file replaced while running (an upgrade) is taken off, so the program is still found.
    QString exe_name;
};

// The running processes, at most `limit` entries, in ascending pid order. proc_root is for tests.
QList<ProcessEntry> list_processes(int limit = 500, const QString& proc_root = QStringLiteral("/proc"));

} // namespace cvd::platform
