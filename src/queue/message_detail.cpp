#include "queue/message_detail.h"

#include "queue/folders.h"
#include "store/database.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace cvd::queue {

namespace {

// Columns 0 to 6 are common to every source; the source's own follow from kOwn.
constexpr int kOwn = 7;

QString own_columns(DetailSource source)
{
    switch (source) {
    case DetailSource::Scheduled:
        return u"cv_repeat_interval, cv_repeat_stop"_s;
    case DetailSource::Pending:
        return u"cv_retries, cv_last_try"_s;
    case DetailSource::Sent:
    case DetailSource::Bad:
        return u"cv_date_time_sent"_s;
    case DetailSource::Log:
        return u"cv_date_time_sent, cv_scheduled, cv_sent, cv_error"_s;
    }
    return {};
}

QString text_of(const store::Statement& row, int column)
{
    return row.text(column).value_or(QString());
}

QString date_of(const store::Statement& row, int column)
{
    return general_date_text(text_of(row, column));
}

QStringList own_lines(DetailSource source, const store::Statement& row)
{
    switch (source) {
    case DetailSource::Scheduled: {
        const qint64 interval = row.integer(kOwn).value_or(0);
        if (interval <= 0) {
            return {};
        }
        return {u"Repeat Interval: %1 Days, %2 Hours, %3 Minutes"_s.arg(interval / 1440)
                    .arg((interval % 1440) / 60)
                    .arg(interval % 60),
                u"Repeat Stop: "_s + date_of(row, kOwn + 1)};
    }
    case DetailSource::Pending:
        return {u"Retries: "_s + text_of(row, kOwn), u"Last Try: "_s + date_of(row, kOwn + 1)};
    case DetailSource::Sent:
        return {u"Sent: "_s + date_of(row, kOwn)};
    case DetailSource::Bad:
        return {u"Failed: "_s + date_of(row, kOwn)};
    case DetailSource::Log: {
        QStringList lines;
        const bool sent = row.flag(kOwn + 2);
        if (sent) {
            lines.append(u"Sent: "_s + date_of(row, kOwn));
            lines.append(u"Status: "_s + (row.flag(kOwn + 3) ? u"Failed"_s : u"Successful"_s));
        } else {
            lines.append(u"Status: "_s + (row.flag(kOwn + 1) ? u"Pending"_s : u"Scheduled"_s));
        }
        return lines;
    }
    }
    return {};
}

QString recipient_text(store::Database& db, const QString& recipient, const QString& pin)
{
    store::Statement look_up =
        db.prepare(u"SELECT cv_full_name, cv_ad_hoc FROM cv_recipients WHERE cv_name = ?1 LIMIT 1"_s);
    look_up.bind(1, recipient);
    if (!look_up.step()) {
        return pin;
    }
    QString text = look_up.text(0).value_or(QString());
    if (look_up.flag(1)) {
        text += u' ' + pin;
    }
    return text;
}

} // namespace

std::optional<QString> message_detail_text(store::Database& db, int source, qint64 message_id)
{
    if (source < static_cast<int>(DetailSource::Scheduled) || source > static_cast<int>(DetailSource::Log)) {
        return std::nullopt;
    }
    const auto kind = static_cast<DetailSource>(source);
    store::Statement row = db.prepare(
        u"SELECT cv_recipient, cv_pin, cv_message, cv_carrier, cv_date_time_requested, cv_from, cv_priority, "_s +
        own_columns(kind) + u" FROM cv_messages WHERE cv_message_id = ?1"_s);
    row.bind(1, message_id);
    if (!row.step()) {
        return std::nullopt;
    }
    QStringList lines{u"To: "_s + recipient_text(db, text_of(row, 0), text_of(row, 1)), u"Sender: "_s + text_of(row, 5),
                      u"Carrier: "_s + text_of(row, 3), u"Priority: "_s + text_of(row, 6),
                      u"Requested: "_s + date_of(row, 4)};
    lines += own_lines(kind, row);
    lines.append(u"Message:"_s);
    lines.append(text_of(row, 2));
    return lines.join(u"\r\n"_s);
}

} // namespace cvd::queue
