#pragma once

#include "queue/schedule_selection.h"

#include <QDateTime>
#include <QString>
#include <optional>

namespace cvd::store {
class Database;
}

namespace cvd::queue {

// What Copy and Edit take from a stored message for the send window: the recipient, the text and its schedule.
struct StoredMessage
{
    qint64 id = 0;
    QString recipient;
    QString text;
    QDateTime requested;
    QDateTime repeat_stop;
    qint32 repeat_interval = 0;
};

// The row of that id; with a `condition` ("(cv_sent = 0)"), only while the row still meets it. Throws
// store::Error.
std::optional<StoredMessage> read_stored_message(store::Database& db, qint64 message_id, const QString& condition = {});

// The schedule selection a copied message brings along: its send time, its repeat, both flags set, and the
// dialog marked as applied so that it shows these values when it opens.
ScheduleSelection schedule_of(const StoredMessage& message);

} // namespace cvd::queue
