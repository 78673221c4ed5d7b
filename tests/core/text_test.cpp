#include "core/text.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd {
namespace {

TEST(NormalizeId, KeepsLettersDigitsDashUnderscoreAndSqueezesRuns)
{
    const std::pair<QString, QString> cases[] = {
        {u"Smith, John"_s, u"smith_john"_s},
        {u"Dr. Jane  Doe (ICU)"_s, u"dr_jane_doe_icu"_s},
        {u"ops--team"_s, u"ops-team"_s},
        {u"a___b"_s, u"a_b"_s},
        {u"Über*Straße!"_s, u"berstrae"_s},
        {u"night-shift_2"_s, u"night-shift_2"_s},
        {QString(), QString()},
    };
    for (const auto& [input, expected] : cases) {
        EXPECT_EQ(normalize_id(input), expected) << input.toStdString();
    }
}

TEST(PadOrCut, PadsOnTheLeftAndCutsOnTheRight)
{
    EXPECT_EQ(pad_or_cut(u"42"_s, 5), u"   42"_s);
    EXPECT_EQ(pad_or_cut(u"abcdef"_s, 3), u"abc"_s);
    EXPECT_EQ(pad_or_cut(u"abc"_s, 3), u"abc"_s);
    EXPECT_EQ(pad_or_cut(u"abc"_s, 0), QString());
}

TEST(LeftRightOf, FirstOrLastSeparatorAndTheFallback)
{
    EXPECT_EQ(left_of(u"a|b|c"_s, u"|"_s, false, u"x"_s), u"a"_s);
    EXPECT_EQ(left_of(u"a|b|c"_s, u"|"_s, true, u"x"_s), u"a|b"_s);
    EXPECT_EQ(right_of(u"a|b|c"_s, u"|"_s, false, u"x"_s), u"b|c"_s);
    EXPECT_EQ(right_of(u"a|b|c"_s, u"|"_s, true, u"x"_s), u"c"_s);
    EXPECT_EQ(right_of(u"abc"_s, u"|"_s, false, u"none"_s), u"none"_s);
    EXPECT_EQ(left_of(u"key=>value"_s, u"=>"_s, false, {}), u"key"_s);
    EXPECT_EQ(right_of(u"key=>value"_s, u"=>"_s, false, {}), u"value"_s);
}

TEST(NumericPrefix, ReadsTheLeadingNumberLenientlyAndToInt32RoundsHalfToEvenAndClamps)
{
    const std::pair<QString, double> cases[] = {
        {u"15"_s, 15},     {u"  42abc"_s, 42}, {u"abc"_s, 0},     {QString(), 0},  {u"-7 days"_s, -7},
        {u"1 2 3"_s, 123}, {u"3.5x"_s, 3.5},   {u"&H1F"_s, 31},   {u"&O17"_s, 15}, {u"2e3"_s, 2000},
        {u"12e"_s, 12},    {u"+8"_s, 8},       {u"1.2.3"_s, 1.2}, {u"--5"_s, 0},   {u"0.0.0.0"_s, 0},
    };
    for (const auto& [input, expected] : cases) {
        EXPECT_DOUBLE_EQ(numeric_prefix(input), expected) << input.toStdString();
    }
    // What becomes of the number then: rounded half to even and clamped.
    EXPECT_EQ(to_int32(2.5), 2);
    EXPECT_EQ(to_int32(3.5), 4);
    EXPECT_EQ(to_int32(-1.5), -2);
    EXPECT_EQ(to_int32(1e12), 2147483647);
    EXPECT_EQ(to_int32(-1e12), -2147483647 - 1);
}

TEST(UnescapeSettingText, TurnsBackslashAndThreeCharactersIntoOneCharacter)
{
    const QString nul(QChar(u'\0'));
    const std::pair<QString, QString> cases[] = {
        {u"a\\065b"_s, u"aAb"_s},
        {u"\\072\\105"_s, u"Hi"_s},
        // Three non-digits give code 0, so a path with a backslash in the middle is altered.
        {u"c:\\tmp\\x"_s, u"c:"_s + nul + u"\\x"_s},
        // A backslash among the last three characters stays.
        {u"end\\12"_s, u"end\\12"_s},
        {u"end\\"_s, u"end\\"_s},
        // The search goes on behind the replacement: the new character is not read again.
        {u"\\092065"_s, u"\\065"_s},
        {u"plain"_s, u"plain"_s},
    };
    for (const auto& [stored, expected] : cases) {
        EXPECT_EQ(unescape_setting_text(stored), expected) << stored.toStdString();
    }
}

} // namespace
} // namespace cvd
