#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>

namespace cvd::platform {

// Outcome of a file system call: ok, or the errno that made it fail.
struct FileResult
{
    bool ok = false;
    int error = 0; // errno when !ok
};

// Metadata probes. A path that cannot be examined (missing, no permission, empty text) answers false.
bool path_exists(const QString& path);
bool path_exists(const QByteArray& path);
bool is_directory(const QString& path);

// Creates one folder level (no parents). An existing folder reports EEXIST.
FileResult make_directory(const QString& path);
// True when the folder exists and holds at least one entry besides "." and "..".
bool directory_has_entries(const QString& path);

FileResult remove_file(const QString& path);
FileResult remove_file(const QByteArray& path);
// Copies the bytes and the permission bits; the target is replaced when it exists.
FileResult copy_file(const QString& from, const QString& to);
// rename(2): replaces the target atomically when both lie on one file system.
FileResult rename_file(const QString& from, const QString& to);
// The same for names as the file system holds them, which need not be valid UTF-8.
FileResult rename_file(const QByteArray& from, const QByteArray& to);

// The names of a folder's entries that are not folders themselves (links followed; a dangling link is
// listed), as the file system holds them, in no particular order. Empty when the folder cannot be read.
QList<QByteArray> non_folder_entries(const QByteArray& folder);

// The whole content of a file; nullopt when it cannot be opened or read (errno tells why).
std::optional<QByteArray> read_file_bytes(const QString& path);
// What became of opening or reading a file that has to be a regular one.
enum class ReadOutcome {
    Ok,
    Missing,    // no such file
    NotRegular, // a FIFO, a device, a socket, a folder: never read
    TooLarge,   // more bytes than the cap
    Failed,     // error tells why
};

struct CappedRead
{
    ReadOutcome outcome = ReadOutcome::Failed;
    int error = 0; // errno when Failed
    QByteArray bytes;
};

// A regular file opened for reading, closed with the object. Files from other programs may be anything: the
// path is examined first (links followed) and only a regular file is opened, without blocking, so that a
// FIFO or a device can never hold the caller up; the opened file is examined again, as the path may have
// been replaced in between.
class RegularFile
{
public:
    explicit RegularFile(const QByteArray& path);
    ~RegularFile();
    RegularFile(RegularFile&& other) noexcept;
    RegularFile& operator=(RegularFile&& other) noexcept;
    RegularFile(const RegularFile&) = delete;
    RegularFile& operator=(const RegularFile&) = delete;

    // Ok when the file is open; error() holds the errno of a failure.
    ReadOutcome outcome() const { return m_outcome; }
    int error() const { return m_error; }
    qint64 size() const { return m_size; }
    // The last change of the content, in milliseconds since the epoch.
    qint64 changed_msecs() const { return m_changed_msecs; }

    // Whether a writer still holds the file with an flock or an fcntl lock. Asking takes an exclusive flock
    // when none is held, and it is kept until the file is closed, so a writer that locks cannot start to
    // rewrite the file while it is read.
    bool held_by_writer();
    // The content, when it is no longer than cap bytes. Reads once, from the start.
    CappedRead read_up_to(qint64 cap);

private:
    void close();
    int m_fd = -1;
    ReadOutcome m_outcome = ReadOutcome::Failed;
    int m_error = 0;
    qint64 m_size = 0;
    qint64 m_changed_msecs = 0;
};

// The content of a regular file of at most cap bytes, read without blocking.
CappedRead read_regular_file(const QByteArray& path, qint64 cap);

// Writes the bytes to a temporary file beside path and renames it over path, so that a reader sees the old
// content or the new, never a part. The temporary file starts with "." and is removed when anything fails.
// A new file gets mode 0666 less the umask.
FileResult write_file_atomically(const QString& path, const QByteArray& bytes);

// Bytes from outside (a file, a datagram) as text: UTF-8 when they are valid UTF-8, otherwise Latin-1.
QString text_from_bytes(const QByteArray& bytes);

// strerror text for an errno.
QString error_text(int error);

} // namespace cvd::platform
