#include "platform/folders.h"

#include "platform/files.h"

#include <QFile>
#include <climits>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace cvd::platform {

namespace {

QString home_folder()
{
    QString home = qEnvironmentVariable("HOME");
    if (!home.isEmpty()) {
        return home;
    }
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found && found->pw_dir) {
        return QFile::decodeName(found->pw_dir);
    }
    return {};
}

// $variable, else the fallback below the home folder; empty when there is no home folder either.
// An unset or empty variable counts as absent, as the XDG conventions have it.
QString xdg_folder(const char* variable, const QString& below_home)
{
    QString value = qEnvironmentVariable(variable);
    if (!value.isEmpty()) {
        return value;
    }
    const QString home = home_folder();
    return home.isEmpty() ? QString() : without_trailing_slash(home) + u'/' + below_home;
}

bool writable_folder(const QString& path)
{
    return is_directory(path) && ::access(QFile::encodeName(path).constData(), W_OK | X_OK) == 0;
}

// Builds root/Halvern/Corvane Desk/version/, handing each level to make_level as it goes.
QString build_product_folder(const QString& root, const QString& version_folder,
                             const std::function<void(const QString&)>& make_level)
{
    QString path = without_trailing_slash(root);
    for (const QString& level : {u"Halvern"_s, u"Corvane Desk"_s, version_folder}) {
        path += u'/' + level + u'/';
        make_level(path);
        path.chop(1);
    }
    return path + u'/';
}

} // namespace

QString with_trailing_slash(const QString& path)
{
    return path.isEmpty() || path.endsWith(u'/') ? path : path + u'/';
}

QString without_trailing_slash(const QString& path)
{
    return path.endsWith(u'/') ? path.chopped(1) : path;
}

QString executable_folder()
{
    char target[PATH_MAX + 1] = {};
    const ssize_t length = ::readlink("/proc/self/exe", target, PATH_MAX);
    if (length <= 0) {
        return {};
    }
    const QString path = QFile::decodeName(QByteArray(target, length));
    return path.left(path.lastIndexOf(u'/') + 1);
}

QString common_data_root()
{
    return common_data_root(u"/var/lib"_s);
}

QString common_data_root(const QString& system_root)
{
    QString configured = qEnvironmentVariable("CVD_COMMON_APPDATA");
    if (!configured.isEmpty()) {
        return configured;
    }
    const QString vendor = without_trailing_slash(system_root) + u"/Halvern"_s;
    const bool usable = path_exists(vendor) ? writable_folder(vendor) : writable_folder(system_root);
    if (usable) {
        return system_root;
    }
    return state_home();
}

QString user_data_root()
{
    return xdg_folder("XDG_DATA_HOME", u".local/share"_s);
}

QString state_home()
{
    return xdg_folder("XDG_STATE_HOME", u".local/state"_s);
}

DataFolders resolve_data_folders(bool local_db, const QString& program_folder, const QString& common_root,
                                 const QString& user_root, const QString& version_folder,
                                 const std::function<void(const QString&)>& make_level)
{
    DataFolders folders;
    if (local_db) {
        // Crossed on purpose: installations made with /localdb keep the global database in "UserDB".
        const QString base = with_trailing_slash(program_folder);
        folders.user_db_folder = base + u"GlobalDB/"_s;
        make_level(folders.user_db_folder);
        folders.global_db_folder = base + u"UserDB/"_s;
        make_level(folders.global_db_folder);
        return folders;
    }
    folders.user_db_folder = build_product_folder(user_root, version_folder, make_level);
    folders.global_db_folder = build_product_folder(common_root, version_folder, make_level);
    return folders;
}

} // namespace cvd::platform
