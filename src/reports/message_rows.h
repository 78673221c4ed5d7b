#pragma once

#include "reports/report_request.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <functional>
#include <optional>

namespace cvd::store {
class Database;
}

namespace cvd::reports {

// The columns of a queue row that the reports show.
struct MessageRow
{
    QString recipient;
    QString pin;
    QString message;
    QString carrier;
    QDateTime requested;
    QDateTime sent;
    bool error = false;
    qint64 repeat_interval = 0;
    QDateTime repeat_stop;
};

// Which rows a query takes: sent ones in the range (of a recipient, a carrier or all), or those not sent yet.
struct MessageFilter
{
    enum class Key { None, Recipient, Carrier };
    Key key = Key::None;
    QString value;
    bool sent = true;
    QDateTime start;
    QDateTime end;
    Which which = Which::All;
};

// Calls `visit` for each row the filter takes, in the report's order: by sent time (and requested time for a
// carrier) for sent rows, by requested time for the others. Throws store::Error.
void for_each_message(store::Database& db, const MessageFilter& filter,
                      const std::function<void(const MessageRow&)>& visit);

// The short name of the recipient row with that full name (the first one), or nullopt.
std::optional<QString> recipient_key(store::Database& db, const QString& full_name);
// The full name of the recipient row with that short name, or empty.
QString recipient_label(store::Database& db, const QString& name);

// Days, hours and minutes of a repeat interval given in minutes.
struct RepeatParts
{
    qint64 days = 0;
    qint64 hours = 0;
    qint64 minutes = 0;
};
RepeatParts repeat_parts(qint64 interval_minutes);

} // namespace cvd::reports
