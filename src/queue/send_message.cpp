#include "queue/send_message.h"

#include "core/app_state.h"
#include "core/clock.h"
#include "core/error_path.h"
#include "core/text.h"
#include "queue/enqueue.h"
#include "store/database.h"
#include "store/tables.h"
#include "store/unique.h"

using namespace Qt::StringLiterals;

namespace cvd::queue {

namespace {

namespace messages = store::tables::messages;

const QString kProcedure = u"Procedure: send_form send"_s;
const QString kAdHocBefore = u"(a) "_s;
const QString kAdHocAfter = u" (a)"_s;
constexpr qsizetype kKeyLength = 45;
constexpr qsizetype kPinLength = 100;
constexpr qsizetype kPriorityLength = 10;

// The values every row of one press shares.
struct SendRowValues
{
    QString text;
    QDateTime requested;
    QDateTime repeat_stop;
    qint32 repeat_minutes = 0;
    QDateTime last_try;
    qint32 transaction = 0;
};

qint64 insert_row(store::Database& db, const SendRowValues& values, const PickedTarget& target)
{
    using store::tables::column_list;
    store::Statement& insert =
        db.cached(u"INSERT INTO " % messages::table % u" (" %
                  column_list({messages::recipient, messages::pin, messages::message, messages::carrier,
                               messages::date_time_requested, messages::from, messages::sent, messages::error,
                               messages::scheduled, messages::repeat_stop, messages::repeat_interval, messages::retries,
                               messages::last_try, messages::transaction, messages::priority}) %
                  u") VALUES (?1, ?2, ?3, '', ?4, '', 0, 0, 0, ?5, ?6, 0, ?7, ?8, ?9)");
    insert.reset();
    insert.bind(1, target.recipient)
        .bind(2, target.pin)
        .bind(3, values.text)
        .bind(4, values.requested)
        .bind(5, values.repeat_stop)
        .bind(6, static_cast<qint64>(values.repeat_minutes))
        .bind(7, values.last_try)
        .bind(8, static_cast<qint64>(values.transaction))
        .bind(9, target.priority);
    insert.exec();
    return db.last_insert_id();
}

} // namespace

PickedTarget picked_target(const addressbook::PickerEntry& entry)
{
    PickedTarget target;
    target.recipient = trim_blanks(entry.key.left(kKeyLength).toLower());
    if (target.recipient.startsWith(kAdHocBefore) || target.recipient.endsWith(kAdHocAfter)) {
        // A key marked at its end loses its own first characters too: the rows have always been stored so.
        target.recipient = target.recipient.mid(kAdHocBefore.size());
        const qsizetype bar = entry.label.indexOf(u'|');
        target.pin = bar < 0 ? QString() : trim_blanks(entry.label.mid(bar + 1, kPinLength));
    }
    target.priority = static_cast<qint64>(numeric_prefix(trim_blanks(entry.priority.left(kPriorityLength))));
    return target;
}

QString text_to_send(const QString& message)
{
    QString text = trim_blanks(message);
    if (text.size() > kMaxSentTextLength) {
        text = trim_blanks(text.left(kMaxSentTextLength));
    }
    return text;
}

SendOutcome send_message(AppState& state, const QList<addressbook::PickerEntry>& picked, const QString& message,
                         const ScheduleSelection& schedule)
{
    SendOutcome outcome;
    if (picked.isEmpty()) {
        outcome.refusal = Notice{u"You must select a recipient to send the message to."_s, u"No Recipient"_s};
        return outcome;
    }
    if (trim_blanks(message).isEmpty()) {
        outcome.refusal = Notice{u"You must enter a message to send."_s, u"No Message"_s};
        return outcome;
    }
    state.clear_error_counters();
    const QDateTime now = state.clock.now();
    SendRowValues values;
    values.text = text_to_send(message);
    values.requested = schedule.schedule_flag ? schedule.schedule_time : now;
    values.repeat_stop = (schedule.schedule_flag || schedule.repeat_flag) ? schedule.repeat_stop_time : now;
    values.repeat_minutes = schedule.repeat_flag ? schedule.repeat_minutes : 0;
    const qint32 retry_interval = with_retry(state, kProcedure, [&] { return retry_interval_seconds(state); });
    values.last_try = now.addSecs(-static_cast<qint64>(retry_interval));
    with_retry(state, kProcedure, [&] {
        store::Transaction commit(state.global_db);
        values.transaction = store::get_unique(state.global_db);
        QList<qint64> ids;
        for (const addressbook::PickerEntry& entry : picked) {
            ids.append(insert_row(state.global_db, values, picked_target(entry)));
        }
        commit.commit();
        outcome.message_ids = ids;
    });
    outcome.transaction = values.transaction;
    return outcome;
}

} // namespace cvd::queue
