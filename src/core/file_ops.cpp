#include "core/file_ops.h"

#include "core/clock.h"
#include "platform/files.h"

namespace cvd {

bool isfile(const QString& path)
{
    return !path.isEmpty() && platform::path_exists(path);
}

bool isdir(const QString& path)
{
    return !path.isEmpty() && platform::is_directory(path);
}

bool makedir(const QString& path)
{
    QString level = path;
    if (level.size() >= 3 && level.endsWith(u'/')) {
        level.chop(1);
    }
    if (level.isEmpty()) {
        return false;
    }
    platform::make_directory(level); // an existing folder is harmless
    yield_to_event_loop();
    return isdir(level);
}

bool cankill(const QString& path)
{
    return platform::remove_file(path).ok;
}

bool cancopy(const QString& from, const QString& to)
{
    if (isfile(from)) {
        platform::copy_file(from, to);
        yield_to_event_loop();
    }
    return isfile(to);
}

bool canmove(const QString& from, const QString& to)
{
    if (isfile(from)) {
        // rename(2) replaces the target in one step, so there is no moment without either file.
        platform::rename_file(from, to);
        yield_to_event_loop();
    }
    return isfile(to);
}

} // namespace cvd
