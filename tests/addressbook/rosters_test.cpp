#include "addressbook/groups.h"
#include "addressbook/recipients_store.h"
#include "addressbook/rosters.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "store/database.h"
#include "support/database_test.h"

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace cvd::addressbook {

namespace {

TEST(RosterText, DayNamesAndTimesReadBack)
{
    const QString names[] = {u"Sunday"_s,   u"Monday"_s, u"Tuesday"_s, u"Wednesday"_s,
                             u"Thursday"_s, u"Friday"_s, u"Saturday"_s};
    for (int day = 1; day <= 7; ++day) {
        EXPECT_EQ(roster_day_name(day), names[day - 1]);
        EXPECT_EQ(roster_day_number(names[day - 1]), day);
    }
    EXPECT_EQ(roster_day_name(0), QString());
    EXPECT_EQ(roster_day_name(8), QString());
    EXPECT_EQ(roster_day_number(u"Someday"_s), 0);

    const std::pair<QString, QTime> times[] = {{u"8:00 AM"_s, QTime(8, 0)},
                                               {u"10:00 PM"_s, QTime(22, 0)},
                                               {u"12:00 PM"_s, QTime(12, 0)},
                                               {u"12:30 AM"_s, QTime(0, 30)},
                                               {u"1899-12-30 22:15:00"_s, QTime(22, 15)},
                                               {u"06:05"_s, QTime(6, 5)}};
    for (const auto& [text, time] : times) {
        EXPECT_EQ(read_roster_time(text), time) << text.toStdString();
    }
    EXPECT_FALSE(read_roster_time(u"noon"_s));
    EXPECT_FALSE(read_roster_time(QString()));
    // The grid drops the seconds.
    EXPECT_EQ(roster_time_text(QTime(22, 0, 59)), u"10:00 PM"_s);
    EXPECT_EQ(roster_time_text(QTime(8, 5)), u"8:05 AM"_s);
}

class RosterStoreTest : public testing::DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        db().exec(
            u"INSERT INTO cv_recipients (cv_name, cv_full_name) VALUES ('ann', 'Ann Smith'), ('bob', 'Bob Jones')"_s);
        ASSERT_TRUE(add_group(*state, {u"ops"_s, u"Ops"_s, {}, {}, true}).stored);
    }

    struct StoredSpan
    {
        QString recipient;
        qint64 start_day;
        QString start_time;
        qint64 stop_day;
        QString stop_time;

        bool operator==(const StoredSpan&) const = default;
    };

    QList<StoredSpan> stored(const QString& group)
    {
        store::Statement query = db().prepare(u"SELECT cv_recipient, cv_start_day, cv_start_time, cv_stop_day, "
                                              "cv_stop_time FROM cv_oncalltable WHERE cv_group = ?1 ORDER BY rowid"_s);
        query.bind(1, group);
        QList<StoredSpan> spans;
        while (query.step()) {
            spans.append({query.text(0).value_or(u"<null>"_s), query.integer(1).value_or(-1),
                          query.text(2).value_or(u"<null>"_s), query.integer(3).value_or(-1),
                          query.text(4).value_or(u"<null>"_s)});
        }
        return spans;
    }
};

TEST_F(RosterStoreTest, GridShowsFullNamesDayNamesAndTimesAndRawNamesSurviveApply)
{
    db().exec(u"INSERT INTO cv_oncalltable (cv_group, cv_recipient, cv_start_day, cv_start_time, cv_stop_day, "
              "cv_stop_time) VALUES ('ops', 'ann', 7, '1899-12-30 22:00:00', 1, '1899-12-30 06:00:00'), "
              "('ops', 'gone', 2, '8:00 AM', 2, '10:00 PM'), "
              "('day', 'bob', 3, '1899-12-30 09:00:00', 3, '1899-12-30 17:00:00')"_s);
    const QList<RosterGridRow> expected = {
        {u"ops"_s, u"Ann Smith"_s, u"Saturday"_s, u"10:00 PM"_s, u"Sunday"_s, u"6:00 AM"_s},
        {u"ops"_s, u"gone"_s, u"Monday"_s, u"8:00 AM"_s, u"Monday"_s, u"10:00 PM"_s},
    };
    EXPECT_EQ(load_roster(*state, u"ops"_s), expected);

    // The grid read back and applied unchanged stores the same spans, the raw name included.
    apply_roster(*state, u"ops"_s, expected);
    EXPECT_EQ(stored(u"ops"_s),
              (QList<StoredSpan>{{u"ann"_s, 7, u"1899-12-30 22:00:00"_s, 1, u"1899-12-30 06:00:00"_s},
                                 {u"gone"_s, 2, u"1899-12-30 08:00:00"_s, 2, u"1899-12-30 22:00:00"_s}}));
    EXPECT_EQ(load_roster(*state, u"ops"_s), expected);
    EXPECT_EQ(stored(u"day"_s).size(), 1);
}

TEST_F(RosterStoreTest, ApplyReplacesTheWholeRosterInGridOrder)
{
    apply_group_members(*state, u"ops"_s, {u"Bob Jones"_s, u"Ann Smith"_s}, true);
    db().exec(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('ops', 'ghost')"_s);
    EXPECT_EQ(roster_member_choices(*state, u"ops"_s), (QStringList{u"Bob Jones"_s, u"Ann Smith"_s, u"ghost"_s}));
    EXPECT_TRUE(roster_member_choices(*state, u"none"_s).isEmpty());

    db().exec(u"INSERT INTO cv_oncalltable (cv_group, cv_recipient, cv_start_day) VALUES ('ops', 'old', 1)"_s);
    const QList<RosterGridRow> grid = {
        *new_roster_row(u"ops"_s, u"Bob Jones"_s, u"Monday"_s, QTime(9, 0), u"Friday"_s, QTime(17, 0)),
        *new_roster_row(u"ops"_s, u"Ann Smith"_s, u"Saturday"_s, QTime(22, 0), u"Sunday"_s, QTime(6, 0)),
    };
    EXPECT_FALSE(new_roster_row(u"ops"_s, QString(), u"Sunday"_s, QTime(12, 0), u"Sunday"_s, QTime(12, 0)));
    apply_roster(*state, u"ops"_s, grid);
    EXPECT_EQ(stored(u"ops"_s),
              (QList<StoredSpan>{{u"bob"_s, 2, u"1899-12-30 09:00:00"_s, 6, u"1899-12-30 17:00:00"_s},
                                 {u"ann"_s, 7, u"1899-12-30 22:00:00"_s, 1, u"1899-12-30 06:00:00"_s}}));
    EXPECT_EQ(load_roster(*state, u"ops"_s), grid); // new rows show as stored rows do

    // An empty grid deletes every row of the group and writes none.
    apply_roster(*state, u"ops"_s, {});
    EXPECT_TRUE(stored(u"ops"_s).isEmpty());
}

TEST_F(RosterStoreTest, FailedApplyKeepsTheOldRoster)
{
    const QList<RosterGridRow> old = {
        {u"ops"_s, u"Ann Smith"_s, u"Monday"_s, u"8:00 AM"_s, u"Monday"_s, u"10:00 PM"_s},
    };
    apply_roster(*state, u"ops"_s, old);
    const QList<StoredSpan> before = stored(u"ops"_s);
    ASSERT_EQ(before.size(), 1);

    // The third insert of a replacement fails.
    store::Database::open(global_db_path(*state))
        .exec(u"CREATE TRIGGER refuse_third BEFORE INSERT ON cv_oncalltable "
              "WHEN (SELECT count(*) FROM cv_oncalltable WHERE cv_group = NEW.cv_group) >= 2 "
              "BEGIN SELECT RAISE(ABORT, 'refused'); END"_s);
    QList<RosterGridRow> grid;
    for (const QString& day : {u"Tuesday"_s, u"Wednesday"_s, u"Thursday"_s}) {
        grid.append({u"ops"_s, u"Bob Jones"_s, day, u"9:00 AM"_s, day, u"5:00 PM"_s});
    }
    EXPECT_THROW(apply_roster(*state, u"ops"_s, grid), ProgramHalted);
    ASSERT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_TRUE(env.prompter.boxes.front().text.contains(u"Procedure: frmOnCallSched_btnAccept"_s));
    EXPECT_EQ(stored(u"ops"_s), before);
    EXPECT_FALSE(db().in_transaction());
}

} // namespace

} // namespace cvd::addressbook
