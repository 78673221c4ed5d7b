#pragma once

#include <QString>

namespace cvd {

// File helpers that report by their result and never raise: a file system failure is an answer of false.

// True when the path can be examined (a file or a folder). An empty text is false.
bool isfile(const QString& path);
// True when the path is a folder.
bool isdir(const QString& path);
// Creates one folder level. A trailing slash is dropped first when the text has at least 3 characters.
// An existing folder is no error. True when the folder exists afterwards.
bool makedir(const QString& path);
// Deletes a file; true when that worked.
bool cankill(const QString& path);
// Copies `from` to `to` when `from` exists. True when `to` exists afterwards, so an older `to` counts as
// success when the copy did nothing.
bool cancopy(const QString& from, const QString& to);
// Renames `from` to `to` when `from` exists, replacing `to`. True when `to` exists afterwards.
bool canmove(const QString& from, const QString& to);

} // namespace cvd
