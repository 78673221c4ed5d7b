#pragma once

#include <QString>
#include <functional>

namespace cvd::platform {

// Path text helpers: a folder text that ends in "/" or not. An empty text stays empty.
QString with_trailing_slash(const QString& path);
QString without_trailing_slash(const QString& path);

// Folder of the running executable, ending in "/".
QString executable_folder();

// Root for machine-wide data: $CVD_COMMON_APPDATA, else /var/lib where "Halvern" can be created
// under it, else $XDG_STATE_HOME (default ~/.local/state). Empty when none can be found.
QString common_data_root();
// The same choice with the machine-wide candidate given instead of /var/lib (for tests). The candidate is
// taken when "Halvern" already is a writable folder under it, or when it is missing and the candidate can be
// written.
QString common_data_root(const QString& system_root);
// Root for the user's data: $XDG_DATA_HOME, default ~/.local/share.
QString user_data_root();
// The user's state folder: $XDG_STATE_HOME, default ~/.local/state. Empty when there is no home folder.
QString state_home();

// Where the two databases live.
struct DataFolders
{
    QString global_db_folder; // ends in "/"
    QString user_db_folder;   // ends in "/"
};

// The folder table. The local form (local_db) is crossed on purpose: the global database lies in "UserDB"
// and the user database in "GlobalDB" beside the program, as existing installations expect. The normal form
// is <root>/Halvern/Corvane Desk/<version_folder>/ for each of the two roots.
// make_level is called with each folder level in the order in which it must be created: in the normal form
// the vendor, product and version level of the user folder, then those of the global folder; in the local
// form "GlobalDB", then "UserDB". Each path handed to it ends in "/".
DataFolders resolve_data_folders(bool local_db, const QString& program_folder, const QString& common_root,
                                 const QString& user_root, const QString& version_folder,
                                 const std::function<void(const QString&)>& make_level);

} // namespace cvd::platform
