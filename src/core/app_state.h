#pragma once

#include "core/settings.h"
#include "platform/registry.h"
#include "platform/runtime.h"
#include "store/database.h"

#include <QString>
#include <QStringList>
#include <memory>

namespace cvd {

class Clock;
class Prompter;

inline constexpr int kProcessTableSize = 500;

// The program-wide state. One instance lives as long as the program; tests make their own.
struct AppState
{
    AppState(Prompter& prompter_in, Clock& clock_in, platform::Registry registry_in, QString runtime_dir_in);

    // Seams to the outside world.
    Prompter& prompter;
    Clock& clock;
    platform::Registry registry;
    QString runtime_dir;

    // Fixed names.
    QString app_title = QStringLiteral("CorvaneDesk");
    QString app_version_folder = QStringLiteral("5.0");

    // Folders; each ends in "/".
    QString program_folder;
    QString global_db_folder;
    QString user_db_folder;

    bool local_db = false;
    bool start_minimized = false;
    bool startup_complete = false;
    bool date_order_ok = false;
    QStringList process_table;
    qint32 first_transaction = 0;

    // Counters of the common error path.
    int error_count = 0;
    int error_round = 0;

    // The open databases and the database password (clear text, at most 14 characters).
    store::Database global_db;
    store::Database user_db;
    QString db_password;

    SettingsStore settings;

    // Level passwords in clear text, and the last entry that passed a guard (it opens later guarded actions
    // of that level without a new prompt).
    QString admin_password;
    QString super_password;
    QString user_password;
    QString entered_password;

    // Held for the program's whole life once start-up has passed the single-instance test.
    std::unique_ptr<platform::FileLock> instance_lock;

    void clear_error_counters()
    {
        error_count = 0;
        error_round = 0;
    }
};

} // namespace cvd
