#include "addressbook/carrier_rules.h"
#include "support/printers.h"

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace cvd::addressbook {

namespace {

TEST(CarrierRules, BoxesCorrectTheirTextWhenLeft)
{
    const QString forty_one = QString(41, u'n');
    const QString eighty_one = QString(81, u'x');
    const QString thirty_six = QString(36, u',');
    // Per box, pairs of the text typed and the text shown after leaving the box.
    const std::pair<BoxRule, QStringList> cases[] = {
        // Only blanks are trimmed.
        {BoxRule::Name, {u"  Pager-1  "_s, u"Pager-1"_s, forty_one, forty_one.left(40), u"\tTab"_s, u"\tTab"_s}},
        // Priority compares by the leading number, so it never fails.
        {BoxRule::Priority,
         {u"0"_s, u"1"_s, u"30001"_s, u"30000"_s, u" 250 "_s, u"250"_s, u"abc"_s, u"1"_s, u""_s, u"1"_s, u"-5"_s,
          u"1"_s, u"0.5"_s, u"1"_s, u"12abc"_s, u"12abc"_s, u"30000"_s, u"30000"_s}},
        // Strict boxes: an empty or unreadable text takes the lower limit instead of failing.
        {BoxRule::MaxChars,
         {u""_s, u"1"_s, u"abc"_s, u"1"_s, u"12abc"_s, u"1"_s, u"0"_s, u"1"_s, u"6001"_s, u"6000"_s, u"1e9"_s,
          u"6000"_s, u"1e999"_s, u"6000"_s, u" 42 "_s, u"42"_s, u"6000"_s, u"6000"_s}},
        {BoxRule::MsgLimit, {u""_s, u"0"_s, u"x"_s, u"0"_s, u"-1"_s, u"0"_s, u"256"_s, u"255"_s, u"0"_s, u"0"_s}},
        {BoxRule::Baud, {u"0"_s, u"1"_s, u"230401"_s, u"230400"_s, u"9600 baud"_s, u"1"_s, u"115200"_s, u"115200"_s}},
        {BoxRule::NumericPort, {u"0"_s, u"1"_s, u"70000"_s, u"65535"_s, u"http"_s, u"1"_s, u"443"_s, u"443"_s}},
        {BoxRule::SmtpPort, {u"  587 STARTTLS "_s, u"587 STARTTLS"_s}},
        {BoxRule::InitString, {u" AT&F "_s, u"AT&F"_s, eighty_one, eighty_one.left(80)}},
        {BoxRule::Text, {u" host.example.org "_s, u"host.example.org"_s, u" "_s + eighty_one, eighty_one.left(80)}},
        {BoxRule::WaitString, {thirty_six, thirty_six.left(35), u" ,,@ "_s, u",,@"_s}},
    };
    for (const auto& [rule, texts] : cases) {
        ASSERT_EQ(texts.size() % 2, 0);
        for (qsizetype i = 0; i < texts.size(); i += 2) {
            EXPECT_EQ(on_leaving(rule, texts[i]), texts[i + 1])
                << "rule " << static_cast<int>(rule) << " typed '" << texts[i].toStdString() << "'";
        }
    }
}

TEST(CarrierRules, CutsNeverSplitACharacter)
{
    // 39 letters and a character outside the basic plane: 40 characters, 41 UTF-16 units.
    const QString name = QString(39, u'a') + QString::fromUtf8("\xF0\x9F\x93\x9F") + u"b"_s;
    const QString cut = on_leaving(BoxRule::Name, name);
    EXPECT_EQ(cut, name.left(41));
    EXPECT_TRUE(cut.back().isLowSurrogate());
}

TEST(CarrierRules, NumberBoxesStandForWholeNumbersWithinTheirLimits)
{
    struct Case
    {
        BoxRule rule;
        QString text;
        qint32 number;
    };
    const Case cases[] = {
        {BoxRule::Priority, u"12abc"_s, 12},  {BoxRule::Priority, u"2.5"_s, 2},       {BoxRule::Priority, u"3.5"_s, 4},
        {BoxRule::Priority, u"&H1F"_s, 31},   {BoxRule::Priority, u"99999"_s, 30000}, {BoxRule::Priority, u""_s, 1},
        {BoxRule::MaxChars, u"160"_s, 160},   {BoxRule::MaxChars, u"6000.5"_s, 6000}, {BoxRule::MaxChars, u"x"_s, 1},
        {BoxRule::MsgLimit, u""_s, 0},        {BoxRule::MsgLimit, u"300"_s, 255},     {BoxRule::Baud, u"1.2e3"_s, 1200},
        {BoxRule::NumericPort, u"+80"_s, 80},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(box_number(c.rule, c.text), c.number)
            << "rule " << static_cast<int>(c.rule) << " text '" << c.text.toStdString() << "'";
    }
}

TEST(CarrierRules, LeadingAndStrictReadingsOfANumber)
{
    const std::pair<const char*, double> leading[] = {
        {"  12abc", 12}, {"1 2", 12}, {"-3.5e1x", -35}, {"&H1F", 31}, {"&o17", 15},
        {"abc", 0},      {"", 0},     {"1e", 1},        {".5", 0.5},  {"+7-", 7},
    };
    for (const auto& [text, value] : leading) {
        EXPECT_DOUBLE_EQ(leading_number(QString::fromUtf8(text)), value) << text;
    }

    const std::pair<const char*, double> strict[] = {{" 42 ", 42.0}, {"-7", -7.0},    {"1.5", 1.5},
                                                     {".5", 0.5},    {"1e3", 1000.0}, {"12.", 12.0}};
    for (const auto& [text, value] : strict) {
        EXPECT_EQ(strict_number(QString::fromUtf8(text)), value) << text;
    }
    for (const char* text : {"", "1 2", "12a", "&H10", "1,000", "inf"}) {
        EXPECT_EQ(strict_number(QString::fromUtf8(text)), std::nullopt) << text;
    }
    EXPECT_GT(*strict_number(u"1e999"_s), 1e300);
    EXPECT_LT(*strict_number(u"-1e999"_s), -1e300);
}

TEST(CarrierRules, SmtpCredentialsMoveAuthFromNoneToStandard)
{
    EXPECT_EQ(smtp_auth_on_leaving_credentials(AuthType::None, u"ops"_s), AuthType::Standard);
    EXPECT_EQ(smtp_auth_on_leaving_credentials(AuthType::None, u""_s), AuthType::None);
    EXPECT_EQ(smtp_auth_on_leaving_credentials(AuthType::ForceLogin, u"ops"_s), AuthType::ForceLogin);
    EXPECT_EQ(smtp_auth_on_leaving_credentials(AuthType::SenderOverride, u""_s), AuthType::SenderOverride);
}

TEST(CarrierRules, ApplyRefusesNamesInOrder)
{
    const Notice empty{u"A carrier name must be entered"_s, u"Invalid Entry"_s};
    const Notice illegal{u"Illegal Character in the Carrier Name"_s, u"BAD CARRIER"_s};
    const Notice duplicate{u"A carrier with that name already exists"_s, u"Duplicate Carrier"_s};

    struct Case
    {
        QString name;
        bool is_edit;
        bool exists;
        std::optional<Notice> refusal;
        bool asks_store;
    };
    const Case cases[] = {
        {u""_s, false, true, empty, false},
        {u"two words"_s, false, true, illegal, false}, // an illegal name is refused before the store is asked
        {u" lead"_s, false, false, illegal, false},
        {u"a/b"_s, false, false, illegal, false},
        {u"caf\u00e9"_s, false, false, illegal, false},
        {u"semi;colon"_s, false, false, illegal, false},
        {u"Pager-1.main_2"_s, false, false, std::nullopt, true},
        {u"Pager-1.main_2"_s, false, true, duplicate, true},
        {u"Pager-1.main_2"_s, true, true, std::nullopt, false}, // editing finds its own row
        {u""_s, true, true, empty, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name.toStdString() + (c.is_edit ? " (edit)" : " (add)"));
        bool asked = false;
        const auto exists = [&](const QString& name) {
            asked = true;
            EXPECT_EQ(name, c.name);
            return c.exists;
        };
        EXPECT_EQ(refuse_carrier_name(c.name, c.is_edit, exists), c.refusal);
        EXPECT_EQ(asked, c.asks_store);
    }

    EXPECT_EQ(apply_done_notice(true), (Notice{u"Carrier record updated"_s, u"Carrier Updated"_s}));
    EXPECT_EQ(apply_done_notice(false), (Notice{u"Carrier record added"_s, u"Carrier Added"_s}));
}

TEST(CarrierRules, CaptionsFollowModeAndFrame)
{
    EXPECT_EQ(carrier_dialog_caption(false, false), u"Add Carrier"_s);
    EXPECT_EQ(carrier_dialog_caption(false, true), u"Add Carrier - Advanced"_s);
    EXPECT_EQ(carrier_dialog_caption(true, false), u"Edit Carrier"_s);
    EXPECT_EQ(carrier_dialog_caption(true, true), u"Edit Carrier - Advanced"_s);
    EXPECT_EQ(carrier_list_captions(true), (CarrierListCaptions{u"Edit Carrier"_s, u"&Edit"_s}));
    EXPECT_EQ(carrier_list_captions(false), (CarrierListCaptions{u"Delete Carrier"_s, u"&Delete"_s}));
}

TEST(CarrierRules, NameCharactersAreDigitsAsciiLettersDotDashUnderscore)
{
    QString allowed;
    for (char16_t code = 0; code < 0x250; ++code) {
        if (is_carrier_name_character(QChar(code))) {
            allowed.append(QChar(code));
        }
    }
    EXPECT_EQ(allowed, u"-.0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz"_s);
}

} // namespace
} // namespace cvd::addressbook
