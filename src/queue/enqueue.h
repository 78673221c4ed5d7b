#pragma once

#include <QDateTime>
#include <QString>
#include <optional>

namespace cvd {

struct AppState;

namespace store {
class Database;
}

namespace queue {

// A new row as every intake path writes it: Waiting, no pin, due now, retried at once by the engine.
struct NewMessage
{
    QString recipient;
    QString message;
    QString carrier;
    QString sender;
};

// The carrier of the recipient row of that name, or nullopt when there is none. Any row with the name will
// do, a group's as well as a person's; names compare without regard to case. Throws store::Error.
std::optional<QString> recipient_carrier(store::Database& db, const QString& recipient);

// Draws a transaction number and inserts one Waiting row with it: requested and repeat-stop now, last try now
// minus retry_interval seconds, priority left unset. Runs inside the caller's transaction, so that number and
// row are committed together. Returns the row's id. Throws store::Error.
qint64 insert_waiting_message(store::Database& db, const QDateTime& now, const NewMessage& message,
                              qint32 retry_interval_seconds);

// The connector/retry_interval setting in seconds: from the settings store once it is loaded, otherwise
// straight from the global database, so that a line handed in before the settings are read still counts
// as having waited out its interval.
qint32 retry_interval_seconds(AppState& state);

// The way a message for a known recipient enters the queue from the command line, `cvdctl`, the registry
// and the local channel: the carrier looked up, then number and row in one commit. nullopt, and no row,
// for an unknown recipient. Database failures take the common error path under `procedure`.
std::optional<qint64> enqueue_for_known_recipient(AppState& state, const QString& procedure, const QString& recipient,
                                                  const QString& sender, const QString& message);

} // namespace queue
} // namespace cvd
