#pragma once

#include <QString>
#include <QStringList>

namespace cvd::testing {

// Global databases of the older layouts, written out here table by table rather than taken from the code
// that converts them.

// The layout up to 302: cv_settings is one row with a column per setting and the version in cv_dbversion
// (300 here; the comment labels of 301 are absent), carriers keep cv_password and cv_pulse, recipients and
// messages their trustline columns, and there is neither cv_presets nor cv_counters. The tables are empty
// but for the settings row.
void make_version300_database(const QString& path, int version = 300);

// The layout of 500: the current tables without the priority columns, cv_pulse on carriers, the flag
// indexes on the queue, the default settings with version "500".
void make_version500_database(const QString& path);

// Every table's definition and every row, as text, for comparing two files' contents.
QStringList dump_database(const QString& path);

} // namespace cvd::testing
