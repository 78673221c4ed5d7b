#include "queue/roster_window.h"

#include <QString>
#include <gtest/gtest.h>
#include <vector>

namespace cvd::queue {
namespace {

enum Day { sunday = 1, monday, tuesday, wednesday, thursday, friday, saturday };

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

struct At
{
    int day;
    QTime time;
};

// Checks every moment through each way in: roster day and time, a local moment, the same moment given in UTC,
// and times as the store returns them, as date values whose date part is of no account.
void check(const Span& span, const std::vector<At>& on_call, const std::vector<At>& off_call)
{
    const QDate stored_date(1899, 12, 30);
    const QDateTime stored_start(stored_date, span.start);
    const QDateTime stored_stop(stored_date.addDays(40), span.stop);
    for (const bool expected : {true, false}) {
        for (const At& at : expected ? on_call : off_call) {
            const QDateTime now(date_of(at.day), at.time);
            SCOPED_TRACE(QStringLiteral("span %1 %2 - %3 %4, at %5")
                             .arg(span.start_day)
                             .arg(span.start.toString(Qt::ISODateWithMs))
                             .arg(span.stop_day)
                             .arg(span.stop.toString(Qt::ISODateWithMs))
                             .arg(now.toString(QStringLiteral("ddd HH:mm:ss.zzz")))
                             .toStdString());
            EXPECT_EQ(is_on_call(span.start_day, span.start, span.stop_day, span.stop, at.day, at.time), expected);
            EXPECT_EQ(is_on_call(span.start_day, span.start, span.stop_day, span.stop, now), expected);
            EXPECT_EQ(is_on_call(span.start_day, span.start, span.stop_day, span.stop, now.toUTC()), expected);
            EXPECT_EQ(is_on_call(span.start_day, stored_start, span.stop_day, stored_stop, now), expected);
        }
    }
}

TEST(RosterWindow, SpanWithinOneDayHoldsStrictlyBetweenItsTimes)
{
    check({monday, {8, 0}, monday, {17, 0}}, {{monday, {8, 1}}, {monday, {12, 0}}, {monday, {16, 59}}},
          {{monday, {7, 59}},
           {monday, {8, 0}},
           {monday, {17, 0}},
           {monday, {17, 1}},
           {sunday, {12, 0}},
           {tuesday, {12, 0}},
           {saturday, {12, 0}}});
}

TEST(RosterWindow, SpanWithinOneDayWithStopNotAfterStartHoldsAroundMidnightOnEveryDay)
{
    // Monday 17:00 to Monday 08:00: the day is not looked at, and both ends belong to the span.
    std::vector<At> off = {{monday, {16, 59}}, {monday, {8, 1}}, {thursday, {16, 59}}, {thursday, {8, 1}}};
    for (int day = sunday; day <= saturday; ++day) {
        off.push_back({day, {12, 0}});
    }
    check({monday, {17, 0}, monday, {8, 0}},
          {{thursday, {20, 0}},
           {monday, {17, 0}},
           {monday, {17, 1}},
           {monday, {7, 59}},
           {monday, {8, 0}},
           {thursday, {17, 0}},
           {thursday, {8, 0}},
           {saturday, {0, 0}},
           {sunday, {23, 59, 59}}},
          off);

    // Equal start and stop leave no gap: always on call.
    check({wednesday, {9, 0}, wednesday, {9, 0}},
          {{wednesday, {9, 0}}, {wednesday, {8, 59}}, {friday, {9, 1}}, {sunday, {0, 0}}}, {});
}

TEST(RosterWindow, SpanOverSeveralDaysRunsFromStartToStopWithBothEndsOutside)
{
    check({monday, {8, 0}, friday, {17, 0}},
          {{monday, {8, 1}}, {tuesday, {0, 0}}, {wednesday, {3, 0}}, {thursday, {23, 59}}, {friday, {16, 59}}},
          {{sunday, {12, 0}},
           {monday, {7, 59}},
           {monday, {8, 0}},
           {friday, {17, 0}},
           {friday, {17, 1}},
           {saturday, {12, 0}}});

    // A stop time of day before the start time is fine once the days differ.
    check({monday, {17, 0}, tuesday, {8, 0}}, {{monday, {17, 1}}, {tuesday, {7, 59}}},
          {{monday, {12, 0}},
           {monday, {16, 59}},
           {monday, {17, 0}},
           {tuesday, {8, 0}},
           {tuesday, {8, 1}},
           {tuesday, {12, 0}},
           {thursday, {20, 0}}});
}

TEST(RosterWindow, SpanOverTheWeekEndRunsFromSaturdayIntoSunday)
{
    check({friday, {17, 0}, monday, {8, 0}},
          {{friday, {17, 1}},
           {saturday, {0, 0}},
           {saturday, {12, 0}},
           {saturday, {23, 59, 59}},
           {sunday, {0, 0}},
           {sunday, {12, 0}},
           {monday, {0, 0}},
           {monday, {7, 59}}},
          {{friday, {12, 0}},
           {friday, {16, 59}},
           {friday, {17, 0}},
           {monday, {8, 0}},
           {monday, {8, 1}},
           {tuesday, {12, 0}},
           {wednesday, {3, 0}},
           {thursday, {20, 0}}});

    // Saturday night only, with the stop time of day before the start time.
    check({saturday, {22, 0}, sunday, {6, 0}}, {{saturday, {22, 1}}, {sunday, {5, 59}}},
          {{saturday, {21, 59}},
           {saturday, {22, 0}},
           {sunday, {6, 0}},
           {sunday, {6, 1}},
           {friday, {23, 0}},
           {monday, {3, 0}}});

    // From the afternoon to the morning of a later day of the week, over Saturday night.
    check({thursday, {14, 0}, tuesday, {10, 0}},
          {{thursday, {14, 1}}, {friday, {1, 0}}, {monday, {23, 0}}, {tuesday, {9, 59}}},
          {{thursday, {13, 59}}, {tuesday, {10, 0}}, {wednesday, {12, 0}}});
}

TEST(RosterWindow, TimesCountInWholeSeconds)
{
    // Within the second of a start or stop the moment still counts as the end itself.
    check({friday, {17, 0}, monday, {8, 0}}, {{friday, {17, 0, 1}}, {monday, {7, 59, 59, 999}}},
          {{friday, {17, 0, 0, 500}}, {monday, {8, 0, 0, 999}}});
    check({monday, {17, 0}, monday, {8, 0}}, {{thursday, {8, 0, 0, 700}}},
          {{thursday, {8, 0, 1}}, {thursday, {16, 59, 59, 999}}});
    // Seconds themselves count.
    check({monday, {8, 0, 30}, monday, {17, 0}}, {{monday, {8, 0, 31}}}, {{monday, {8, 0, 30}}});
}

} // namespace
} // namespace cvd::queue
