#pragma once

#include "store/upgrades.h"

#include <QList>
#include <QString>
#include <optional>

namespace cvd {

struct AppState;

// What the conversion steps of start-up came to.
enum class ConversionStatus {
    Done,    // the file now has the layout the next step expects (or needed nothing)
    Refused, // a file of the oldest layouts that cannot be converted; left as it is
    Failed,  // a conversion failed and its box was shown: the file is as it was before that conversion and
             // the program ends
};

// Before the first conversion of a start, the global database is copied beside itself under a name that says
// the version it had ("cvd.mdb.v300.bak"), so that an administrator can always go back.
class ConversionBackup
{
public:
    // Makes the copy unless this start made one already. Failures take the common error path.
    void ensure(AppState& state, int version);
    const QString& path() const { return m_path; }

private:
    QString m_path;
};

// Where the copy of a database taken at `version` lies.
QString conversion_backup_path(const QString& database_path, int version);

// A global database of the oldest layouts (cv_settings has cv_dbversion) is brought to version 500: a file
// under 300 is refused with the "Can't Upgrade Database" box; otherwise the conversions from 300, 301 and 302
// run in turn, each when the version read once at the start is below its target. Done also for a file of
// the current layouts, which needs nothing here.
ConversionStatus upgrade_old_layout(AppState& state, ConversionBackup& backup);

// Brings a file at version 500 to 501 and stores the new version in the settings.
ConversionStatus upgrade_to_current(AppState& state, ConversionBackup& backup);

// What the conversion to 500 reads from outside the file: the key store values of the program key and of its
// Window subkey, in the hive that the user's value Here chooses; modem.dbg beside the program; the old
// preset file.
store::LegacyInputs read_legacy_inputs(AppState& state);

// The lines of an old preset file: comma-separated records of description, message and recipient, at most
// 100. nullopt when the file cannot be read. A record that cannot be read ends the list.
std::optional<QList<store::OldPreset>> read_old_preset_file(const QString& path);

} // namespace cvd
