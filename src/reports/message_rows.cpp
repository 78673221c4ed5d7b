#include "reports/message_rows.h"

#include "store/database.h"
#include "store/tables.h"

#include <QStringBuilder>

using namespace Qt::StringLiterals;

namespace cvd::reports {

namespace messages = store::tables::messages;
namespace recipients = store::tables::recipients;

namespace {

QString message_query(const MessageFilter& filter)
{
    QString sql = u"SELECT "_s %
                  store::tables::column_list({messages::recipient, messages::pin, messages::message, messages::carrier,
                                              messages::date_time_requested, messages::date_time_sent, messages::error,
                                              messages::repeat_interval, messages::repeat_stop}) %
                  u" FROM "_s % messages::table % u" WHERE "_s;
    if (filter.key == MessageFilter::Key::Recipient) {
        sql += messages::recipient % u" = ?3 AND "_s;
    } else if (filter.key == MessageFilter::Key::Carrier) {
        sql += messages::carrier % u" = ?3 AND "_s;
    }
    if (!filter.sent) {
        return sql % u"COALESCE("_s % messages::sent % u", 0) = 0 ORDER BY "_s % messages::date_time_requested;
    }
    sql += messages::sent % u" <> 0 AND "_s % messages::date_time_requested % u" >= ?1 AND "_s %
           messages::date_time_requested % u" <= ?2"_s;
    if (filter.which == Which::Good) {
        sql += u" AND COALESCE("_s % messages::error % u", 0) = 0"_s;
    } else if (filter.which == Which::Bad) {
        sql += u" AND COALESCE("_s % messages::error % u", 0) <> 0"_s;
    }
    sql += u" ORDER BY "_s % messages::date_time_sent;
    if (filter.key == MessageFilter::Key::Carrier) {
        sql += u", "_s % messages::date_time_requested;
    }
    return sql;
}

// Local times in one hour share their offset from UTC unless the clocks change within it. Each local time built
// looks the zone up again, which reads the zone file's status from disk; a report over the whole history would
// pay that hundreds of thousands of times, so the offset is looked up once an hour and the times carry it.
class HourOffsets
{
public:
    QDateTime at(const QDate& date, const QTime& time)
    {
        if (date != m_date || time.hour() != m_hour) {
            m_date = date;
            m_hour = time.hour();
            m_offset = steady_offset(date, m_hour);
        }
        return m_offset ? QDateTime(date, time, Qt::OffsetFromUTC, *m_offset) : QDateTime(date, time);
    }

private:
    // The hour's offset, or nothing when the clocks change in it (those times are built as local times).
    static std::optional<int> steady_offset(const QDate& date, int hour)
    {
        const QTime first(hour, 0);
        const QTime last(hour, 59, 59);
        const QDateTime start(date, first);
        const QDateTime end(date, last);
        if (!start.isValid() || !end.isValid() || start.time() != first || end.time() != last ||
            start.offsetFromUtc() != end.offsetFromUtc() || start.secsTo(end) != 3599) {
            return std::nullopt;
        }
        return start.offsetFromUtc();
    }

    QDate m_date;
    int m_hour = -1;
    std::optional<int> m_offset;
};

// The stored form 'YYYY-MM-DD HH:MM:SS' read digit by digit: Qt's parser with a format costs several
// microseconds a date, which a report over the whole history pays hundreds of thousands of times.
QDateTime read_date(const store::Statement& statement, int column, HourOffsets& offsets)
{
    const std::optional<QString> text = statement.text(column);
    if (!text) {
        return {};
    }
    const QString& value = *text;
    const auto number = [&value](qsizetype at, qsizetype length) {
        int result = 0;
        for (qsizetype i = at; i < at + length; ++i) {
            const int digit = value[i].digitValue();
            if (digit < 0) {
                return -1;
            }
            result = result * 10 + digit;
        }
        return result;
    };
    if (value.size() == 19 && value[4] == u'-' && value[7] == u'-' && value[10] == u' ' && value[13] == u':' &&
        value[16] == u':') {
        const QDate date(number(0, 4), number(5, 2), number(8, 2));
        const QTime time(number(11, 2), number(14, 2), number(17, 2));
        if (date.isValid() && time.isValid()) {
            return offsets.at(date, time);
        }
    }
    return store::parse_date(value).value_or(QDateTime());
}

} // namespace

void for_each_message(store::Database& db, const MessageFilter& filter,
                      const std::function<void(const MessageRow&)>& visit)
{
    store::Statement statement = db.prepare(message_query(filter));
    if (filter.sent) {
        statement.bind(1, filter.start).bind(2, filter.end);
    }
    if (filter.key != MessageFilter::Key::None) {
        statement.bind(3, filter.value);
    }
    MessageRow row;
    HourOffsets offsets;
    while (statement.step()) {
        row.recipient = statement.text(0).value_or(QString());
        row.pin = statement.text(1).value_or(QString());
        row.message = statement.text(2).value_or(QString());
        row.carrier = statement.text(3).value_or(QString());
        row.requested = read_date(statement, 4, offsets);
        row.sent = read_date(statement, 5, offsets);
        row.error = statement.flag(6);
        row.repeat_interval = statement.integer(7).value_or(0);
        row.repeat_stop = row.repeat_interval > 0 ? read_date(statement, 8, offsets) : QDateTime();
        visit(row);
    }
}

std::optional<QString> recipient_key(store::Database& db, const QString& full_name)
{
    store::Statement& statement = db.cached(u"SELECT "_s % recipients::name % u" FROM "_s % recipients::table %
                                            u" WHERE "_s % recipients::full_name % u" = ?1 LIMIT 1"_s);
    statement.bind(1, full_name);
    std::optional<QString> key;
    if (statement.step()) {
        key = statement.text(0).value_or(QString());
    }
    statement.reset();
    return key;
}

QString recipient_label(store::Database& db, const QString& name)
{
    store::Statement& statement = db.cached(u"SELECT "_s % recipients::full_name % u" FROM "_s % recipients::table %
                                            u" WHERE "_s % recipients::name % u" = ?1 LIMIT 1"_s);
    statement.bind(1, name);
    QString label;
    if (statement.step()) {
        label = statement.text(0).value_or(QString());
    }
    statement.reset();
    return label;
}

RepeatParts repeat_parts(qint64 interval_minutes)
{
    RepeatParts parts;
    parts.days = interval_minutes / 1440;
    const qint64 rest = interval_minutes % 1440;
    parts.hours = rest / 60;
    parts.minutes = rest % 60;
    return parts;
}

} // namespace cvd::reports
