#include "queue/enqueue.h"

#include "core/app_state.h"
#include "core/clock.h"
#include "core/error_path.h"
#include "core/setting_keys.h"
#include "core/text.h"
#include "store/database.h"
#include "store/tables.h"
#include "store/unique.h"

using namespace Qt::StringLiterals;

namespace cvd::queue {

namespace messages = store::tables::messages;
namespace recipients = store::tables::recipients;
namespace settings = store::tables::settings;

std::optional<QString> recipient_carrier(store::Database& db, const QString& recipient)
{
    store::Statement& select = db.cached(u"SELECT " % recipients::carrier % u" FROM " % recipients::table % u" WHERE " %
                                         recipients::name % u" = ?1");
    select.reset();
    select.bind(1, recipient);
    std::optional<QString> carrier;
    if (select.step()) {
        carrier = select.text(0).value_or(QString());
    }
    // A cached statement left on its row would hold a read transaction open until its next use.
    select.reset();
    return carrier;
}

qint64 insert_waiting_message(store::Database& db, const QDateTime& now, const NewMessage& message,
                              qint32 retry_interval_seconds)
{
    const qint32 transaction = store::get_unique(db);
    using store::tables::column_list;
    store::Statement& insert =
        db.cached(u"INSERT INTO " % messages::table % u" (" %
                  column_list({messages::recipient, messages::pin, messages::message, messages::carrier,
                               messages::date_time_requested, messages::from, messages::sent, messages::error,
                               messages::scheduled, messages::repeat_interval, messages::repeat_stop, messages::retries,
                               messages::last_try, messages::transaction}) %
                  u") VALUES (?1, '', ?2, ?3, ?4, ?5, 0, 0, 0, 0, ?4, 0, ?6, ?7)");
    insert.reset();
    insert.bind(1, message.recipient)
        .bind(2, message.message)
        .bind(3, message.carrier)
        .bind(4, now)
        .bind(5, message.sender)
        .bind(6, now.addSecs(-static_cast<qint64>(retry_interval_seconds)))
        .bind(7, static_cast<qint64>(transaction));
    insert.exec();
    return db.last_insert_id();
}

qint32 retry_interval_seconds(AppState& state)
{
    const SettingKey key = setting_keys::connector::retry_interval;
    if (state.settings.is_loaded()) {
        return state.settings.get_setting_long(key);
    }
    store::Statement select = state.global_db.prepare(u"SELECT " % settings::value % u" FROM " % settings::table %
                                                      u" WHERE (" % settings::category % u" = ?1) AND (" %
                                                      settings::name % u" = ?2) ORDER BY " % settings::id % u" DESC");
    select.bind(1, key.category.toString()).bind(2, key.name.toString());
    return select.step() ? to_int32(numeric_prefix(select.text(0).value_or(QString()))) : 0;
}

std::optional<qint64> enqueue_for_known_recipient(AppState& state, const QString& procedure, const QString& recipient,
                                                  const QString& sender, const QString& message)
{
    const std::optional<QString> carrier =
        with_retry(state, procedure, [&] { return recipient_carrier(state.global_db, recipient); });
    yield_to_event_loop();
    if (!carrier) {
        return std::nullopt;
    }
    const qint32 retry_interval = with_retry(state, procedure, [&] { return retry_interval_seconds(state); });
    const NewMessage row{recipient, message, *carrier, sender};
    // The number is drawn and used in one commit: a start-up that renumbers the unsent rows in between would
    // otherwise leave this row below the new run's first transaction, where it never counts. One commit is
    // also one flush to disk, which is most of what a line handed in by a script costs.
    const qint64 id = with_retry(state, procedure, [&] {
        store::Transaction commit(state.global_db);
        const qint64 inserted = insert_waiting_message(state.global_db, state.clock.now(), row, retry_interval);
        commit.commit();
        return inserted;
    });
    yield_to_event_loop();
    return id;
}

} // namespace cvd::queue
