#include "queue/scheduler_rows.h"

#include "store/tables.h"

#include <QTimeZone>

using namespace Qt::StringLiterals;

namespace {
namespace messages = cvd::store::tables::messages;
namespace recipients = cvd::store::tables::recipients;
namespace on_call = cvd::store::tables::on_call;
using cvd::store::tables::column_list;
} // namespace

namespace cvd::queue::scheduling {

namespace {

const QString kStoredDateFormat = u"yyyy-MM-dd HH:mm:ss"_s;

// Dates are kept as local wall-clock text. A repeat counts in wall-clock minutes, so that a daily series stays
// at its hour across a change of daylight saving time; the arithmetic is done on the wall-clock fields alone.
std::optional<QDateTime> wall_clock(const QString& stored)
{
    const std::optional<QDateTime> local = store::parse_date(stored);
    if (!local) {
        return std::nullopt;
    }
    return QDateTime(local->date(), local->time(), QTimeZone::utc());
}

QDateTime wall_clock(const QDateTime& moment)
{
    const QDateTime local = moment.toLocalTime();
    const QTime time = local.time();
    return QDateTime(local.date(), QTime(time.hour(), time.minute(), time.second()), QTimeZone::utc());
}

QString text_or_empty(const store::Statement& statement, int column)
{
    return statement.text(column).value_or(QString());
}

} // namespace

Statements::Statements(store::Database& db)
    : m_db(db),
      // cv_scheduled = 0 stands as a literal: only then can the planner use the partial index of due rows. The
      // recipient comes by a join rather than by a look-up per row; of several rows of one name the first counts.
      m_due(db.prepare(u"SELECT m.cv_message_id, m.cv_recipient, m.cv_pin, m.cv_date_time_requested, "
                       "m.cv_repeat_interval, m.cv_repeat_stop, m.cv_transaction, r.rowid IS NOT NULL, r.cv_name, "
                       "r.cv_id, r.cv_carrier, r.cv_group, r.cv_on_call, r.cv_ad_hoc FROM cv_messages AS m "
                       "LEFT JOIN cv_recipients AS r ON r.rowid = (SELECT rowid FROM cv_recipients "
                       "WHERE (cv_name = ifnull(m.cv_recipient, '')) ORDER BY rowid LIMIT 1) "
                       "WHERE (m.cv_scheduled = 0) AND (m.cv_date_time_requested <= ?1) "
                       "ORDER BY m.cv_message_id ASC"_s)),
      m_recipient(db.prepare(u"SELECT " %
                             column_list({recipients::name, recipients::id, recipients::carrier, recipients::group,
                                          recipients::on_call, recipients::ad_hoc}) %
                             u" FROM " % recipients::table % u" WHERE (" % recipients::name % u" = ?1)")),
      // One join instead of a look-up per member. A name may stand on several recipient rows; the first one
      // counts, as it does for a plain row.
      m_members(db.prepare(u"SELECT g.cv_recipient, r.cv_carrier, r.rowid IS NOT NULL FROM cv_groups AS g "
                           "LEFT JOIN cv_recipients AS r ON r.rowid = (SELECT rowid FROM cv_recipients "
                           "WHERE (cv_name = ifnull(g.cv_recipient, '')) ORDER BY rowid LIMIT 1) "
                           "WHERE (g.cv_group = ?1) ORDER BY g.rowid"_s)),
      m_roster(db.prepare(u"SELECT " %
                          column_list({on_call::recipient, on_call::start_day, on_call::start_time, on_call::stop_day,
                                       on_call::stop_time}) %
                          u" FROM " % on_call::table % u" WHERE (" % on_call::group % u" = ?1) ORDER BY rowid")),
      m_body(db.prepare(u"SELECT " % column_list({messages::message, messages::from}) % u" FROM " % messages::table %
                        u" WHERE (" % messages::message_id % u" = ?1)")),
      m_insert(db.prepare(u"INSERT INTO " % messages::table % u" (" %
                          column_list({messages::recipient, messages::pin, messages::message, messages::carrier,
                                       messages::date_time_requested, messages::from, messages::sent, messages::error,
                                       messages::scheduled, messages::repeat_interval, messages::repeat_stop,
                                       messages::retries, messages::last_try, messages::transaction}) %
                          u") VALUES (?1, ?2, ?3, ?4, ?5, ?6, 0, 0, 0, ?7, ?8, 0, ?9, ?10)")),
      m_pending(db.prepare(u"UPDATE cv_messages SET cv_scheduled = -1, cv_carrier = ?2, cv_pin = ?3 "
                           "WHERE (cv_message_id = ?1) AND (cv_scheduled = 0)"_s)),
      m_delete(db.prepare(u"DELETE FROM cv_messages WHERE (cv_message_id = ?1) AND (cv_scheduled = 0)"_s)),
      m_unresolved(db.prepare(u"UPDATE cv_messages SET cv_error = -1, cv_sent = -1, cv_scheduled = -1, "
                              "cv_date_time_sent = ?2 WHERE (cv_message_id = ?1) AND (cv_scheduled = 0)"_s)),
      m_close(db.prepare(u"UPDATE cv_messages SET cv_scheduled = -1, cv_sent = -1, cv_date_time_sent = ?2, "
                         "cv_transaction = 0 WHERE (cv_message_id = ?1) AND (cv_scheduled = 0)"_s)),
      m_close_failed(db.prepare(u"UPDATE cv_messages SET cv_error = -1, cv_scheduled = -1, cv_sent = -1, "
                                "cv_date_time_sent = ?2, cv_transaction = 0 "
                                "WHERE (cv_message_id = ?1) AND (cv_scheduled = 0)"_s))
{
}

std::vector<DueRow> Statements::due_rows(const QDateTime& now)
{
    std::vector<DueRow> rows;
    m_due.reset();
    m_due.bind(1, now);
    while (m_due.step()) {
        DueRow row;
        row.id = m_due.integer(0).value_or(0);
        row.recipient = text_or_empty(m_due, 1);
        row.pin = text_or_empty(m_due, 2);
        row.requested = text_or_empty(m_due, 3);
        row.repeat_interval = m_due.integer(4).value_or(0);
        row.repeat_stop = m_due.text(5);
        row.transaction = static_cast<qint32>(m_due.integer(6).value_or(0));
        if (m_due.flag(7)) {
            row.found = Recipient{text_or_empty(m_due, 8), text_or_empty(m_due, 9), text_or_empty(m_due, 10),
                                  m_due.flag(11),          m_due.flag(12),          m_due.flag(13)};
        }
        rows.push_back(std::move(row));
    }
    m_due.reset();
    return rows;
}

std::optional<Recipient> Statements::recipient(const QString& name)
{
    m_recipient.reset();
    m_recipient.bind(1, name);
    std::optional<Recipient> found;
    if (m_recipient.step()) {
        found = Recipient{text_or_empty(m_recipient, 0), text_or_empty(m_recipient, 1), text_or_empty(m_recipient, 2),
                          m_recipient.flag(3),           m_recipient.flag(4),           m_recipient.flag(5)};
    }
    m_recipient.reset();
    return found;
}

std::vector<Member> Statements::group_members(const QString& group)
{
    std::vector<Member> members;
    m_members.reset();
    m_members.bind(1, group);
    while (m_members.step()) {
        members.push_back(Member{text_or_empty(m_members, 0),
                                 m_members.flag(2) ? std::optional(text_or_empty(m_members, 1)) : std::nullopt});
    }
    m_members.reset();
    return members;
}

std::vector<RosterSpan> Statements::roster(const QString& group)
{
    std::vector<RosterSpan> spans;
    m_roster.reset();
    m_roster.bind(1, group);
    while (m_roster.step()) {
        spans.push_back(RosterSpan{text_or_empty(m_roster, 0), static_cast<int>(m_roster.integer(1).value_or(0)),
                                   roster_time(m_roster.text(2)), static_cast<int>(m_roster.integer(3).value_or(0)),
                                   roster_time(m_roster.text(4))});
    }
    m_roster.reset();
    return spans;
}

MessageBody Statements::body(qint64 message_id)
{
    m_body.reset();
    m_body.bind(1, message_id);
    MessageBody body;
    if (m_body.step()) {
        body = MessageBody{text_or_empty(m_body, 0), text_or_empty(m_body, 1)};
    }
    m_body.reset();
    return body;
}

void Statements::insert(const NewRow& row, const MessageBody& body, qint32 transaction, const QDateTime& last_try)
{
    m_insert.reset();
    m_insert.bind(1, row.recipient)
        .bind(2, row.pin)
        .bind(3, body.message)
        .bind(4, row.carrier)
        .bind(5, row.requested)
        .bind(6, body.from)
        .bind(7, row.repeat_interval)
        .bind(9, last_try)
        .bind(10, qint64{transaction});
    if (row.repeat_stop) {
        m_insert.bind(8, *row.repeat_stop);
    } else {
        m_insert.bind_null(8);
    }
    m_insert.exec();
}

bool Statements::changed_one(store::Statement& statement)
{
    statement.exec();
    return m_db.changes() > 0;
}

bool Statements::make_pending(qint64 message_id, const QString& carrier, const QString& pin)
{
    m_pending.reset();
    m_pending.bind(1, message_id).bind(2, carrier).bind(3, pin);
    return changed_one(m_pending);
}

bool Statements::drop_duplicate(qint64 message_id)
{
    m_delete.reset();
    m_delete.bind(1, message_id);
    return changed_one(m_delete);
}

bool Statements::mark_unresolved(qint64 message_id, const QDateTime& now)
{
    m_unresolved.reset();
    m_unresolved.bind(1, message_id).bind(2, now);
    return changed_one(m_unresolved);
}

bool Statements::close_group(qint64 message_id, bool failed, const QDateTime& now)
{
    store::Statement& close = failed ? m_close_failed : m_close;
    close.reset();
    close.bind(1, message_id).bind(2, now);
    return changed_one(close);
}

std::optional<QString> next_occurrence(const DueRow& row, const QDateTime& now)
{
    if (row.repeat_interval <= 0) {
        return std::nullopt;
    }
    const std::optional<QDateTime> requested = wall_clock(row.requested);
    const std::optional<QDateTime> stop = row.repeat_stop ? wall_clock(*row.repeat_stop) : std::nullopt;
    if (!requested || !stop) {
        return std::nullopt;
    }
    const qint64 step = row.repeat_interval * 60;
    const QDateTime present = wall_clock(now);
    QDateTime next = requested->addSecs(step);
    if (next < present) {
        // Missed occurrences are skipped in one go rather than counted off one by one.
        const qint64 behind = next.secsTo(present);
        next = next.addSecs((behind + step - 1) / step * step);
    }
    if (!next.isValid() || next > *stop) {
        return std::nullopt;
    }
    return next.toString(kStoredDateFormat);
}

QTime roster_time(const std::optional<QString>& stored)
{
    if (!stored) {
        return QTime(0, 0);
    }
    if (const std::optional<QDateTime> moment = store::parse_date(*stored)) {
        return moment->time();
    }
    for (const QString& format : {u"HH:mm:ss"_s, u"H:mm:ss"_s, u"HH:mm"_s, u"H:mm"_s}) {
        const QTime time = QTime::fromString(stored->trimmed(), format);
        if (time.isValid()) {
            return time;
        }
    }
    return QTime(0, 0);
}

} // namespace cvd::queue::scheduling
