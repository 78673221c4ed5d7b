#pragma once

#include "queue/stored_message.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <optional>

namespace cvd {
struct AppState;
}

namespace cvd::store {
class Database;
}

namespace cvd::queue {

// The four views of the queue. Scheduled shows every waiting row; the others only rows of this run
// (transaction above first_transaction). Rows of the pseudo recipient "cvdscreen" are left out, except from
// the pending rows, whose query has always spelt the name "cvdscrenn" and so lets them through.
enum class Folder { Scheduled, Pending, Sent, Bad };

// One row of a folder's grid.
struct FolderRow
{
    qint64 id = 0;
    QString date;           // the view's date column as stored ('YYYY-MM-DD HH:MM:SS'), empty when null
    double date_number = 0; // the same date as days since 1899-12-30; 0 when null
    QString label;          // full name, or the stored key when the recipient is gone; ":" and the pin for ad hoc
    QString message;        // tabs, CRs and LFs as blanks
};

// The change test of a folder: the sum of the ids it shows, 0 for none. One aggregate over the indexes, so
// that an open folder costs next to nothing on a tick that changed nothing. Throws store::Error.
qint64 folder_id_total(store::Database& db, Folder folder, qint64 first_transaction);

// A mark of the database's content as this connection sees it: it moves whenever another connection has
// committed to the file and whenever this connection changed rows. While it stands still no folder's rows can
// have changed, so a refresh need not even sum them. Throws store::Error.
struct ContentMark
{
    qint64 data_version = -1;
    qint64 own_changes = -1;
    bool operator==(const ContentMark&) const = default;
};
ContentMark content_mark(store::Database& db);

// The rows of a folder in the order of its date column, recipients joined in the same query. Throws
// store::Error.
QList<FolderRow> folder_rows(store::Database& db, Folder folder, qint64 first_transaction);

// The row, if it is still in the state the folder shows (unsent for scheduled and pending, sent for sent,
// failed for bad). Throws store::Error.
std::optional<StoredMessage> read_folder_message(store::Database& db, Folder folder, qint64 id);

// Deletes a row that is still waiting (Edit of the scheduled folder holds it in the send window instead).
// True when it was deleted. Throws store::Error.
bool delete_waiting_message(store::Database& db, qint64 id);

// Cancel: every row of `ids` that is not yet finished becomes Failed, sent at `now`. A row finished in the
// meantime is left alone. Returns how many rows changed. Throws store::Error.
int cancel_messages(store::Database& db, const QList<qint64>& ids, const QDateTime& now);

// Requeue: every row of `ids` that is finished goes back to Waiting, due at `now`, each with a fresh
// transaction; an unfinished row is left alone (its fresh number is drawn all the same). Returns how many rows
// changed. Throws store::Error.
int requeue_messages(store::Database& db, const QList<qint64>& ids, const QDateTime& now);

// A stored date as the folders and the detail show it: the locale's short date with the time and its
// seconds. Empty for an empty or unreadable text.
QString general_date_text(const QString& stored);

} // namespace cvd::queue
