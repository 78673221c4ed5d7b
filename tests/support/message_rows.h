#pragma once

#include "store/database.h"

#include <QDateTime>
#include <QString>

namespace cvd::testing {

// A row of cv_messages for the folder suites, in one of the four states.
struct MessageRow
{
    enum class State { Waiting, Pending, Sent, Failed };
    QString recipient = QStringLiteral("bob");
    State state = State::Waiting;
    qint64 transaction = 0;
    QString message = QStringLiteral("hello");
    QDateTime requested = QDateTime(QDate(2026, 11, 23), QTime(9, 0));
    QString pin;
    int repeat_interval = 0;
};

// Inserts the row and returns its cv_message_id.
inline qint64 add_message(store::Database& db, const MessageRow& row)
{
    using namespace Qt::StringLiterals;
    const bool scheduled = row.state != MessageRow::State::Waiting;
    const bool sent = row.state == MessageRow::State::Sent || row.state == MessageRow::State::Failed;
    const bool failed = row.state == MessageRow::State::Failed;
    store::Statement insert =
        db.prepare(u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_message, cv_carrier, cv_date_time_requested, "
                   "cv_date_time_sent, cv_from, cv_scheduled, cv_sent, cv_error, cv_repeat_interval, cv_repeat_stop, "
                   "cv_retries, cv_last_try, cv_transaction, cv_priority) "
                   "VALUES (?1, ?2, ?3, 'tapnet', ?4, ?5, 'desk', ?6, ?7, ?8, ?9, ?10, 2, ?4, ?11, 3)"_s);
    insert.bind(1, row.recipient).bind(2, row.pin).bind(3, row.message).bind(4, row.requested);
    if (sent) {
        insert.bind(5, row.requested.addSecs(90));
    } else {
        insert.bind_null(5);
    }
    insert.bind_bool(6, scheduled).bind_bool(7, sent).bind_bool(8, failed).bind(9, row.repeat_interval);
    insert.bind(10, row.requested.addDays(1)).bind(11, row.transaction);
    insert.exec();
    return db.last_insert_id();
}

} // namespace cvd::testing
