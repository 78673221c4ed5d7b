#include "addressbook/carriers_store.h"

#include "addressbook/carrier_rules.h"
#include "core/app_state.h"
#include "core/error_path.h"
#include "store/database.h"
#include "store/tables.h"

using namespace Qt::StringLiterals;

namespace cvd::addressbook {

namespace {

namespace carriers = store::tables::carriers;
namespace recipients = store::tables::recipients;
namespace messages = store::tables::messages;

const QString kApplyProcedure = u"Procedure: frmAddCarrier apply"_s;
const QString kLoadProcedure = u"Procedure: frmAddCarrier load"_s;
const QString kListProcedure = u"Procedure: list_carriers activate"_s;
const QString kDeleteProcedure = u"Procedure: list_carriers load"_s;

// Every column in table order: what reads select, inserts list and updates set, bound as ?1 .. ?14.
QString select_columns()
{
    return u"SELECT "_s % store::tables::column_list(carriers::all) % u" FROM "_s % carriers::table;
}

void bind_text(store::Statement& statement, int index, const std::optional<QString>& value)
{
    if (value) {
        statement.bind(index, *value);
    } else {
        statement.bind_null(index);
    }
}

void bind_number(store::Statement& statement, int index, std::optional<qint32> value)
{
    if (value) {
        statement.bind(index, *value);
    } else {
        statement.bind_null(index);
    }
}

void bind_row(store::Statement& statement, const CarrierRow& row)
{
    bind_text(statement, 1, row.name);
    bind_text(statement, 2, row.phone_number);
    bind_text(statement, 3, row.modem_settings);
    bind_number(statement, 4, row.maxchars);
    bind_text(statement, 5, row.init_string);
    bind_number(statement, 6, row.retries);
    bind_number(statement, 7, row.message_limit);
    bind_text(statement, 8, row.dial_type);
    bind_number(statement, 9, row.auth_type);
    bind_text(statement, 10, row.auth_user);
    bind_text(statement, 11, row.auth_pass);
    if (row.relay_mail) {
        statement.bind_bool(12, *row.relay_mail);
    } else {
        statement.bind_null(12);
    }
    bind_text(statement, 13, row.relay_server);
    bind_number(statement, 14, row.priority);
}

std::optional<qint32> number_column(const store::Statement& statement, int column)
{
    const std::optional<qint64> value = statement.integer(column);
    return value ? std::optional<qint32>(static_cast<qint32>(*value)) : std::nullopt;
}

// The row the statement stands on, selected with select_columns().
CarrierRow row_of(const store::Statement& query)
{
    CarrierRow row;
    row.name = query.text(0);
    row.phone_number = query.text(1);
    row.modem_settings = query.text(2);
    row.maxchars = number_column(query, 3);
    row.init_string = query.text(4);
    row.retries = number_column(query, 5);
    row.message_limit = number_column(query, 6);
    row.dial_type = query.text(7);
    row.auth_type = number_column(query, 8);
    row.auth_user = query.text(9);
    row.auth_pass = query.text(10);
    row.relay_mail = query.is_null(11) ? std::nullopt : std::optional<bool>(query.flag(11));
    row.relay_server = query.text(12);
    row.priority = number_column(query, 13);
    return row;
}

bool any_row(store::Database& db, const QString& sql, const QString& name)
{
    store::Statement query = db.prepare(sql);
    query.bind(1, name);
    return query.step();
}

} // namespace

std::optional<CarrierRow> read_carrier(store::Database& db, const QString& name)
{
    store::Statement query = db.prepare(select_columns() % u" WHERE "_s % carriers::name % u" = ?1"_s);
    query.bind(1, name);
    if (!query.step()) {
        return std::nullopt;
    }
    return row_of(query);
}

bool carrier_exists(store::Database& db, const QString& name)
{
    return any_row(db, u"SELECT 1 FROM "_s % carriers::table % u" WHERE "_s % carriers::name % u" = ?1 LIMIT 1"_s,
                   name);
}

bool add_carrier(store::Database& db, const CarrierRow& row)
{
    store::Transaction transaction(db);
    if (carrier_exists(db, row.name.value_or(QString()))) {
        return false;
    }
    store::Statement insert =
        db.prepare(u"INSERT INTO "_s % carriers::table % u" ("_s % store::tables::column_list(carriers::all) %
                   u") VALUES ("_s % store::tables::placeholders(carriers::all.size()) % u")"_s);
    bind_row(insert, row);
    insert.exec();
    transaction.commit();
    return true;
}

bool update_carrier(store::Database& db, const QString& loaded_name, const CarrierRow& row)
{
    const int where = static_cast<int>(carriers::all.size()) + 1;
    store::Statement update =
        db.prepare(u"UPDATE "_s % carriers::table % u" SET "_s % store::tables::assignments(carriers::all) %
                   u" WHERE "_s % carriers::name % u" = ?"_s % QString::number(where));
    bind_row(update, row);
    update.bind(where, loaded_name);
    update.exec();
    return db.changes() > 0;
}

bool carrier_in_use(store::Database& db, const QString& name)
{
    return any_row(
        db, u"SELECT 1 FROM "_s % recipients::table % u" WHERE "_s % recipients::carrier % u" = ?1 LIMIT 1"_s, name);
}

bool carrier_has_unsent_messages(store::Database& db, const QString& name)
{
    return any_row(db,
                   u"SELECT 1 FROM "_s % messages::table % u" WHERE "_s % messages::carrier % u" = ?1 AND "_s %
                       store::tables::is_false(messages::sent) % u" LIMIT 1"_s,
                   name);
}

std::optional<Notice> delete_carrier(store::Database& db, const QString& name)
{
    store::Transaction transaction(db);
    if (std::optional<Notice> refusal =
            refuse_carrier_delete(carrier_in_use(db, name), carrier_has_unsent_messages(db, name))) {
        return refusal;
    }
    store::Statement remove =
        db.prepare(u"DELETE FROM "_s % carriers::table % u" WHERE "_s % carriers::name % u" = ?1"_s);
    remove.bind(1, name);
    remove.exec();
    transaction.commit();
    return std::nullopt;
}

QList<CarrierRow> list_carriers(store::Database& db)
{
    store::Statement query = db.prepare(select_columns() % u" ORDER BY "_s % carriers::name);
    QList<CarrierRow> rows;
    while (query.step()) {
        rows.append(row_of(query));
    }
    return rows;
}

CarrierApplyOutcome apply_carrier(AppState& state, const CarrierFrame& frame, bool is_edit, const QString& loaded_name)
{
    state.clear_error_counters();
    const auto exists = [&](const QString& name) {
        return with_retry(state, kApplyProcedure, [&] { return carrier_exists(state.global_db, name); });
    };
    CarrierApplyOutcome outcome;
    outcome.notice = refuse_carrier_name(frame_name(frame), is_edit, exists);
    if (outcome.notice) {
        return outcome;
    }
    const CarrierRow row = encode_carrier(frame);
    if (is_edit) {
        outcome.stored =
            with_retry(state, kApplyProcedure, [&] { return update_carrier(state.global_db, loaded_name, row); });
    } else {
        outcome.stored = with_retry(state, kApplyProcedure, [&] { return add_carrier(state.global_db, row); });
        if (!outcome.stored) {
            // Another console took the name between the check and the insert.
            outcome.notice = Notice{u"A carrier with that name already exists"_s, u"Duplicate Carrier"_s};
            return outcome;
        }
    }
    if (outcome.stored) {
        outcome.notice = apply_done_notice(is_edit);
    }
    return outcome;
}

std::optional<DecodedCarrier> load_carrier(AppState& state, const QString& name)
{
    state.clear_error_counters();
    const std::optional<CarrierRow> row =
        with_retry(state, kLoadProcedure, [&] { return read_carrier(state.global_db, name); });
    if (!row) {
        return std::nullopt;
    }
    return decode_carrier(*row);
}

QList<CarrierRow> carrier_list(AppState& state)
{
    state.clear_error_counters();
    return with_retry(state, kListProcedure, [&] { return list_carriers(state.global_db); });
}

std::optional<Notice> delete_listed_carrier(AppState& state, const QString& name)
{
    state.clear_error_counters();
    return with_retry(state, kDeleteProcedure, [&] { return delete_carrier(state.global_db, name); });
}

} // namespace cvd::addressbook
