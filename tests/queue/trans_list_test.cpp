#include "queue/trans_list.h"

#include <gtest/gtest.h>
#include <ostream>

using namespace Qt::StringLiterals;

namespace cvd::queue {

// Readable failure messages.
void PrintTo(const TransList::Entry& entry, std::ostream* out)
{
    *out << "{" << entry.transaction << ", \"" << entry.name.toStdString() << "\", " << entry.age << "}";
}

namespace {

using Entry = TransList::Entry;

TEST(TransList, RemembersEachPairOnceWithExactNames)
{
    const struct
    {
        qint32 transaction;
        QString name;
        bool seen;
    } calls[] = {
        {7, u"bob"_s, false},      {7, u"bob"_s, true},  // the same pair again
        {7, u"alice"_s, false},                          // same transaction, another recipient
        {7, u"alice"_s, true},     {7, u"bob"_s, true},  // still found, further down the same run
        {7, u"Bob"_s, false},                            // names compare with case
        {7, u"bob "_s, false},                           // and untrimmed
        {7, u"555 1234"_s, false},                       // an ad hoc pin goes in as a name
        {7, u"555 1234"_s, true},  {8, u"bob"_s, false}, // same recipient, another transaction
        {70, u"bob"_s, false},                           // a transaction is matched whole, not by its leading digits
        {-7, u"bob"_s, false},
    };
    TransList list;
    for (const auto& call : calls) {
        EXPECT_EQ(list.find_trans(call.transaction, call.name), call.seen)
            << call.transaction << " " << call.name.toStdString();
    }
    const std::vector<Entry> expected = {
        {7, u"bob"_s, 0},      {7, u"alice"_s, 0}, {7, u"Bob"_s, 0},  {7, u"bob "_s, 0},
        {7, u"555 1234"_s, 0}, {8, u"bob"_s, 0},   {70, u"bob"_s, 0}, {-7, u"bob"_s, 0},
    };
    EXPECT_EQ(list.entries(), expected);
}

TEST(TransList, LooksOnlyAtTheRunBeginningWithTheFirstEntryOfTheTransaction)
{
    TransList list;
    list.add(1, u"a"_s);
    list.add(1, u"b"_s);
    list.add(2, u"x"_s);
    list.add(1, u"c"_s);

    EXPECT_TRUE(list.find_trans(1, u"b"_s)); // inside the first run
    EXPECT_TRUE(list.find_trans(2, u"x"_s));

    // Behind the entry of transaction 2, so not seen: it is written once more and reported as new.
    EXPECT_FALSE(list.find_trans(1, u"c"_s));
    EXPECT_EQ(list.size(), 5U);
    EXPECT_EQ(list.entries().back(), (Entry{1, u"c"_s, 0}));
    EXPECT_FALSE(list.find_trans(1, u"c"_s));
    EXPECT_EQ(list.size(), 6U);

    // A run that starts later than the first entry is still walked from its first entry.
    EXPECT_TRUE(list.find_trans(2, u"x"_s));
    list.add(2, u"y"_s);
    EXPECT_FALSE(list.find_trans(2, u"y"_s)); // behind 1 "c"
}

TEST(TransList, AgesEveryEntryAndForgetsOnlyTheTooOldKeepingTheOrder)
{
    TransList list;
    list.add(1, u"first"_s);
    list.inc_trans_life();
    list.add(2, u"second"_s);
    list.add(1, u"third"_s);
    list.inc_trans_life();
    list.inc_trans_life();
    list.add(3, u"fourth"_s);
    EXPECT_EQ(list.entries(),
              (std::vector<Entry>{{1, u"first"_s, 3}, {2, u"second"_s, 2}, {1, u"third"_s, 2}, {3, u"fourth"_s, 0}}));

    list.inc_trans_life(); // "first" is four ticks old
    EXPECT_EQ(list.entries(), (std::vector<Entry>{{2, u"second"_s, 3}, {1, u"third"_s, 3}, {3, u"fourth"_s, 1}}));

    // Without "first" ahead of it, "third" now heads the run of transaction 1.
    EXPECT_TRUE(list.find_trans(1, u"third"_s));

    list.inc_trans_life();
    EXPECT_EQ(list.entries(), (std::vector<Entry>{{3, u"fourth"_s, 2}}));

    // Once forgotten, a pair may be delivered again.
    EXPECT_FALSE(list.find_trans(1, u"third"_s));
    EXPECT_TRUE(list.find_trans(1, u"third"_s));
}

} // namespace
} // namespace cvd::queue
