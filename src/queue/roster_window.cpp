#include "queue/roster_window.h"

namespace cvd::queue {
namespace {

QTime whole_seconds(QTime time)
{
    if (!time.isValid())
        return time;
    return QTime(time.hour(), time.minute(), time.second());
}

// From `start_time` on `start_day` to `stop_time` on `stop_day`, both ends outside, for a start day not after
// the stop day.
bool within_week(int start_day, QTime start_time, int stop_day, QTime stop_time, int day, QTime time)
{
    const bool after_start = day > start_day || (day == start_day && time > start_time);
    const bool before_stop = day < stop_day || (day == stop_day && time < stop_time);
    return after_start && before_stop;
}

// A span that runs over Saturday night: every day from the start day on and up to the stop day, with the
// start and stop days cut at their times.
bool over_week_end(int start_day, QTime start_time, int stop_day, QTime stop_time, int day, QTime time)
{
    bool on_call = !(day < start_day && day > stop_day);
    if (on_call && day == start_day)
        on_call = time > start_time;
    if (on_call && day == stop_day)
        on_call = time < stop_time;
    return on_call;
}

} // namespace

int roster_day(QDate date)
{
    // Qt counts Monday 1 to Sunday 7.
    return date.dayOfWeek() % 7 + 1;
}

bool is_on_call(int start_day, QTime start_time, int stop_day, QTime stop_time, int day, QTime time)
{
    const QTime a = whole_seconds(start_time);
    const QTime b = whole_seconds(stop_time);
    const QTime t = whole_seconds(time);

    if (start_day == stop_day && !(a < b)) {
        // A daily span around midnight, closed at both ends, whatever the day.
        return t >= a || t <= b;
    }
    if (start_day <= stop_day)
        return within_week(start_day, a, stop_day, b, day, t);
    return over_week_end(start_day, a, stop_day, b, day, t);
}

bool is_on_call(int start_day, QTime start_time, int stop_day, QTime stop_time, const QDateTime& now)
{
    const QDateTime local = now.toLocalTime();
    return is_on_call(start_day, start_time, stop_day, stop_time, roster_day(local.date()), local.time());
}

bool is_on_call(int start_day, const QDateTime& start_time, int stop_day, const QDateTime& stop_time,
                const QDateTime& now)
{
    return is_on_call(start_day, start_time.time(), stop_day, stop_time.time(), now);
}

} // namespace cvd::queue
