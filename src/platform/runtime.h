#pragma once

#include <QString>
#include <memory>

namespace cvd::platform {

// File names inside the runtime folder.
inline constexpr const char* kInstanceLockName = "CorvaneDesk.lock";
inline constexpr const char* kRunningMarkerName = "HalvernIsRunning";
inline constexpr const char* kSocketName = "CorvaneDesk.sock";

// $CVD_RUNTIME_DIR, else $XDG_RUNTIME_DIR/halvern, else /tmp/halvern-<uid>. Created (mode 0700) when missing.
QString runtime_folder();

// An flock held on a file for the life of the object (or until release()).
class FileLock
{
public:
    enum class Mode { Exclusive, Shared };

    // Creates the file when missing. Returns null when another open file description holds a conflicting lock.
    static std::unique_ptr<FileLock> try_lock(const QString& path, Mode mode);

    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    void release();
    const QString& path() const { return m_path; }

private:
    FileLock(QString path, int fd);
    QString m_path;
    int m_fd = -1;
};

// True when some process holds any flock on the file (tested with a non-blocking exclusive try, as `flock -n`
// does). A missing file is not locked.
bool file_is_locked(const QString& path);

// The program's single-instance test: whether CorvaneDesk.lock in the runtime folder is held.
bool program_is_running(const QString& runtime_dir);
// The running marker: whether HalvernIsRunning in the runtime folder is held (shared by the running program).
bool running_marker_is_held(const QString& runtime_dir);

} // namespace cvd::platform
