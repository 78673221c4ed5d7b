#include "platform/files.h"

#include <QFile>
#include <QRandomGenerator>
#include <QStringDecoder>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace cvd::platform {

namespace {

FileResult succeeded()
{
    return {true, 0};
}

FileResult failed_with_errno()
{
    return {false, errno};
}

// Closes a descriptor without letting close(2) overwrite the errno a caller still has to report.
void close_quietly(int fd)
{
    const int saved = errno;
    ::close(fd);
    errno = saved;
}

void unlink_quietly(const QByteArray& path)
{
    const int saved = errno;
    ::unlink(path.constData());
    errno = saved;
}

// Retries a call that was interrupted by a signal.
template <typename Call> auto retry_on_eintr(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

bool write_all(int fd, const char* data, qsizetype size)
{
    while (size > 0) {
        const ssize_t written = retry_on_eintr([&] { return ::write(fd, data, static_cast<size_t>(size)); });
        if (written < 0) {
            return false;
        }
        data += written;
        size -= written;
    }
    return true;
}

// A temporary file in the folder of target, named with a leading "." so that listings of our own folders
// pass over it. Returns its descriptor (or -1 with errno) and its path in *temp_path.
int create_temp_beside(const QByteArray& target, mode_t mode, QByteArray* temp_path)
{
    const qsizetype slash = target.lastIndexOf('/');
    const QByteArray folder = slash >= 0 ? target.left(slash + 1) : QByteArray();
    for (int attempt = 0; attempt < 100; ++attempt) {
        const quint64 random = QRandomGenerator::global()->generate64();
        *temp_path = folder + ".cvdtmp-" + QByteArray::number(random, 16);
        const int fd = ::open(temp_path->constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (fd >= 0 || errno != EEXIST) {
            return fd;
        }
    }
    return -1;
}

// Closes the finished temporary file and renames it over target; removes it when anything fails.
FileResult commit_temp(int fd, const QByteArray& temp_path, const QByteArray& target)
{
    if (::close(fd) != 0) {
        unlink_quietly(temp_path);
        return failed_with_errno();
    }
    if (::rename(temp_path.constData(), target.constData()) != 0) {
        unlink_quietly(temp_path);
        return failed_with_errno();
    }
    return succeeded();
}

FileResult abandon_temp(int fd, const QByteArray& temp_path)
{
    close_quietly(fd);
    unlink_quietly(temp_path);
    return failed_with_errno();
}

// strerror_r comes in two flavours; these pick the text from either.
[[maybe_unused]] const char* strerror_text(int result, const char* buffer)
{
    return result == 0 ? buffer : "Unknown error";
}
[[maybe_unused]] const char* strerror_text(const char* result, const char*)
{
    return result;
}

} // namespace

bool path_exists(const QString& path)
{
    return path_exists(QFile::encodeName(path));
}

bool path_exists(const QByteArray& path)
{
    struct stat info
    {
    };
    return !path.isEmpty() && ::stat(path.constData(), &info) == 0;
}

bool is_directory(const QString& path)
{
    struct stat info
    {
    };
    return !path.isEmpty() && ::stat(QFile::encodeName(path).constData(), &info) == 0 && S_ISDIR(info.st_mode);
}

FileResult make_directory(const QString& path)
{
    if (path.isEmpty()) {
        return {false, ENOENT};
    }
    return ::mkdir(QFile::encodeName(path).constData(), 0777) == 0 ? succeeded() : failed_with_errno();
}

bool directory_has_entries(const QString& path)
{
    if (path.isEmpty()) {
        return false;
    }
    DIR* dir = ::opendir(QFile::encodeName(path).constData());
    if (!dir) {
        return false;
    }
    bool found = false;
    while (const dirent* entry = ::readdir(dir)) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
            found = true;
            break;
        }
    }
    ::closedir(dir);
    return found;
}

FileResult remove_file(const QString& path)
{
    return remove_file(QFile::encodeName(path));
}

FileResult remove_file(const QByteArray& path)
{
    if (path.isEmpty()) {
        return {false, ENOENT};
    }
    return ::unlink(path.constData()) == 0 ? succeeded() : failed_with_errno();
}

FileResult copy_file(const QString& from, const QString& to)
{
    if (from.isEmpty() || to.isEmpty()) {
        return {false, ENOENT};
    }
    const QByteArray target = QFile::encodeName(to);
    const int source =
        retry_on_eintr([&] { return ::open(QFile::encodeName(from).constData(), O_RDONLY | O_CLOEXEC); });
    if (source < 0) {
        return failed_with_errno();
    }
    struct stat info
    {
    };
    if (::fstat(source, &info) != 0) {
        const FileResult result = failed_with_errno();
        close_quietly(source);
        return result;
    }
    if (S_ISDIR(info.st_mode)) {
        close_quietly(source);
        return {false, EISDIR};
    }
    QByteArray temp_path;
    const int temp = create_temp_beside(target, 0600, &temp_path);
    if (temp < 0) {
        const FileResult result = failed_with_errno();
        close_quietly(source);
        return result;
    }
    char buffer[65536];
    for (;;) {
        const ssize_t got = retry_on_eintr([&] { return ::read(source, buffer, sizeof buffer); });
        if (got == 0) {
            break;
        }
        if (got < 0 || !write_all(temp, buffer, got)) {
            close_quietly(source);
            return abandon_temp(temp, temp_path);
        }
    }
    close_quietly(source);
    if (::fchmod(temp, info.st_mode & 07777) != 0) {
        return abandon_temp(temp, temp_path);
    }
    return commit_temp(temp, temp_path, target);
}

FileResult rename_file(const QString& from, const QString& to)
{
    return rename_file(QFile::encodeName(from), QFile::encodeName(to));
}

FileResult rename_file(const QByteArray& from, const QByteArray& to)
{
    if (from.isEmpty() || to.isEmpty()) {
        return {false, ENOENT};
    }
    return ::rename(from.constData(), to.constData()) == 0 ? succeeded() : failed_with_errno();
}

QList<QByteArray> non_folder_entries(const QByteArray& folder)
{
    QList<QByteArray> names;
    DIR* dir = folder.isEmpty() ? nullptr : ::opendir(folder.constData());
    if (!dir) {
        return names;
    }
    while (const dirent* entry = ::readdir(dir)) {
        struct stat info
        {
        };
        const bool examined = ::fstatat(::dirfd(dir), entry->d_name, &info, 0) == 0;
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0 &&
            !(examined && S_ISDIR(info.st_mode))) {
            names.append(QByteArray(entry->d_name));
        }
    }
    ::closedir(dir);
    return names;
}

RegularFile::RegularFile(const QByteArray& path)
{
    struct stat info
    {
    };
    if (path.isEmpty() || ::stat(path.constData(), &info) != 0) {
        m_error = path.isEmpty() ? ENOENT : errno;
        m_outcome = m_error == ENOENT || m_error == ENOTDIR ? ReadOutcome::Missing : ReadOutcome::Failed;
        return;
    }
    if (!S_ISREG(info.st_mode)) {
        m_outcome = ReadOutcome::NotRegular;
        return;
    }
    m_fd = retry_on_eintr([&] { return ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); });
    if (m_fd < 0) {
        m_error = errno;
        m_outcome = m_error == ENOENT ? ReadOutcome::Missing : ReadOutcome::Failed;
        return;
    }
    if (::fstat(m_fd, &info) != 0) {
        m_error = errno;
        close();
        return;
    }
    if (!S_ISREG(info.st_mode)) {
        close();
        m_outcome = ReadOutcome::NotRegular;
        return;
    }
    m_outcome = ReadOutcome::Ok;
    m_size = static_cast<qint64>(info.st_size);
    m_changed_msecs =
        static_cast<qint64>(info.st_mtim.tv_sec) * 1000 + static_cast<qint64>(info.st_mtim.tv_nsec) / 1000000;
}

RegularFile::~RegularFile()
{
    close();
}

RegularFile::RegularFile(RegularFile&& other) noexcept
    : m_fd(std::exchange(other.m_fd, -1)), m_outcome(other.m_outcome), m_error(other.m_error), m_size(other.m_size),
      m_changed_msecs(other.m_changed_msecs)
{
}

RegularFile& RegularFile::operator=(RegularFile&& other) noexcept
{
    if (this != &other) {
        close();
        m_fd = std::exchange(other.m_fd, -1);
        m_outcome = other.m_outcome;
        m_error = other.m_error;
        m_size = other.m_size;
        m_changed_msecs = other.m_changed_msecs;
    }
    return *this;
}

void RegularFile::close()
{
    if (m_fd >= 0) {
        close_quietly(m_fd);
        m_fd = -1;
    }
}

// Writers announce themselves with flock or with fcntl record locks, and on Linux the two kinds do not see
// each other, so both are asked:
// - flock: a trial LOCK_EX|LOCK_NB conflicts with every flock, shared or exclusive, held through another
//   open file description, one of this process included (a shared trial would pass a shared lock).
// - fcntl: F_OFD_GETLK asks whether a write lock over the whole file would conflict; it reports read and
//   write record locks of the traditional and the open-file-description kind, this process's included.
//   A kernel without it answers EINVAL, and F_GETLK (other processes' locks) is asked instead.
// A file system that supports neither answers "not held".
bool RegularFile::held_by_writer()
{
    if (m_fd < 0) {
        return false;
    }
    const int rc = retry_on_eintr([&] { return ::flock(m_fd, LOCK_EX | LOCK_NB); });
    if (rc != 0 && errno == EWOULDBLOCK) {
        return true;
    }
    for (const int command : {F_OFD_GETLK, F_GETLK}) {
        struct flock probe = {};
        probe.l_type = F_WRLCK;
        probe.l_whence = SEEK_SET;
        probe.l_start = 0;
        probe.l_len = 0; // to the end of the file, however far it grows
        if (::fcntl(m_fd, command, &probe) == 0) {
            return probe.l_type != F_UNLCK;
        }
    }
    return false;
}

CappedRead RegularFile::read_up_to(qint64 cap)
{
    if (m_fd < 0) {
        return {m_outcome, m_error, {}};
    }
    if (m_size > cap) {
        return {ReadOutcome::TooLarge, 0, {}};
    }
    // Reading goes on past the size seen at opening, so that a file that grew meanwhile is noticed.
    QByteArray bytes;
    bytes.reserve(static_cast<qsizetype>(m_size));
    char buffer[65536];
    for (;;) {
        const ssize_t got = retry_on_eintr([&] { return ::read(m_fd, buffer, sizeof buffer); });
        if (got < 0) {
            return {ReadOutcome::Failed, errno, {}};
        }
        if (got == 0) {
            return {ReadOutcome::Ok, 0, bytes};
        }
        if (bytes.size() + got > cap) {
            return {ReadOutcome::TooLarge, 0, {}};
        }
        bytes.append(buffer, got);
    }
}

CappedRead read_regular_file(const QByteArray& path, qint64 cap)
{
    return RegularFile(path).read_up_to(cap);
}

std::optional<QByteArray> read_file_bytes(const QString& path)
{
    if (path.isEmpty()) {
        errno = ENOENT;
        return std::nullopt;
    }
    const int fd = retry_on_eintr([&] { return ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC); });
    if (fd < 0) {
        return std::nullopt;
    }
    QByteArray content;
    char buffer[16384];
    for (;;) {
        const ssize_t got = retry_on_eintr([&] { return ::read(fd, buffer, sizeof buffer); });
        if (got == 0) {
            break;
        }
        if (got < 0) {
            close_quietly(fd);
            return std::nullopt;
        }
        content.append(buffer, got);
    }
    ::close(fd);
    return content;
}

FileResult write_file_atomically(const QString& path, const QByteArray& bytes)
{
    if (path.isEmpty()) {
        return {false, ENOENT};
    }
    const QByteArray target = QFile::encodeName(path);
    QByteArray temp_path;
    const int temp = create_temp_beside(target, 0666, &temp_path);
    if (temp < 0) {
        return failed_with_errno();
    }
    if (!write_all(temp, bytes.constData(), bytes.size())) {
        return abandon_temp(temp, temp_path);
    }
    return commit_temp(temp, temp_path, target);
}

QString text_from_bytes(const QByteArray& bytes)
{
    // A byte order mark is kept as a character: the text is the bytes, nothing taken away.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder.decode(bytes);
    if (decoder.hasError()) {
        return QString::fromLatin1(bytes);
    }
    return text;
}

QString error_text(int error)
{
    char buffer[256] = {};
    return QString::fromLocal8Bit(strerror_text(::strerror_r(error, buffer, sizeof buffer), buffer));
}

} // namespace cvd::platform
