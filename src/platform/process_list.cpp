#include "platform/process_list.h"

#include "platform/files.h"
#include "platform/folders.h"

#include <QFile>
#include <algorithm>
#include <climits>
#include <dirent.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace cvd::platform {

namespace {

// The process ids among the entries of the proc folder: names made of digits only.
QList<qint64> process_ids(const QString& proc_root)
{
    QList<qint64> pids;
    DIR* dir = ::opendir(QFile::encodeName(proc_root).constData());
    if (!dir) {
        return pids;
    }
    while (const dirent* entry = ::readdir(dir)) {
        const QByteArray name(entry->d_name);
        const bool numeric =
            !name.isEmpty() && std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
        bool ok = false;
        const qint64 pid = numeric ? name.toLongLong(&ok) : 0;
        if (ok) {
            pids.append(pid);
        }
    }
    ::closedir(dir);
    std::sort(pids.begin(), pids.end());
    return pids;
}

QString program_name(const QString& exe_link)
{
    char target[PATH_MAX + 1] = {};
    const ssize_t length = ::readlink(QFile::encodeName(exe_link).constData(), target, PATH_MAX);
    if (length <= 0) {
        return {};
    }
    QString path = QFile::decodeName(QByteArray(target, length));
    const QString deleted = u" (deleted)"_s;
    if (path.endsWith(deleted)) {
        path.chop(deleted.size());
    }
    return path.mid(path.lastIndexOf(u'/') + 1);
}

} // namespace

QList<ProcessEntry> list_processes(int limit, const QString& proc_root)
{
    QList<ProcessEntry> processes;
    const QString root = with_trailing_slash(proc_root);
    for (const qint64 pid : process_ids(proc_root)) {
        if (processes.size() >= limit) {
            break;
        }
        const QString folder = root + QString::number(pid) + u'/';
        std::optional<QByteArray> comm = read_file_bytes(folder + u"comm"_s);
        if (!comm) {
            continue; // ended since the folder was listed
        }
        if (comm->endsWith('\n')) {
            comm->chop(1);
        }
        processes.append({pid, text_from_bytes(*comm), program_name(folder + u"exe"_s)});
    }
    return processes;
}

} // namespace cvd::platform
