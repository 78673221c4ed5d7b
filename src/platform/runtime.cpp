#include "platform/runtime.h"

#include "platform/files.h"
#include "platform/folders.h"

#include <QFile>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace cvd::platform {

namespace {

// Creates the folder and any missing parent, each private to the user; an existing folder is left as it is.
void make_private_folder(const QString& path)
{
    if (path.isEmpty() || is_directory(path)) {
        return;
    }
    const QString parent = path.left(path.lastIndexOf(u'/'));
    if (!parent.isEmpty()) {
        make_private_folder(parent);
    }
    const QByteArray encoded = QFile::encodeName(path);
    if (::mkdir(encoded.constData(), 0700) == 0) {
        ::chmod(encoded.constData(), 0700); // whatever the umask says
    }
}

int flock_retrying(int fd, int operation)
{
    int result = ::flock(fd, operation);
    while (result != 0 && errno == EINTR) {
        result = ::flock(fd, operation);
    }
    return result;
}

QString runtime_file(const QString& runtime_dir, const char* name)
{
    return with_trailing_slash(runtime_dir) + QLatin1StringView(name);
}

} // namespace

QString runtime_folder()
{
    QString folder = qEnvironmentVariable("CVD_RUNTIME_DIR");
    if (folder.isEmpty()) {
        const QString session = qEnvironmentVariable("XDG_RUNTIME_DIR");
        folder = session.isEmpty() ? u"/tmp/halvern-"_s + QString::number(::getuid())
                                   : with_trailing_slash(session) + u"halvern"_s;
    }
    folder = without_trailing_slash(folder);
    make_private_folder(folder);
    return folder;
}

FileLock::FileLock(QString path, int fd) : m_path(std::move(path)), m_fd(fd) {}

FileLock::~FileLock()
{
    release();
}

std::unique_ptr<FileLock> FileLock::try_lock(const QString& path, Mode mode)
{
    if (path.isEmpty()) {
        return nullptr;
    }
    const QByteArray encoded = QFile::encodeName(path);
    int fd = ::open(encoded.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0 && errno == EACCES) {
        // A lock file made by someone else may be read-only to us; flock works on a read descriptor too.
        fd = ::open(encoded.constData(), O_RDONLY | O_CLOEXEC);
    }
    if (fd < 0) {
        return nullptr;
    }
    const int operation = (mode == Mode::Exclusive ? LOCK_EX : LOCK_SH) | LOCK_NB;
    if (flock_retrying(fd, operation) != 0) {
        ::close(fd);
        return nullptr;
    }
    return std::unique_ptr<FileLock>(new FileLock(path, fd));
}

void FileLock::release()
{
    if (m_fd >= 0) {
        // Closing the only descriptor of the open file description drops the lock.
        ::close(m_fd);
        m_fd = -1;
    }
}

bool file_is_locked(const QString& path)
{
    if (path.isEmpty()) {
        return false;
    }
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    const bool locked = flock_retrying(fd, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    ::close(fd); // also drops the trial lock when it was granted
    return locked;
}

bool program_is_running(const QString& runtime_dir)
{
    return file_is_locked(runtime_file(runtime_dir, kInstanceLockName));
}

bool running_marker_is_held(const QString& runtime_dir)
{
    return file_is_locked(runtime_file(runtime_dir, kRunningMarkerName));
}

} // namespace cvd::platform
