#include "addressbook/rosters.h"

#include "core/app_state.h"
#include "core/error_path.h"
#include "store/database.h"
#include "store/tables.h"

#include <QDateTime>
#include <iterator>

using namespace Qt::Literals::StringLiterals;

namespace cvd::addressbook {

namespace {

const QString kLoadProcedure = u"Procedure: frmOnCallSched_load"_s;
const QString kAddLoadProcedure = u"Procedure: frmAddOncall_load"_s;
const QString kAcceptProcedure = u"Procedure: frmOnCallSched_btnAccept"_s;

namespace recipients = store::tables::recipients;
namespace groups = store::tables::groups;
namespace on_call = store::tables::on_call;

const QString kDayNames[] = {u"Sunday"_s,   u"Monday"_s, u"Tuesday"_s, u"Wednesday"_s,
                             u"Thursday"_s, u"Friday"_s, u"Saturday"_s};

// A time of day is stored as a date value on the zero day of the date system older files use.
const QDate kZeroDay(1899, 12, 30);

QString text_column(const store::Statement& statement, int column)
{
    return statement.text(column).value_or(QString());
}

// The stored time as the grid shows it; a column that holds no time shows as it stands.
QString time_column(const store::Statement& statement, int column)
{
    const QString stored = text_column(statement, column);
    const std::optional<QTime> time = read_roster_time(stored);
    return time ? roster_time_text(*time) : stored;
}

// The full name of the recipient with that short name, or the name itself when there is none.
class NameShower
{
public:
    explicit NameShower(store::Database& db)
        : m_query(db.prepare(u"SELECT "_s % recipients::full_name % u" FROM "_s % recipients::table % u" WHERE ("_s %
                             recipients::name % u" = ?1)"_s))
    {
    }

    QString operator()(const QString& name)
    {
        m_query.reset();
        m_query.bind(1, name);
        return m_query.step() ? text_column(m_query, 0) : name;
    }

private:
    store::Statement m_query;
};

QStringList read_member_choices(store::Database& db, const QString& group)
{
    store::Statement members = db.prepare(u"SELECT "_s % groups::recipient % u" FROM "_s % groups::table %
                                          u" WHERE ("_s % groups::group % u" = ?1) ORDER BY rowid"_s);
    members.bind(1, group);
    NameShower shown(db);
    QStringList choices;
    while (members.step()) {
        choices.append(shown(text_column(members, 0)));
    }
    return choices;
}

void bind_time(store::Statement& statement, int index, const QString& text)
{
    const std::optional<QTime> time = read_roster_time(text);
    if (time) {
        statement.bind(index, QDateTime(kZeroDay, *time));
    } else {
        statement.bind_null(index);
    }
}

// The group's rows for the grid, in table order.
QList<RosterGridRow> read_roster(store::Database& db, const QString& group)
{
    store::Statement query = db.prepare(u"SELECT "_s % store::tables::column_list(on_call::all) % u" FROM "_s %
                                        on_call::table % u" WHERE ("_s % on_call::group % u" = ?1) ORDER BY rowid"_s);
    query.bind(1, group);
    NameShower shown(db);
    QList<RosterGridRow> rows;
    while (query.step()) {
        rows.append({text_column(query, 0), shown(text_column(query, 1)),
                     roster_day_name(static_cast<int>(query.integer(2).value_or(0))), time_column(query, 3),
                     roster_day_name(static_cast<int>(query.integer(4).value_or(0))), time_column(query, 5)});
    }
    return rows;
}

// Replaces the group's whole roster by the grid rows in one transaction: the scheduler never reads a
// half-written roster, and a failure keeps the old one.
void replace_roster(store::Database& db, const QString& group, const QList<RosterGridRow>& rows)
{
    store::Transaction transaction(db);
    store::Statement clear =
        db.prepare(u"DELETE FROM "_s % on_call::table % u" WHERE ("_s % on_call::group % u" = ?1)"_s);
    clear.bind(1, group);
    clear.exec();
    store::Statement resolve = db.prepare(u"SELECT "_s % recipients::name % u" FROM "_s % recipients::table %
                                          u" WHERE ("_s % recipients::full_name % u" = ?1) ORDER BY rowid LIMIT 1"_s);
    store::Statement insert =
        db.prepare(u"INSERT INTO "_s % on_call::table % u" ("_s % store::tables::column_list(on_call::all) %
                   u") VALUES ("_s % store::tables::placeholders(on_call::all.size()) % u")"_s);
    for (const RosterGridRow& row : rows) {
        resolve.reset();
        resolve.bind(1, row.recipient);
        // A raw name read from a row without recipient stays as it is, so it survives the round trip.
        const QString recipient = resolve.step() ? text_column(resolve, 0) : row.recipient;
        insert.reset();
        insert.bind(1, row.group).bind(2, recipient).bind(3, roster_day_number(row.start_day));
        bind_time(insert, 4, row.start_time);
        insert.bind(5, roster_day_number(row.stop_day));
        bind_time(insert, 6, row.stop_time);
        insert.exec();
    }
    transaction.commit();
}

} // namespace

QString roster_day_name(int day)
{
    return day >= 1 && day <= 7 ? kDayNames[day - 1] : QString();
}

int roster_day_number(const QString& name)
{
    for (int day = 1; day <= 7; ++day) {
        if (kDayNames[day - 1].compare(name, Qt::CaseInsensitive) == 0) {
            return day;
        }
    }
    return 0;
}

QStringList roster_day_names()
{
    return QStringList(std::begin(kDayNames), std::end(kDayNames));
}

QString roster_time_text(QTime time)
{
    return time.toString(u"h:mm AP"_s);
}

std::optional<QTime> read_roster_time(const QString& text)
{
    const QString trimmed = text.trimmed();
    if (const std::optional<QDateTime> moment = store::parse_date(trimmed)) {
        return moment->time();
    }
    for (const QString& format : {u"h:mm AP"_s, u"h:mm:ss AP"_s, u"H:mm"_s, u"H:mm:ss"_s}) {
        const QTime time = QTime::fromString(trimmed, format);
        if (time.isValid()) {
            return time;
        }
    }
    return std::nullopt;
}

QList<RosterGridRow> load_roster(AppState& state, const QString& group)
{
    state.clear_error_counters();
    return with_retry(state, kLoadProcedure, [&] { return read_roster(state.global_db, group); });
}

QStringList roster_member_choices(AppState& state, const QString& group)
{
    state.clear_error_counters();
    return with_retry(state, kAddLoadProcedure, [&] { return read_member_choices(state.global_db, group); });
}

std::optional<RosterGridRow> new_roster_row(const QString& group, const QString& recipient, const QString& start_day,
                                            QTime start_time, const QString& stop_day, QTime stop_time)
{
    if (recipient.isEmpty()) {
        return std::nullopt;
    }
    return RosterGridRow{
        group, recipient, start_day, roster_time_text(start_time), stop_day, roster_time_text(stop_time)};
}

RosterGridRow edited_roster_row(const RosterGridRow& row, const QString& recipient, const QString& start_day,
                                QTime start_time, const QString& stop_day, QTime stop_time)
{
    return {row.group, recipient, start_day, roster_time_text(start_time), stop_day, roster_time_text(stop_time)};
}

void apply_roster(AppState& state, const QString& group, const QList<RosterGridRow>& rows)
{
    state.clear_error_counters();
    with_retry(state, kAcceptProcedure, [&] { replace_roster(state.global_db, group, rows); });
}

} // namespace cvd::addressbook
