#pragma once

#include <QByteArray>
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
bool is_directory(const QString& path);

// Creates one folder level (no parents). An existing folder reports EEXIST.
FileResult make_directory(const QString& path);
// True when the folder exists and holds at least one entry besides "." and "..".
bool directory_has_entries(const QString& path);

FileResult remove_file(const QString& path);
// Copies the bytes and the permission bits; the target is replaced when it exists.
FileResult copy_file(const QString& from, const QString& to);
// rename(2): replaces the target atomically when both lie on one file system.
FileResult rename_file(const QString& from, const QString& to);

// The whole content of a file; nullopt when it cannot be opened or read (errno tells why).
std::optional<QByteArray> read_file_bytes(const QString& path);
// Writes the bytes to a temporary file beside path and renames it over path, so that a reader sees the old
// content or the new, never a part. The temporary file starts with "." and is removed when anything fails.
// A new file gets mode 0666 less the umask.
FileResult write_file_atomically(const QString& path, const QByteArray& bytes);

// Bytes from outside (a file, a datagram) as text: UTF-8 when they are valid UTF-8, otherwise Latin-1.
QString text_from_bytes(const QByteArray& bytes);

// strerror text for an errno.
QString error_text(int error);

} // namespace cvd::platform
