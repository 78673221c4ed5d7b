#include "queue/stored_message.h"

#include "store/database.h"

using namespace Qt::StringLiterals;

namespace cvd::queue {

std::optional<StoredMessage> read_stored_message(store::Database& db, qint64 message_id, const QString& condition)
{
    QString sql = u"SELECT cv_recipient, cv_message, cv_date_time_requested, cv_repeat_stop, cv_repeat_interval "
                  u"FROM cv_messages WHERE (cv_message_id = ?1)"_s;
    if (!condition.isEmpty()) {
        sql += u" AND "_s + condition;
    }
    store::Statement select = db.prepare(sql);
    select.bind(1, message_id);
    if (!select.step()) {
        return std::nullopt;
    }
    StoredMessage message;
    message.id = message_id;
    message.recipient = select.text(0).value_or(QString());
    message.text = select.text(1).value_or(QString());
    message.requested = select.date(2).value_or(QDateTime());
    message.repeat_stop = select.date(3).value_or(QDateTime());
    message.repeat_interval = static_cast<qint32>(select.integer(4).value_or(0));
    return message;
}

ScheduleSelection schedule_of(const StoredMessage& message)
{
    ScheduleSelection selection;
    selection.schedule_time = message.requested;
    selection.repeat_stop_time = message.repeat_stop;
    selection.repeat_minutes = message.repeat_interval;
    selection.schedule_flag = true;
    selection.repeat_flag = true;
    selection.dialog_applied = true;
    return selection;
}

} // namespace cvd::queue
