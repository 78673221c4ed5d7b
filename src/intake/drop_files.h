#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace cvd {

struct AppState;

namespace intake {

// Limits of a drop file: body lines read, and the lengths kept of recipient, sender and message.
inline constexpr int kMaxBodyLines = 6000;
inline constexpr int kMaxRecipientLength = 40;
inline constexpr int kMaxSenderLength = 80;
inline constexpr int kMaxMessageLength = 6000;

// The largest drop file that is read: every character the recipient, the sender and the message can keep,
// at four bytes each (the longest UTF-8 form), and a CR LF for each line read; sixteen times that, so that
// blanks before the message and text past its cut fit as well. A larger file is refused, never read.
inline constexpr qint64 kMaxDropFileBytes =
    qint64{16} * (4 * (kMaxRecipientLength + kMaxSenderLength + kMaxMessageLength) + 2 * (2 + kMaxBodyLines));

// One message as a drop file gives it, after the treatment of each line.
struct DropMessage
{
    QString recipient; // lower-cased, cut, quotes turned into commas
    QString sender;    // cut
    QString message;   // body lines each followed by CR LF, trimmed of blanks, cut
};

// Reads the content of a drop file: line 1 the recipient, line 2 the sender, line 3 and on the message.
// Lines end in LF; a CR in front of it belongs to the line end. Bytes that are not valid UTF-8 are read as
// Latin-1. nullopt when the file ends before its third line ("Incomplete data file").
std::optional<DropMessage> parse_drop_file(const QByteArray& content);

// Takes every "*.asc" file of program_folder and then of global_db_folder: a file that gives a message for
// a known recipient becomes one Waiting row and is deleted; any other (not a regular file, too large,
// incomplete, for an unknown recipient) is renamed to its name plus ".bad". A file that a writer still holds
// (an flock or fcntl lock), or that changed less than a second ago, is left for a later call.
// Each file is taken exactly once, however the program is stopped: it is renamed to a working name first,
// its row is committed together with a record of that name, and only then are the file and its record
// removed. A working file found later is removed when it is recorded and taken as a drop file when not.
void check_for_files(AppState& state);

} // namespace intake
} // namespace cvd
