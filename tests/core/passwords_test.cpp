#include "core/app_state.h"
#include "core/databases.h"
#include "core/passwords.h"
#include "core/setting_keys.h"
#include "support/database_test.h"
#include "support/test_environment.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd {
namespace {

TEST(PasswordEncoding, OneCharacterIsThreeDigitsOfItsMirroredCodeAndEveryPrintableOneRoundTrips)
{
    // 'a' is 97 = 01100001; mirrored 10000110 = 134.
    EXPECT_EQ(encode_password(u"a"_s), u"134"_s);
    // 'A' is 65 = 01000001; mirrored 10000010 = 130. The text is reversed before encoding.
    EXPECT_EQ(encode_password(u"aA"_s), u"130134"_s);
    EXPECT_EQ(decode_password(u"134"_s), u"a"_s);
    EXPECT_EQ(encode_password(QString()), QString());
    EXPECT_EQ(decode_password(QString()), QString());
    EXPECT_EQ(tobinary(255, 8), u"11111111"_s);
    EXPECT_EQ(todecimal(u"10000110"_s), 134);
    EXPECT_EQ(reverse_text(u"abc"_s), u"cba"_s);

    // Every printable character and passwords of the longest length come back.
    QString all;
    for (char16_t code = 32; code <= 126; ++code) {
        const QString one(QChar{code});
        ASSERT_EQ(decode_password(encode_password(one)), one) << static_cast<int>(code);
        all.append(QChar{code});
    }
    for (qsizetype start = 0; start + kPasswordMaxLength <= all.size(); start += 7) {
        const QString twenty = all.mid(start, kPasswordMaxLength);
        const QString stored = encode_password(twenty);
        EXPECT_EQ(stored.size(), 60);
        EXPECT_EQ(decode_password(stored), twenty);
    }
}

struct LevelCase
{
    const char* admin;
    const char* super;
    const char* user;
    int mode;
    bool asks;
};

// Which combination of set passwords makes a guarded action ask.
TEST(CheckLevel, AsksOnlyWhereALevelIsReallyGuarded)
{
    const LevelCase cases[] = {
        {"", "", "", 0, false},  {"", "", "", 1, false},   {"", "", "u", 0, false},
        {"", "", "u", 1, false},                          // a user password alone guards the start only
        {"", "s", "", 0, false}, {"", "s", "", 1, false}, // super guards nothing while admin is empty
        {"a", "s", "", 0, true}, {"a", "s", "", 1, true},  {"a", "", "", 0, false},
        {"a", "", "", 1, true},  {"a", "", "u", 0, false}, {"a", "s", "u", 0, true},
    };
    for (const LevelCase& c : cases) {
        testing::TestEnvironment env;
        auto state = env.make_state();
        state->admin_password = QString::fromLatin1(c.admin);
        state->super_password = QString::fromLatin1(c.super);
        state->user_password = QString::fromLatin1(c.user);
        const bool passed = check_level(*state, c.mode, u"Enter the password"_s);
        const bool asked = !env.prompter.password_prompts.isEmpty();
        EXPECT_EQ(asked, c.asks) << c.admin << "/" << c.super << "/" << c.user << " mode " << c.mode;
        EXPECT_EQ(passed, !c.asks); // the script cancels every prompt
    }
}

TEST(CheckLevel, TheRightEntryIsKeptAndOpensLaterActions)
{
    const QString kPrompt = u"Enter the maintenance password"_s;
    testing::TestEnvironment env;
    auto state = env.make_state();
    state->admin_password = u"boss"_s;
    state->super_password = u"chief"_s;

    // The super password passes maintenance, not setup.
    env.prompter.enter_next(u"chief"_s);
    EXPECT_TRUE(check_level(*state, 0, kPrompt));
    EXPECT_TRUE(check_level(*state, 0, kPrompt)); // kept: no second prompt
    EXPECT_EQ(env.prompter.password_prompts.size(), 1);
    env.prompter.enter_next(u"chief"_s);
    EXPECT_FALSE(check_level(*state, 1, kPrompt));

    // The admin password at a maintenance prompt also opens setup without a second prompt.
    state->entered_password.clear();
    env.prompter.enter_next(u"boss"_s);
    EXPECT_TRUE(check_level(*state, 0, kPrompt));
    const qsizetype prompts = env.prompter.password_prompts.size();
    EXPECT_EQ(prompts, 3);
    EXPECT_TRUE(check_level(*state, 1, kPrompt));
    EXPECT_TRUE(check_level(*state, 0, kPrompt));
    EXPECT_EQ(env.prompter.password_prompts.size(), prompts);

    // A cancel empties the entry, so the next guarded action asks again.
    state->entered_password = u"wrong"_s;
    env.prompter.enter_next(std::nullopt);
    EXPECT_FALSE(check_level(*state, 0, kPrompt));
    EXPECT_TRUE(state->entered_password.isEmpty());
    EXPECT_EQ(env.prompter.password_prompts.back(), kPrompt); // asked with the caller's words
}

TEST(StartGate, AsksOnlyWithAUserPasswordThreeRoundsAtMostAndACancelEndsAtOnce)
{
    struct GateCase
    {
        QList<std::optional<QString>> entries;
        bool opens;
        int prompts;
    };
    const GateCase cases[] = {
        {{u"x"_s, u"y"_s, u"open"_s}, true, 3},
        {{u"x"_s, u"y"_s, u"z"_s, u"open"_s}, false, 3},
        {{std::nullopt, u"open"_s}, false, 1},
        {{u"boss"_s}, true, 1},  // the admin password opens the gate too
        {{u"chief"_s}, true, 1}, // and so does the super password
        {{}, true, 0},           // without a user password there is no gate
    };
    for (const GateCase& c : cases) {
        testing::TestEnvironment env;
        auto state = env.make_state();
        state->user_password = c.entries.isEmpty() ? QString() : u"open"_s;
        state->admin_password = u"boss"_s;
        state->super_password = u"chief"_s;
        for (const auto& entry : c.entries) {
            env.prompter.enter_next(entry);
        }
        EXPECT_EQ(pass_start_gate(*state), c.opens);
        EXPECT_EQ(env.prompter.password_prompts.size(), c.prompts);
        EXPECT_EQ(env.prompter.password_prompts.value(0, u"A Password is required to start Corvane Desk"_s),
                  u"A Password is required to start Corvane Desk"_s);
    }
}

class PasswordSetup : public testing::DatabaseTest
{
protected:
    PasswordSetup() : DatabaseTest(Start::LoadSettings) {}
};

// Apply refuses in a fixed order: the pairs from admin down, then the length; a refusal stores nothing.
TEST_F(PasswordSetup, ApplyRefusesInOrderAndOtherwiseStoresTheEncodedPasswords)
{
    const QString long21(21, u'x');
    struct Refusal
    {
        PasswordSetupEntries entries;
        QString title;
        QString text;
    };
    const Refusal refusals[] = {
        {{u"a"_s, u"b"_s, u"c"_s, u"d"_s, long21, u"f"_s},
         u"Password Mismatch"_s,
         u"The two Admin passwords you entered don't match.  Please re-enter"_s},
        {{u"a"_s, u" a "_s, u"c"_s, u"d"_s, long21, u"f"_s},
         u"Password Mismatch"_s,
         u"The two Super User passwords you entered don't match.  Please re-enter"_s},
        {{u"a"_s, u"a"_s, u"c"_s, u"c"_s, long21, u"f"_s},
         u"Password Mismatch"_s,
         u"The two User passwords you entered don't match.  Please re-enter"_s},
        {{u"a"_s, u"a"_s, u"c"_s, u"c"_s, long21, long21},
         u"Invalid Password"_s,
         u"Passwords can only be a maximum of 20 characters long."_s},
    };
    for (const Refusal& refusal : refusals) {
        const std::optional<Notice> box = apply_password_setup(*state, refusal.entries);
        ASSERT_TRUE(box.has_value());
        EXPECT_EQ(box->title, refusal.title);
        EXPECT_EQ(box->text, refusal.text);
    }
    EXPECT_TRUE(state->admin_password.isEmpty());
    EXPECT_TRUE(state->settings.get_setting_text(setting_keys::security::admin_password).isEmpty());

    // Trimmed, kept in clear in memory, encoded in the saved settings.
    const PasswordSetupEntries entries{u" boss"_s, u"boss "_s, {}, {}, u"aA"_s, u"aA"_s};
    EXPECT_FALSE(apply_password_setup(*state, entries).has_value());
    EXPECT_EQ(state->admin_password, u"boss"_s);
    EXPECT_EQ(state->user_password, u"aA"_s);
    SettingsStore saved;
    saved.load_global(state->global_db);
    EXPECT_EQ(saved.get_setting_text(setting_keys::security::admin_password), encode_password(u"boss"_s));
    EXPECT_EQ(saved.get_setting_text(setting_keys::security::super_password), QString());
    EXPECT_EQ(saved.get_setting_text(setting_keys::security::user_password), u"130134"_s);
}

} // namespace
} // namespace cvd
