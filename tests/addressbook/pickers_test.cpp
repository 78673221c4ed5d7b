#include "addressbook/pickers.h"
#include "addressbook/recipients_store.h"
#include "support/database_test.h"

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace cvd::addressbook {

namespace {

TEST(PickerLabels, MarksGoOnTheSideTheSettingChooses)
{
    struct Case
    {
        QString name;
        QString full_name;
        bool group;
        bool ad_hoc;
        bool after;
        QString label;
    };
    const Case cases[] = {
        {u"ann"_s, u"  Ann Lee "_s, false, false, true, u"Ann Lee"_s},
        {u"ann"_s, u"   "_s, false, false, false, u"ann"_s},
        {u"ops"_s, u"Operations"_s, true, false, true, u"Operations (G)"_s},
        {u"ops"_s, u"Operations"_s, true, false, false, u"(G) Operations"_s},
        {u"fx"_s, u"Fax Anyone"_s, false, true, true, u"Fax Anyone (A)"_s},
        {u"fx"_s, u"Fax Anyone"_s, false, true, false, u"(A) Fax Anyone"_s},
        {u"fx"_s, QString(), false, true, false, u"(A) fx"_s},
        // A group is never tested for ad hoc.
        {u"odd"_s, u"Odd"_s, true, true, true, u"Odd (G)"_s},
        {u"odd"_s, u"Odd"_s, true, true, false, u"(G) Odd"_s},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(recipient_label(c.name, c.full_name, c.group, c.ad_hoc, c.after), c.label) << c.label.toStdString();
    }
    EXPECT_EQ(without_ad_hoc_mark(u"Fax (A)"_s, true), u"Fax"_s);
    EXPECT_EQ(without_ad_hoc_mark(u"(A) Fax"_s, false), u"Fax"_s);
    EXPECT_EQ(without_ad_hoc_mark(u"(A) Fax"_s, true), u"(A) Fax"_s);
    EXPECT_EQ(without_ad_hoc_mark(u"Fax (A)"_s, false), u"Fax (A)"_s);
}

TEST(PickerFilterCondition, BoxesBecomeBoundLikePatterns)
{
    EXPECT_EQ(filter_condition({}), (FilterCondition{u"true"_s, {}}));
    EXPECT_EQ(filter_condition({u"  "_s, QString(), u" "_s, QString()}), (FilterCondition{u"true"_s, {}}));

    const FilterCondition all = filter_condition({u" Ann "_s, u"a*n"_s, u"x?y"_s, u"50%_\\"_s});
    EXPECT_EQ(all.sql, u"true AND cv_full_name LIKE ?1 ESCAPE '\\' AND cv_name LIKE ?2 ESCAPE '\\' "
                       "AND cv_extra1 LIKE ?3 ESCAPE '\\' AND cv_extra2 LIKE ?4 ESCAPE '\\'"_s);
    EXPECT_EQ(all.values, (QStringList{u"%Ann%"_s, u"%a%n%"_s, u"%x_y%"_s, u"%50\\%\\_\\\\%"_s}));

    // Numbering follows the boxes that take part, so a skipped box leaves no gap.
    const FilterCondition two = filter_condition({QString(), u"o'b"_s, QString(), u"z"_s});
    EXPECT_EQ(two.sql, u"true AND cv_name LIKE ?1 ESCAPE '\\' AND cv_extra2 LIKE ?2 ESCAPE '\\'"_s);
    EXPECT_EQ(two.values, (QStringList{u"%o'b%"_s, u"%z%"_s}));
}

TEST(AdHocPin, ApplyCutsTo40AndAnEmptyPinPicksNothing)
{
    const std::pair<QString, QString> cases[] = {
        {QString(), QString()},
        {u"5551234"_s, u"5551234"_s},
        {u" 55 51 ab "_s, u" 55 51 ab "_s}, // blanks and letters stay as typed
        {QString(40, u'7'), QString(40, u'7')},
        {QString(41, u'7'), QString(40, u'7')},
        {QString(40, u'1') + u"23456"_s, QString(40, u'1')},
    };
    for (const auto& [box, pin] : cases) {
        EXPECT_EQ(adhoc_pin_on_apply(box), pin) << box.toStdString();
    }

    const PickerEntry adhoc{u"(A) Fax"_s, u"fx"_s, u"100"_s};
    EXPECT_EQ(adhoc_picked_entry(adhoc, QString()), std::nullopt);
    EXPECT_EQ(adhoc_picked_entry(adhoc, adhoc_pin_on_apply(u"12 34"_s)),
              (PickerEntry{u"(A) Fax | 12 34"_s, u"(A) fx"_s, QString()}));
    EXPECT_EQ(adhoc_picked_entry({u"Fax (A)"_s, QString(50, u'k'), QString()}, u"9"_s),
              (PickerEntry{u"Fax (A) | 9"_s, u"(A) "_s + QString(41, u'k'), QString()}));
}

class PickerStoreTest : public testing::DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_priority, cv_group, cv_ad_hoc, cv_extra1, "
                  "cv_carrier) VALUES ('zed', 'Zed Ward', 5, 0, 0, 'night', 'net'), "
                  "('ops', 'Operations', 100, -1, 0, '', ''), ('fx', 'fax anyone', 30000, 0, -1, '', 'net'), "
                  "('bob', '   ', 7, 0, 0, '50% off_site', 'net'), ('ann', 'Ann Leeds', 1, 0, 0, 'Day', 'net'), "
                  "('ann2', 'ann leeds', 2, 0, 0, '', 'net')"_s);
    }

    QStringList keys(const PickerFilter& filter)
    {
        QStringList found;
        for (const PickerEntry& entry : filter_recipients(*state, filter, true)) {
            found.append(entry.key);
        }
        return found;
    }
};

TEST_F(PickerStoreTest, EveryRowIsListedInTheListsOrder)
{
    const QList<PickerEntry> after = picker_entries(*state, true);
    const QList<PickerEntry> expected_after{
        {u"Ann Leeds"_s, u"ann"_s, u"1"_s},
        {u"ann leeds"_s, u"ann2"_s, u"2"_s},
        {u"bob"_s, u"bob"_s, u"7"_s},
        {u"fax anyone (A)"_s, u"fx"_s, u"30000"_s},
        {u"Operations (G)"_s, u"ops"_s, u"100"_s},
        {u"Zed Ward"_s, u"zed"_s, u"5"_s},
    };
    EXPECT_EQ(after, expected_after);

    // With the marks in front, marked entries gather at the top, groups before ad hoc ones.
    QStringList labels;
    for (const PickerEntry& entry : picker_entries(*state, false)) {
        labels.append(entry.label);
    }
    EXPECT_EQ(labels, (QStringList{u"(A) fax anyone"_s, u"(G) Operations"_s, u"Ann Leeds"_s, u"ann leeds"_s, u"bob"_s,
                                   u"Zed Ward"_s}));
}

TEST_F(PickerStoreTest, FilterFindsMarkedEntriesByTextAnywhereWithoutRegardToCase)
{
    EXPECT_EQ(keys({}), (QStringList{u"ann"_s, u"ann2"_s, u"bob"_s, u"fx"_s, u"ops"_s, u"zed"_s}));
    EXPECT_EQ(keys({u"EED"_s, {}, {}, {}}), (QStringList{u"ann"_s, u"ann2"_s})); // in the middle, any case
    EXPECT_EQ(keys({u"a*n"_s, {}, {}, {}}), (QStringList{u"ann"_s, u"ann2"_s, u"fx"_s, u"ops"_s}));
    EXPECT_EQ(keys({{}, u"a?n"_s, {}, {}}), (QStringList{u"ann"_s, u"ann2"_s}));
    EXPECT_EQ(keys({{}, u"b?b"_s, {}, {}}), (QStringList{u"bob"_s}));
    EXPECT_EQ(keys({{}, u"o?s"_s, {}, {}}), (QStringList{u"ops"_s}));
    EXPECT_EQ(keys({u"leeds"_s, u"2"_s, {}, {}}), (QStringList{u"ann2"_s})); // boxes combine with AND
    EXPECT_EQ(keys({{}, {}, u"DAY"_s, {}}), (QStringList{u"ann"_s}));

    // A typed % or _ stands for itself, not for a wildcard.
    EXPECT_EQ(keys({{}, {}, u"50%"_s, {}}), (QStringList{u"bob"_s}));
    EXPECT_EQ(keys({{}, {}, u"f_s"_s, {}}), (QStringList{u"bob"_s}));
    EXPECT_EQ(keys({{}, {}, u"n%t"_s, {}}), QStringList());
    EXPECT_EQ(keys({{}, u"a_n"_s, {}, {}}), QStringList());
    EXPECT_EQ(keys({u"%"_s, {}, {}, {}}), QStringList());
    // A quote is data, never SQL: it finds nothing and breaks nothing.
    EXPECT_EQ(keys({u"'"_s, {}, {}, {}}), QStringList());
    EXPECT_EQ(keys({u"' or '1'='1"_s, {}, {}, {}}), QStringList());
    EXPECT_EQ(keys({u"\\"_s, {}, {}, {}}), QStringList());

    // The entries found carry the marks, but no priority.
    const QList<PickerEntry> found = filter_recipients(*state, {u"o"_s, {}, {}, {}}, false);
    EXPECT_EQ(found, (QList<PickerEntry>{{u"(A) fax anyone"_s, u"fx"_s, QString()},
                                         {u"(G) Operations"_s, u"ops"_s, QString()}}));
}

} // namespace

} // namespace cvd::addressbook
