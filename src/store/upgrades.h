#pragma once

#include "store/database.h"
#include "store/schema.h"

#include <QList>
#include <QString>
#include <optional>
#include <utility>

namespace cvd::store {

// The conversions that bring a global database of an older layout up to version 501, one version step
// each. Files up to 302 keep their settings in one row of cv_settings with a column per setting and the
// version in cv_dbversion; from 500 on cv_settings holds category, name and value rows. Each conversion runs
// in one transaction: when any statement of it fails, the file is left as it was before that conversion and
// Error is thrown. None is meant to run twice; a second run fails on the first column that already exists.

// One line of an old preset file, in the order of its fields.
struct OldPreset
{
    QString description;
    QString message;
    QString recipient;
};

// What the conversion to 500 takes from outside the file.
struct LegacyInputs
{
    QString sender; // the sender name kept in the key store
    // Display settings kept in the key store, by setting name, as stored texts ("-1", "0", a number).
    QList<std::pair<QString, QString>> display;
    bool debug_log_present = false; // modem.dbg beside the program: the engine logged in detail
    // The lines of the old preset file, when there is one; they replace the presets from the first on.
    std::optional<QList<OldPreset>> presets;
};

// 300 -> 301: the two comment columns of recipients and their labels.
void convert300to301(Database& db);
// 301 -> 302: the carrier password moves through a scratch column to a wider one of its own.
void convert301to302(Database& db);
// 302 -> 500: carrier authentication and mail relay columns, the settings as rows, presets and counters.
void convert302to500(Database& db, const LegacyInputs& inputs);
// 500 -> 501: priorities, and the indexes the queue's queries need. The version row says 501 afterwards.
void convert500to501(Database& db);

} // namespace cvd::store
