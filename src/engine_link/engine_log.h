#pragma once

#include <QString>
#include <QStringList>

namespace cvd::engine_link {

// The delivery engine writes its conversations to cvd.log in the user database folder, one event a line.
// This program only reads, prints, copies and purges that file.
inline constexpr qint64 kEngineLogShownBytes = 8000000;

QString engine_log_path(const QString& user_db_folder);

// The lines of the log as the activity log window shows them. While the length still to show exceeds
// 8,000,000 bytes, the first line is dropped and its length (without its line end) is taken off, so that
// about the last 8 million bytes are shown, always from the beginning of a line. A missing file gives no
// lines. A CR before the LF of a line end is not part of the line.
QStringList read_engine_log_tail(const QString& path, qint64 limit = kEngineLogShownBytes);

// Every line of the file as it stands, for printing; empty when there is no file.
QStringList read_engine_log_lines(const QString& path);

// Deletes the file if it exists: 0, or the error number when a file was there and could not be removed.
int purge_engine_log(const QString& path);

} // namespace cvd::engine_link
