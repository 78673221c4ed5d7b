#include "addressbook/recipients_store.h"

#include "core/app_state.h"
#include "core/error_path.h"
#include "store/database.h"
#include "store/tables.h"

#include <array>

using namespace Qt::Literals::StringLiterals;

namespace cvd::addressbook {

namespace {

const QString kApplyProcedure = u"Procedure: frmAddRecipient apply"_s;
const QString kDeleteProcedure = u"Procedure: list_recipients load"_s;
const QString kListProcedure = u"Procedure: list_recipients activate"_s;
const QString kLoadProcedure = u"Procedure: frmAddRecipient load"_s;

namespace recipients = store::tables::recipients;
namespace groups = store::tables::groups;
namespace messages = store::tables::messages;
namespace carriers = store::tables::carriers;

// The columns bind_row binds, in its order.
constexpr std::array kRowColumns{recipients::name,         recipients::full_name,   recipients::id,
                                 recipients::ad_hoc,       recipients::group,       recipients::carrier,
                                 recipients::maxchars,     recipients::priority,    recipients::drop_control,
                                 recipients::send_subject, recipients::remove_from, recipients::alpha,
                                 recipients::extra1,       recipients::extra2,      recipients::on_call};

// Binds the row's columns to ?1 .. ?15 in the order of kRowColumns.
void bind_row(store::Statement& statement, const RecipientRow& row)
{
    statement.bind(1, row.name)
        .bind(2, row.full_name)
        .bind(3, row.id)
        .bind_bool(4, row.ad_hoc)
        .bind_bool(5, row.group)
        .bind(6, row.carrier)
        .bind(7, row.maxchars)
        .bind(8, row.priority)
        .bind_bool(9, row.drop_control)
        .bind_bool(10, row.send_subject)
        .bind_bool(11, row.remove_from)
        .bind_bool(12, row.alpha)
        .bind(13, row.extra1)
        .bind(14, row.extra2)
        .bind_bool(15, row.on_call);
}

qint32 int_column(const store::Statement& statement, int column)
{
    return static_cast<qint32>(statement.integer(column).value_or(0));
}

QString text_column(const store::Statement& statement, int column)
{
    return statement.text(column).value_or(QString());
}

} // namespace

bool recipient_name_exists(store::Database& db, const QString& name)
{
    store::Statement query =
        db.prepare(u"SELECT 1 FROM "_s % recipients::table % u" WHERE "_s % recipients::name % u" = ?1 LIMIT 1"_s);
    query.bind(1, name);
    return query.step();
}

bool add_recipient(store::Database& db, const RecipientRow& row)
{
    store::Transaction transaction(db);
    if (recipient_name_exists(db, row.name)) {
        return false;
    }
    store::Statement insert =
        db.prepare(u"INSERT INTO "_s % recipients::table % u" ("_s % store::tables::column_list(kRowColumns) %
                   u") VALUES ("_s % store::tables::placeholders(kRowColumns.size()) % u")"_s);
    bind_row(insert, row);
    insert.exec();
    transaction.commit();
    return true;
}

bool update_recipient(store::Database& db, const QString& loaded_name, const RecipientRow& row)
{
    store::Statement update =
        db.prepare(u"UPDATE "_s % recipients::table % u" SET "_s % store::tables::assignments(kRowColumns) %
                   u" WHERE "_s % recipients::name % u" = ?16"_s);
    bind_row(update, row);
    update.bind(16, loaded_name);
    update.exec();
    return db.changes() > 0;
}

std::optional<RecipientRow> read_recipient(store::Database& db, const QString& name)
{
    // Every column in table order.
    store::Statement query = db.prepare(u"SELECT "_s % store::tables::column_list(recipients::all) % u" FROM "_s %
                                        recipients::table % u" WHERE "_s % recipients::name % u" = ?1"_s);
    query.bind(1, name);
    if (!query.step()) {
        return std::nullopt;
    }
    RecipientRow row;
    row.name = text_column(query, 0);
    row.full_name = text_column(query, 1);
    row.id = text_column(query, 2);
    row.carrier = text_column(query, 3);
    row.maxchars = int_column(query, 4);
    row.alpha = query.flag(5);
    row.on_call = query.flag(6);
    row.ad_hoc = query.flag(7);
    row.drop_control = query.flag(8);
    row.group = query.flag(9);
    row.send_subject = query.flag(10);
    row.extra1 = text_column(query, 11);
    row.extra2 = text_column(query, 12);
    row.remove_from = query.flag(13);
    row.priority = int_column(query, 14);
    return row;
}

bool has_unsent_messages(store::Database& db, const QString& name)
{
    // A message whose cv_sent is null has not been sent either.
    store::Statement query = db.prepare(u"SELECT 1 FROM "_s % messages::table % u" WHERE "_s % messages::recipient %
                                        u" = ?1 AND "_s % store::tables::is_false(messages::sent) % u" LIMIT 1"_s);
    query.bind(1, name);
    return query.step();
}

std::optional<Notice> delete_recipient(store::Database& db, const QString& name)
{
    // The check runs inside the transaction, so a message queued meanwhile by another process is seen.
    store::Transaction transaction(db);
    if (std::optional<Notice> refusal = refuse_recipient_delete(has_unsent_messages(db, name))) {
        return refusal;
    }
    store::Statement recipient =
        db.prepare(u"DELETE FROM "_s % recipients::table % u" WHERE "_s % recipients::name % u" = ?1"_s);
    recipient.bind(1, name);
    recipient.exec();
    store::Statement memberships =
        db.prepare(u"DELETE FROM "_s % groups::table % u" WHERE "_s % groups::recipient % u" = ?1"_s);
    memberships.bind(1, name);
    memberships.exec();
    transaction.commit();
    return std::nullopt;
}

QList<RecipientListEntry> list_recipient_rows(store::Database& db, bool group_rows)
{
    // A row whose cv_group is null is a plain recipient.
    const QString kind =
        group_rows ? store::tables::is_true(recipients::group) : store::tables::is_false(recipients::group);
    store::Statement query =
        db.prepare(u"SELECT "_s % recipients::name % u", "_s % recipients::full_name % u" FROM "_s % recipients::table %
                   u" WHERE "_s % kind % u" ORDER BY "_s % recipients::full_name);
    QList<RecipientListEntry> entries;
    while (query.step()) {
        entries.append({text_column(query, 0), text_column(query, 1)});
    }
    return entries;
}

QList<RecipientListEntry> list_recipients(store::Database& db)
{
    return list_recipient_rows(db, false);
}

ApplyOutcome apply_recipient(AppState& state, Protocol protocol, const RecipientEntry& entry, bool is_edit,
                             const QString& loaded_name)
{
    state.clear_error_counters();
    const auto name_exists = [&](const QString& name) {
        return with_retry(state, kApplyProcedure, [&] { return recipient_name_exists(state.global_db, name); });
    };
    const EntryCheck check = check_recipient_entry(protocol, entry, is_edit, name_exists);
    ApplyOutcome outcome{check.short_name, check.full_name, check.refusal, false};
    if (check.refusal) {
        return outcome;
    }
    RecipientEntry checked = entry;
    checked.short_name = check.short_name;
    checked.full_name = check.full_name;
    const RecipientRow row = recipient_row(protocol, checked);
    if (is_edit) {
        outcome.stored =
            with_retry(state, kApplyProcedure, [&] { return update_recipient(state.global_db, loaded_name, row); });
    } else {
        outcome.stored = with_retry(state, kApplyProcedure, [&] { return add_recipient(state.global_db, row); });
        if (!outcome.stored) {
            // Another console took the name between the check and the insert.
            outcome.notice = Notice{u"That Short Name already exists"_s, u"Duplicate Recipient"_s};
            return outcome;
        }
    }
    if (outcome.stored) {
        outcome.notice = recipient_stored_notice(is_edit);
    }
    return outcome;
}

QList<RecipientListEntry> recipient_list(AppState& state)
{
    state.clear_error_counters();
    return with_retry(state, kListProcedure, [&] { return list_recipients(state.global_db); });
}

std::optional<Notice> delete_listed_recipient(AppState& state, const QString& name)
{
    state.clear_error_counters();
    return with_retry(state, kDeleteProcedure, [&] { return delete_recipient(state.global_db, name); });
}

QList<RecipientCarrier> recipient_dialog_carriers(AppState& state)
{
    state.clear_error_counters();
    return with_retry(state, kLoadProcedure, [&] {
        store::Statement query = state.global_db.prepare(u"SELECT "_s % carriers::name % u", "_s % carriers::dial_type %
                                                         u", "_s % carriers::maxchars % u" FROM "_s % carriers::table %
                                                         u" ORDER BY "_s % carriers::name);
        QList<RecipientCarrier> list;
        while (query.step()) {
            list.append(recipient_carrier(text_column(query, 0), text_column(query, 1), int_column(query, 2)));
        }
        return list;
    });
}

std::optional<RecipientEntry> load_recipient(AppState& state, const QString& name)
{
    state.clear_error_counters();
    const std::optional<RecipientRow> row =
        with_retry(state, kLoadProcedure, [&] { return read_recipient(state.global_db, name); });
    if (!row) {
        return std::nullopt;
    }
    return entry_of_row(*row);
}

} // namespace cvd::addressbook
