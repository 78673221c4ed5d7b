#pragma once

#include "core/prompter.h"

#include <QString>
#include <functional>
#include <optional>

namespace cvd {

struct AppState;

namespace exchange {

// Export to and import from the version-500 text files, so that address data can move between installations.
// One run handles one file and one kind. Both work on state.global_db, which must be open.

enum class ExchangeKind { Carriers, Recipients, Groups, Members };

// The version every data record starts with.
inline constexpr int kFormatVersion = 500;

// "carriers.txt", "recip.txt", "groups.txt", "members.txt": what the browse dialog opens on.
QString suggested_file_name(ExchangeKind kind);
// "Export Carriers" ... and "Import Carriers" ...: the option buttons, which also title the browse dialog.
QString export_option_caption(ExchangeKind kind);
QString import_option_caption(ExchangeKind kind);
QString export_window_caption(); // "Export To Text File"
QString import_window_caption(); // "Import From Text File"
QString browse_filter();         // "Text File (*.txt)|*.txt"
// The same filter as the file chooser takes it ("Text File (*.txt)").
QString browse_name_filter();
// The chosen path, with ".txt" added when its name has no extension.
QString with_default_extension(const QString& path);

struct ExportResult
{
    std::optional<Notice> box; // none when the path was empty
    int exported = 0;
    bool succeeded = false; // the box is the one of a finished export
};

// Writes every row of the kind to `path`, replacing the file. A table without rows writes no file, and the
// box then says the file could not be written; operators know that answer for an empty table.
ExportResult export_text(AppState& state, ExchangeKind kind, const QString& path);

struct ImportResult
{
    std::optional<Notice> box; // none when the path was empty
    int imported = 0;
    int skipped = 0;
    bool succeeded = false; // the box is the one of a finished import
    bool cancelled = false; // the operator stopped the run: nothing of it was kept
};

// Told now and then how many of the file's data records the run has taken, out of how many. Returning false
// stops the run; its transaction is rolled back, so nothing of the file is kept.
using ImportProgress = std::function<bool(qsizetype done, qsizetype total)>;

// How long an import runs before the window offers its progress and a Cancel.
inline constexpr int kProgressDelayMs = 1000;
// How many records the run takes between two reports of its progress.
inline constexpr qsizetype kProgressStep = 250;

// Reads the file's records into the tables. The heading is optional. A file of another version is refused
// before any row is touched. The run is one transaction, so other processes see all of it at once. A record
// that cannot be read ends the run with "Error importing records", and the records before it stay imported;
// a failed statement ends it the same way, with none of the run's rows kept. With `overwrite` an existing row
// of the same name is replaced; without, the record is skipped. An import of recipients or groups publishes
// both lists of names to the machine store afterwards, whatever part of the file was taken.
// How the lists of names reach the machine store after an import: before import_text returns, or written by
// a worker while the window goes on (a list of 50,000 names is 50,000 files).
enum class ListPublishing { Now, Later };

// When `progress` stops the run, the box says that nothing was imported and no list is published.
ImportResult import_text(AppState& state, ExchangeKind kind, const QString& path, bool overwrite,
                         const ImportProgress& progress = {}, ListPublishing publishing = ListPublishing::Now);

} // namespace exchange
} // namespace cvd
