#pragma once

#include <QDate>
#include <QDateTime>
#include <QTime>

namespace cvd::queue {

// Days of the on-call roster: 1 Sunday, 2 Monday, ... 7 Saturday.
int roster_day(QDate date);

// Whether one roster span of an on-call group holds at the moment given by the roster day `day` and the time
// of day `time`. The span runs from `start_time` on `start_day` to `stop_time` on `stop_day`. Times count in
// whole seconds, as the store keeps them; anything finer in `time` is dropped before comparing.
//
// Which ends belong to the span:
// - A span's start and stop moments are outside it. A member whose span starts at 17:00 is on call from just
//   after 17:00, and no longer at the stop time itself. This holds for spans within one day, spans over
//   several days, and spans that run over Saturday night into the next week (Friday 17:00 to Monday 08:00
//   holds from just after 17:00 on Friday, through Saturday and Sunday, until just before 08:00 on Monday).
// - The one exception: a span that starts and stops on the same day with the stop not after the start
//   (Monday 17:00 to Monday 08:00) is a daily span around midnight. It holds at its start and stop times as
//   well, from 17:00 through 08:00 inclusive, and on every day of the week, since its day is not looked at.
//   Kept on purpose: existing rosters rely on this reading.
bool is_on_call(int start_day, QTime start_time, int stop_day, QTime stop_time, int day, QTime time);

// The same test at the moment `now`, read as wall-clock time of this machine (its weekday and time of day).
bool is_on_call(int start_day, QTime start_time, int stop_day, QTime stop_time, const QDateTime& now);

// The same test for times as the store hands them back, a date value of which only the time of day counts.
bool is_on_call(int start_day, const QDateTime& start_time, int stop_day, const QDateTime& stop_time,
                const QDateTime& now);

} // namespace cvd::queue
