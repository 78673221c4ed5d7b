#include "desk/log_search.h"
#include "support/printers.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::desk {
namespace {

TEST(LogSearch, StartsAfterTheMarkOrAtTheEndThatFacesTheSearch)
{
    struct Case
    {
        std::optional<qint64> marked;
        qint64 rows;
        FindDirection direction;
        std::optional<qint64> start;
    };
    const Case cases[] = {
        {std::nullopt, 5, FindDirection::Next, 0},
        {std::nullopt, 5, FindDirection::Prev, 4},
        {2, 5, FindDirection::Next, 3},
        {2, 5, FindDirection::Prev, 1},
        {4, 5, FindDirection::Next, std::nullopt},
        {0, 5, FindDirection::Prev, std::nullopt},
        {std::nullopt, 0, FindDirection::Next, std::nullopt},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(find_start(c.marked, c.rows, c.direction), c.start) << c.rows;
    }
}

TEST(LogSearch, FindsTheNearestLineInItsDirectionWithoutRegardToCase)
{
    const QStringList lines{u"Dial 555"_s, u"CONNECT"_s, u"hang up"_s, u"connect again"_s};
    EXPECT_EQ(find_in_lines(lines, u"connect"_s, 0, FindDirection::Next), 1);
    EXPECT_EQ(find_in_lines(lines, u"Connect"_s, 2, FindDirection::Next), 3);
    EXPECT_EQ(find_in_lines(lines, u"connect"_s, 2, FindDirection::Prev), 1);
    EXPECT_EQ(find_in_lines(lines, u"dial"_s, 1, FindDirection::Next), std::nullopt);
    EXPECT_TRUE(row_matches(u"42\t11/20/26\tCall ME"_s, u"call me"_s));
}

} // namespace
} // namespace cvd::desk
