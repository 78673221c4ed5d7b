#include "queue/send_page.h"

#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "core/text.h"
#include "platform/folders.h"
#include "store/unique.h"

using namespace Qt::StringLiterals;

namespace cvd::queue {

std::optional<MessageLine> split_message_line(const QString& line, QString* reason)
{
    auto refuse = [reason](const QString& why) -> std::optional<MessageLine> {
        if (reason != nullptr) {
            *reason = why;
        }
        return std::nullopt;
    };
    const qsizetype first = line.indexOf(u' ');
    if (first < 0 || first == line.size() - 1) {
        return refuse(u"the line needs a recipient, a sender and a message, separated by blanks"_s);
    }
    const QString rest = line.mid(first + 1);
    const qsizetype second = rest.indexOf(u' ');
    if (second < 0 || second == rest.size() - 1) {
        return refuse(u"the line needs a sender and a message after the recipient"_s);
    }
    return MessageLine{line.left(first), rest.left(second), rest.mid(second + 1)};
}

qint64 insert_waiting_message(AppState& state, const NewMessage& message, qint32 transaction,
                              qint32 retry_interval_seconds)
{
    const QDateTime now = state.clock.now();
    store::Statement insert = state.global_db.prepare(
        u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_message, cv_carrier, cv_date_time_requested, "
        "cv_from, cv_sent, cv_error, cv_scheduled, cv_repeat_interval, cv_repeat_stop, cv_retries, "
        "cv_last_try, cv_transaction) VALUES (?1, '', ?2, ?3, ?4, ?5, 0, 0, 0, 0, ?4, 0, ?6, ?7)"_s);
    insert.bind(1, message.recipient)
        .bind(2, message.message)
        .bind(3, message.carrier)
        .bind(4, now)
        .bind(5, message.sender)
        .bind(6, now.addSecs(-static_cast<qint64>(retry_interval_seconds)))
        .bind(7, static_cast<qint64>(transaction));
    insert.exec();
    return state.global_db.last_insert_id();
}

qint32 retry_interval_seconds(AppState& state)
{
    const QString category = u"connector"_s;
    const QString name = u"retry_interval"_s;
    if (state.settings.is_loaded()) {
        return state.settings.get_setting_long(category, name);
    }
    store::Statement select = state.global_db.prepare(
        u"SELECT cv_value FROM cv_settings WHERE (cv_category = ?1) AND (cv_name = ?2) ORDER BY cv_id DESC"_s);
    select.bind(1, category).bind(2, name);
    return select.step() ? to_int32(numeric_prefix(select.text(0).value_or(QString()))) : 0;
}

namespace {

const QString kProcedure = u"Procedure: SendPage"_s;

// The carrier of the recipient row, or nullopt when there is no such recipient. Names compare without
// regard to case, as they always have.
std::optional<QString> recipient_carrier(AppState& state, const QString& recipient)
{
    store::Statement select =
        state.global_db.prepare(u"SELECT cv_name, cv_carrier FROM cv_recipients WHERE (cv_name = ?1)"_s);
    select.bind(1, recipient);
    if (!select.step()) {
        return std::nullopt;
    }
    return select.text(1).value_or(QString());
}

SendPageResult enqueue(AppState& state, const MessageLine& parts)
{
    SendPageResult result;
    if (!global_db_is_current(state)) {
        result.reason = u"the database must be brought up to date by starting the program first"_s;
        return result;
    }
    const std::optional<QString> carrier =
        with_retry(state, kProcedure, [&] { return recipient_carrier(state, parts.recipient); });
    yield_to_event_loop();
    if (!carrier) {
        result.reason = u"unknown recipient \""_s + parts.recipient + u'"';
        return result;
    }
    state.date_order_ok = true;
    const qint32 retry_interval = with_retry(state, kProcedure, [&] { return retry_interval_seconds(state); });
    const NewMessage message{parts.recipient, parts.message, *carrier, parts.sender};
    // The transaction number is drawn and used in one commit: a start-up that renumbers the unsent rows in
    // between would otherwise leave this row below the new run's first transaction, where it never counts.
    // One commit is also one flush to disk, which is most of what a line handed in by a script costs.
    result.message_id = with_retry(state, kProcedure, [&] {
        store::Transaction commit(state.global_db);
        const qint64 id = insert_waiting_message(state, message, store::get_unique(state.global_db), retry_interval);
        commit.commit();
        return id;
    });
    result.inserted = true;
    yield_to_event_loop();
    return result;
}

} // namespace

SendPageResult SendPage(AppState& state, const QString& line)
{
    state.clear_error_counters();
    state.program_folder = platform::executable_folder();
    SendPageResult result;
    const std::optional<MessageLine> parts = split_message_line(line, &result.reason);
    if (!parts) {
        return result;
    }
    open_database(state);
    result = enqueue(state, *parts);
    close_database(state);
    return result;
}

} // namespace cvd::queue
