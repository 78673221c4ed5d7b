#include "queue/roster_window.h"

#include <QString>
#include <gtest/gtest.h>
#include <vector>

namespace cvd::queue {
namespace {

constexpr int sunday = 1;
constexpr int monday = 2;
constexpr int tuesday = 3;
constexpr int wednesday = 4;
constexpr int thursday = 5;
constexpr int friday = 6;
constexpr int saturday = 7;

// A week in March, clear of any change of daylight saving time, that begins on a Sunday.
const QDate first_sunday(2024, 3, 3);

QDate date_of(int day)
{
    return first_sunday.addDays(day - 1);
}

struct Span
{
    int start_day;
    QTime start;
    int stop_day;
    QTime stop;
};

struct Probe
{
    int day;
    QTime time;
    bool on_call;
};

// Checks every probe through each way in: roster day and time, a local moment, the same moment given in UTC,
// and times as the store returns them, as date values whose date part is of no account.
void check(const Span& span, const std::vector<Probe>& probes)
{
    const QDate stored_date(1899, 12, 30);
    const QDateTime stored_start(stored_date, span.start);
    const QDateTime stored_stop(stored_date.addDays(40), span.stop);
    for (const Probe& probe : probes) {
        const QDateTime now(date_of(probe.day), probe.time);
        SCOPED_TRACE(QStringLiteral("span %1 %2 - %3 %4, at %5")
                         .arg(span.start_day)
                         .arg(span.start.toString(Qt::ISODateWithMs))
                         .arg(span.stop_day)
                         .arg(span.stop.toString(Qt::ISODateWithMs))
                         .arg(now.toString(QStringLiteral("ddd HH:mm:ss.zzz")))
                         .toStdString());
        EXPECT_EQ(is_on_call(span.start_day, span.start, span.stop_day, span.stop, probe.day, probe.time),
                  probe.on_call);
        EXPECT_EQ(is_on_call(span.start_day, span.start, span.stop_day, span.stop, now), probe.on_call);
        EXPECT_EQ(is_on_call(span.start_day, span.start, span.stop_day, span.stop, now.toUTC()), probe.on_call);
        EXPECT_EQ(is_on_call(span.start_day, stored_start, span.stop_day, stored_stop, now), probe.on_call);
    }
}

TEST(RosterWindow, RosterDaysRunFromSundayToSaturday)
{
    ASSERT_EQ(first_sunday.dayOfWeek(), Qt::Sunday);
    for (int day = sunday; day <= saturday; ++day)
        EXPECT_EQ(roster_day(date_of(day)), day) << date_of(day).toString(Qt::ISODate).toStdString();
    EXPECT_EQ(roster_day(date_of(saturday).addDays(1)), sunday);
}

TEST(RosterWindow, SpanWithinOneDayHoldsStrictlyBetweenItsTimes)
{
    check({monday, QTime(8, 0), monday, QTime(17, 0)}, {
                                                           {monday, QTime(7, 59), false},
                                                           {monday, QTime(8, 0), false},
                                                           {monday, QTime(8, 1), true},
                                                           {monday, QTime(12, 0), true},
                                                           {monday, QTime(16, 59), true},
                                                           {monday, QTime(17, 0), false},
                                                           {monday, QTime(17, 1), false},
                                                           {sunday, QTime(12, 0), false},
                                                           {tuesday, QTime(12, 0), false},
                                                           {saturday, QTime(12, 0), false},
                                                       });
}

TEST(RosterWindow, SpanWithinOneDayWithStopNotAfterStartHoldsAroundMidnightOnEveryDay)
{
    // Monday 17:00 to Monday 08:00: the day is not looked at, and both ends belong to the span.
    std::vector<Probe> probes = {
        {thursday, QTime(20, 0), true},    {monday, QTime(16, 59), false},   {monday, QTime(17, 0), true},
        {monday, QTime(17, 1), true},      {monday, QTime(7, 59), true},     {monday, QTime(8, 0), true},
        {monday, QTime(8, 1), false},      {thursday, QTime(16, 59), false}, {thursday, QTime(17, 0), true},
        {thursday, QTime(8, 0), true},     {thursday, QTime(8, 1), false},   {saturday, QTime(0, 0), true},
        {sunday, QTime(23, 59, 59), true},
    };
    for (int day = sunday; day <= saturday; ++day)
        probes.push_back({day, QTime(12, 0), false});
    check({monday, QTime(17, 0), monday, QTime(8, 0)}, probes);

    // Equal start and stop leave no gap: always on call.
    check({wednesday, QTime(9, 0), wednesday, QTime(9, 0)}, {
                                                                {wednesday, QTime(9, 0), true},
                                                                {wednesday, QTime(8, 59), true},
                                                                {friday, QTime(9, 1), true},
                                                                {sunday, QTime(0, 0), true},
                                                            });
}

TEST(RosterWindow, SpanOverSeveralDaysRunsFromStartToStopWithBothEndsOutside)
{
    check({monday, QTime(8, 0), friday, QTime(17, 0)}, {
                                                           {sunday, QTime(12, 0), false},
                                                           {monday, QTime(7, 59), false},
                                                           {monday, QTime(8, 0), false},
                                                           {monday, QTime(8, 1), true},
                                                           {tuesday, QTime(0, 0), true},
                                                           {wednesday, QTime(3, 0), true},
                                                           {thursday, QTime(23, 59), true},
                                                           {friday, QTime(16, 59), true},
                                                           {friday, QTime(17, 0), false},
                                                           {friday, QTime(17, 1), false},
                                                           {saturday, QTime(12, 0), false},
                                                       });

    // A stop time of day before the start time is fine once the days differ.
    check({monday, QTime(17, 0), tuesday, QTime(8, 0)}, {
                                                            {monday, QTime(12, 0), false},
                                                            {monday, QTime(16, 59), false},
                                                            {monday, QTime(17, 0), false},
                                                            {monday, QTime(17, 1), true},
                                                            {tuesday, QTime(7, 59), true},
                                                            {tuesday, QTime(8, 0), false},
                                                            {tuesday, QTime(8, 1), false},
                                                            {tuesday, QTime(12, 0), false},
                                                            {thursday, QTime(20, 0), false},
                                                        });
}

TEST(RosterWindow, SpanOverTheWeekEndRunsFromSaturdayIntoSunday)
{
    check({friday, QTime(17, 0), monday, QTime(8, 0)}, {
                                                           {friday, QTime(12, 0), false},
                                                           {friday, QTime(16, 59), false},
                                                           {friday, QTime(17, 0), false},
                                                           {friday, QTime(17, 1), true},
                                                           {saturday, QTime(0, 0), true},
                                                           {saturday, QTime(12, 0), true},
                                                           {saturday, QTime(23, 59, 59), true},
                                                           {sunday, QTime(0, 0), true},
                                                           {sunday, QTime(12, 0), true},
                                                           {monday, QTime(0, 0), true},
                                                           {monday, QTime(7, 59), true},
                                                           {monday, QTime(8, 0), false},
                                                           {monday, QTime(8, 1), false},
                                                           {tuesday, QTime(12, 0), false},
                                                           {wednesday, QTime(3, 0), false},
                                                           {thursday, QTime(20, 0), false},
                                                       });

    // Saturday night only, with the stop time of day before the start time.
    check({saturday, QTime(22, 0), sunday, QTime(6, 0)}, {
                                                             {saturday, QTime(21, 59), false},
                                                             {saturday, QTime(22, 0), false},
                                                             {saturday, QTime(22, 1), true},
                                                             {sunday, QTime(5, 59), true},
                                                             {sunday, QTime(6, 0), false},
                                                             {sunday, QTime(6, 1), false},
                                                             {friday, QTime(23, 0), false},
                                                             {monday, QTime(3, 0), false},
                                                         });

    // From the afternoon to the morning of a later day of the week, over Saturday night.
    check({thursday, QTime(14, 0), tuesday, QTime(10, 0)}, {
                                                               {thursday, QTime(13, 59), false},
                                                               {thursday, QTime(14, 1), true},
                                                               {friday, QTime(1, 0), true},
                                                               {monday, QTime(23, 0), true},
                                                               {tuesday, QTime(9, 59), true},
                                                               {tuesday, QTime(10, 0), false},
                                                               {wednesday, QTime(12, 0), false},
                                                           });
}

TEST(RosterWindow, TimesCountInWholeSeconds)
{
    // Within the second of a start or stop the moment still counts as the end itself.
    check({friday, QTime(17, 0), monday, QTime(8, 0)}, {
                                                           {friday, QTime(17, 0, 0, 500), false},
                                                           {friday, QTime(17, 0, 1), true},
                                                           {monday, QTime(7, 59, 59, 999), true},
                                                           {monday, QTime(8, 0, 0, 999), false},
                                                       });
    check({monday, QTime(17, 0), monday, QTime(8, 0)}, {
                                                           {thursday, QTime(8, 0, 0, 700), true},
                                                           {thursday, QTime(8, 0, 1), false},
                                                           {thursday, QTime(16, 59, 59, 999), false},
                                                       });
    // Seconds themselves count.
    check({monday, QTime(8, 0, 30), monday, QTime(17, 0)}, {
                                                               {monday, QTime(8, 0, 30), false},
                                                               {monday, QTime(8, 0, 31), true},
                                                           });
}

} // namespace
} // namespace cvd::queue
