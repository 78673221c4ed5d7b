// The folders' sort keys and heading clicks, their layout arithmetic, and the schedule dialog's decisions.
#include "desk/folder_rules.h"
#include "desk/schedule_rules.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::desk {
namespace {

using queue::Folder;

QString key_name(SettingKey key)
{
    return key.name.toString();
}

TEST(FolderRules, EachFolderWritesItsOwnKeyButReadsTheSentAndHistoryKeys)
{
    const struct
    {
        Folder folder;
        QString written, on_heading, first_routine;
    } cases[] = {
        {Folder::Scheduled, u"sched_sort_order"_s, u"list_sort_order"_s, u"SortByRequestedAscending"_s},
        {Folder::Pending, u"pend_sort_order"_s, u"list_sort_order"_s, u"SortByRequestedAscending"_s},
        {Folder::Sent, u"sent_sort_order"_s, u"sent_sort_order"_s, u"SortBySentAscending"_s},
        {Folder::Bad, u"bad_sort_order"_s, u"list_sort_order"_s, u"SortBySentAscending"_s},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.written.toStdString());
        EXPECT_EQ(key_name(sort_key_written(c.folder)), c.written);
        EXPECT_EQ(key_name(sort_key_read_on_refresh(c.folder)), u"sent_sort_order"_s);
        EXPECT_EQ(key_name(sort_key_read_on_heading(c.folder)), c.on_heading);
        EXPECT_EQ(sort_routines(c.folder).front().name, c.first_routine);
        EXPECT_FALSE(find_sort_routine(c.folder, u"SortByNothing"_s));
    }
    // A folder sorts by the other date's routine name not at all.
    EXPECT_FALSE(find_sort_routine(Folder::Scheduled, u"SortBySentAscending"_s));
    const std::optional<SortRoutine> by_date = find_sort_routine(Folder::Bad, u"SortBySentDescending"_s);
    ASSERT_TRUE(by_date);
    EXPECT_EQ(by_date->column, kDateNumberColumn);
    EXPECT_EQ(by_date->marked_heading, kDateColumn);
    EXPECT_TRUE(by_date->numeric && by_date->descending);
}

TEST(FolderRules, AHeadingSortsDescendingOnlyWhenTheKeyNamesItsAscendingRoutine)
{
    const struct
    {
        Folder folder;
        int column;
        QString key;
        QString expected; // empty: nothing
    } cases[] = {
        {Folder::Sent, kDateColumn, u"SortBySentAscending"_s, u"SortBySentDescending"_s},
        {Folder::Sent, kDateColumn, u"SortBySentDescending"_s, u"SortBySentAscending"_s},
        {Folder::Pending, kDateColumn, u"SortByRequestedAscending"_s, u"SortByRequestedDescending"_s},
        {Folder::Pending, kDateColumn, u"SortBySentAscending"_s, u"SortByRequestedAscending"_s},
        {Folder::Bad, kToColumn, u"SortByToAscending"_s, u"SortByToDescending"_s},
        {Folder::Scheduled, kMessageColumn, {}, u"SortByMessageAscending"_s},
        {Folder::Scheduled, kMessageColumn, u"SortByMessageAscending"_s, u"SortByMessageDescending"_s},
        {Folder::Sent, kIdColumn, {}, {}},
        {Folder::Sent, kDateNumberColumn, {}, {}},
        {Folder::Sent, -1, {}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.column);
        const std::optional<SortRoutine> routine = heading_click_routine(c.folder, c.column, c.key);
        EXPECT_EQ(routine ? routine->name : QString(), c.expected);
    }
}

TEST(FolderRules, TheGridLeavesRoomForTheButtonsAndCountsSmallWindowsAsTheMinimum)
{
    const struct
    {
        Folder folder;
        int width, height, grid_width, grid_height;
    } cases[] = {
        {Folder::Sent, 9000, 5000, 8760, 4200},
        {Folder::Sent, 3000, 1400, 5160, 900},
        {Folder::Sent, 3000, 1500, 5160, 700},
        {Folder::Scheduled, 6000, 3000, 6060, 2200},
    };
    for (const auto& c : cases) {
        const GridSize grid = folder_grid_size(c.folder, c.width, c.height);
        EXPECT_EQ(grid.width, c.grid_width);
        EXPECT_EQ(grid.height, c.grid_height);
    }
    EXPECT_EQ(whole_row_height(100, 20, 15, 4), 99); // five whole rows
    EXPECT_EQ(whole_row_height(10, 20, 15, 4), 39);  // never less than one row
}

TEST(ScheduleRules, OpeningShowsTheLastApplyOrNow)
{
    const QDateTime now(QDate(2026, 11, 23), QTime(9, 30, 20));
    queue::ScheduleSelection fresh;
    const ScheduleFields first = schedule_fields_on_open(fresh, now);
    EXPECT_EQ(first.start, now);
    EXPECT_EQ(first.stop, now);
    EXPECT_FALSE(first.repeat);
    EXPECT_EQ(fresh.schedule_time, now);

    queue::ScheduleSelection applied;
    applied.dialog_applied = true;
    applied.repeat_flag = true;
    applied.schedule_time = now.addDays(1);
    applied.repeat_stop_time = now.addDays(2);
    applied.repeat_minutes = 90;
    const ScheduleFields again = schedule_fields_on_open(applied, now);
    EXPECT_TRUE(again.repeat);
    EXPECT_EQ(again.start, now.addDays(1));
    EXPECT_EQ(again.stop, now.addDays(2));
    EXPECT_EQ(std::tuple(again.days, again.hours, again.minutes), std::tuple(0, 1, 30));
    applied.repeat_minutes = 3 * 1440 + 5 * 60 + 7;
    const ScheduleFields long_repeat = schedule_fields_on_open(applied, now);
    EXPECT_EQ(std::tuple(long_repeat.days, long_repeat.hours, long_repeat.minutes), std::tuple(3, 5, 7));
    applied.repeat_flag = false; // applied without a repeat: the stop pickers show the send time
    const ScheduleFields single = schedule_fields_on_open(applied, now);
    EXPECT_FALSE(single.repeat);
    EXPECT_EQ(single.stop, now.addDays(1));
}

TEST(ScheduleRules, ApplyNeedsAChangedSendTimeAndAStopAfterIt)
{
    const QDateTime opened(QDate(2026, 11, 23), QTime(9, 30, 20));
    const QDateTime later(QDate(2026, 11, 23), QTime(11, 0, 45));
    const struct
    {
        QDateTime start;
        bool repeat;
        int days, hours, minutes;
        QDateTime stop;
        bool refused, schedule_flag, repeat_flag;
        qint32 repeat_minutes;
    } cases[] = {
        {opened, true, 0, 1, 30, opened.addDays(1), false, false, false, 7},  // untouched: nothing set
        {later, true, 0, 1, 30, later.addDays(1), false, true, true, 90},     // a repeat of 90 minutes
        {later, true, 1, 0, 0, later, true, false, false, 7},                 // stop equal to send: refused
        {later, true, 0, 0, 0, later.addSecs(-3600), false, true, false, 7},  // no period: no stop test
        {later, false, 0, 5, 0, later.addSecs(-3600), false, true, false, 7}, // not ticked: no repeat
        {later, true, 0, 0, 1, later.addSecs(10), true, false, false, 7},     // same minute after the cut
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.start.toString().toStdString());
        queue::ScheduleSelection selection;
        selection.repeat_minutes = 7;
        selection.schedule_flag = true;
        selection.repeat_flag = true;
        const ScheduleFields fields{c.start, c.repeat, c.days, c.hours, c.minutes, c.stop};
        const std::optional<Notice> refusal = apply_schedule(selection, fields, opened);
        EXPECT_EQ(refusal.has_value(), c.refused);
        if (refusal) {
            EXPECT_EQ(refusal->title, u"INVALID STOP DATE/TIME"_s);
            EXPECT_EQ(refusal->text, u"The Stop Date/Time Must be After the Send Date/Time"_s);
            EXPECT_FALSE(selection.dialog_applied);
        } else {
            EXPECT_TRUE(selection.dialog_applied);
            EXPECT_EQ(selection.schedule_time, whole_minutes(c.start));
            EXPECT_EQ(selection.schedule_time.time().second(), 0);
        }
        EXPECT_EQ(selection.schedule_flag, c.schedule_flag);
        EXPECT_EQ(selection.repeat_flag, c.repeat_flag);
        EXPECT_EQ(selection.repeat_minutes, c.repeat_minutes);
    }
}

TEST(ScheduleRules, RepeatBoxesKeepInsideTheirLimits)
{
    EXPECT_EQ(clamp_repeat_box(u"4000"_s, kMaxRepeatDays), 3650);
    EXPECT_EQ(clamp_repeat_box(u" 12 "_s, kMaxRepeatHours), 12);
    EXPECT_EQ(clamp_repeat_box(u"-3"_s, kMaxRepeatMinutes), 0);
    EXPECT_EQ(clamp_repeat_box(u"ten"_s, kMaxRepeatMinutes), 0);
    EXPECT_EQ(clamp_repeat_box(u"99999999999999999999"_s, kMaxRepeatMinutes), 0);
}

} // namespace
} // namespace cvd::desk
