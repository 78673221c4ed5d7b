// What the setup dialogs correct when a box is left and what each Apply stores, in which order.
#include "addressbook/presets.h"
#include "core/databases.h"
#include "desk/setup_rules.h"
#include "store/database.h"
#include "support/database_test.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::desk {
namespace {

QStringList names(SettingsStore& settings, const QString& category)
{
    QStringList result;
    for (const auto& [name, value] : settings.global_table(category)->entries()) {
        result.append(name);
    }
    return result;
}

QString stored(SettingsStore& settings, const QString& category, const QString& name)
{
    return setting_value_text(*settings.global_table(category)->find(name));
}

TEST(SetupBoxes, NumberBoxesKeepTheirRangeWhenLeft)
{
    const struct
    {
        const char* box;
        QString typed;
        NumberRange range;
        QString left;
    } cases[] = {
        {"fMaxLength", u"5"_s, kMaxMessageRange, u"10"_s},
        {"fMaxLength", u"7000"_s, kMaxMessageRange, u"6000"_s},
        {"fMaxLength", u"6000"_s, kMaxMessageRange, u"6000"_s},
        {"fMaxLength", u"abc"_s, kMaxMessageRange, u"10"_s},
        {"fInterval", u"0"_s, kRetryIntervalRange, u"1"_s},
        {"fInterval", u"40000"_s, kRetryIntervalRange, u"32000"_s},
        {"fInterval", u" 25 "_s, kRetryIntervalRange, u"25"_s},
        {"fInterval", u""_s, kRetryIntervalRange, u"1"_s},
        {"fRetries", u"0"_s, kRetriesRange, u"0"_s},
        {"fRetries", u"40000"_s, kRetriesRange, u"32000"_s},
        {"fRetries", u"12abc"_s, kRetriesRange, u"0"_s},
        {"fRetries", u"1.5"_s, kRetriesRange, u"0"_s},
        {"fLogLength", u"-5"_s, kLogLengthRange, u"0"_s},
        {"fLogLength", u"99999999999"_s, kLogLengthRange, u"2147483647"_s},
        {"fpurge", u"0"_s, kPurgeAfterRange, u"1"_s},
        {"fpurge", u"-99999999999"_s, kPurgeAfterRange, u"1"_s},
        {"fpurge", u"+45"_s, kPurgeAfterRange, u"45"_s},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(clamp_number_text(c.typed, c.range), c.left) << c.box << " '" << c.typed.toStdString() << "'";
    }
}

TEST(SetupBoxes, TextBoxesAreCutAndTrimmedAsTold)
{
    EXPECT_EQ(cut_box_text(QString(90, u'x'), kSenderLength, false), QString(80, u'x'));
    EXPECT_EQ(cut_box_text(u"  ab  "_s, kSenderLength, false), u"  ab  "_s);
    EXPECT_EQ(cut_box_text(u"   Night desk pager number  "_s, kCommentLabelLength, true), u"Night desk pager num"_s);
    EXPECT_EQ(setting_name_text(u"  Display "_s), u"display"_s);
}

TEST(SetupApply, GeneralSetupStoresItsSevenSettingsInOrder)
{
    SettingsStore settings;
    store_general_setup(settings,
                        {u"  "_s + QString(90, u'S'), u" ops@example.org "_s, true, u"-1"_s, false, 2, u"0"_s});
    EXPECT_EQ(names(settings, u"connector"_s), (QStringList{u"sender"_s, u"sender_email"_s}));
    EXPECT_EQ(names(settings, u"logging"_s), (QStringList{u"length"_s, u"archive"_s, u"level"_s}));
    // Cut as the box is left, then trimmed.
    EXPECT_EQ(stored(settings, u"connector"_s, u"sender"_s), QString(78, u'S'));
    EXPECT_EQ(stored(settings, u"connector"_s, u"sender_email"_s), u"ops@example.org"_s);
    EXPECT_EQ(stored(settings, u"display"_s, u"spell_check"_s), u"-1"_s);
    EXPECT_EQ(stored(settings, u"logging"_s, u"length"_s), u"0"_s);
    EXPECT_EQ(stored(settings, u"logging"_s, u"archive"_s), u"0"_s);
    EXPECT_EQ(stored(settings, u"logging"_s, u"level"_s), u"2"_s);
    EXPECT_EQ(stored(settings, u"database"_s, u"purge_after"_s), u"1"_s);
    EXPECT_EQ(read_general_setup(settings).log_level, 2);
}

TEST(SetupApply, ConnectionAndDisplayStoreInTheOrderTheEngineAndSendWindowTakeThem)
{
    SettingsStore settings;
    store_modem_setup(settings, {16, QString(50, u'9'), u"40000"_s, u"0"_s, u" mail.example.org:2525 "_s, {}, {}});
    EXPECT_EQ(names(settings, u"connector"_s),
              (QStringList{u"port"_s, u"dial_prefix"_s, u"retries"_s, u"retry_interval"_s, u"scan_smtp_host"_s,
                           u"scan_wctp_host"_s, u"scan_snpp_host"_s}));
    EXPECT_EQ(read_modem_setup(settings),
              (ModemSetup{16, QString(40, u'9'), u"32000"_s, u"1"_s, u"mail.example.org:2525"_s, {}, {}}));

    DisplayOptions display;
    display.max_msg_length = u"7000"_s;
    display.remove_logs = true;
    display.small_font = true;
    display.extra1_label = u" Shift "_s;
    display.extra2_label = QString(30, u'c');
    store_display_options(settings, display);
    EXPECT_EQ(names(settings, u"display"_s),
              (QStringList{u"max_msg_length"_s, u"clear_on_send"_s, u"warning_popup"_s, u"remove_presets"_s,
                           u"remove_options"_s, u"remove_logs"_s, u"remove_reports"_s, u"group_label_after"_s,
                           u"minimize_to_taskbar"_s, u"small_font"_s, u"extra1_label"_s, u"extra2_label"_s}));
    display.max_msg_length = u"6000"_s;
    display.extra1_label = u"Shift"_s;
    display.extra2_label = QString(20, u'c');
    EXPECT_EQ(read_display_options(settings), display);
}

TEST(SetupApply, EndpointsAreHostOrHostAndPort)
{
    const struct
    {
        QString endpoint;
        bool accepted;
    } cases[] = {
        {{}, true},
        {u"mail.example.org"_s, true},
        {u"mail:25"_s, true},
        {u"[::1]:444"_s, true},
        {u"fe80::1"_s, true},
        {u"mail:0"_s, false},
        {u"mail:70000"_s, false},
        {u"mail:"_s, false},
        {u"two words"_s, false},
        {u":25"_s, false},
        {u"[::1]:x"_s, false},
    };
    for (const auto& c : cases) {
        ModemSetup values;
        values.scan_wctp_host = c.endpoint;
        const std::optional<Notice> refusal = modem_setup_refusal(values);
        EXPECT_EQ(!refusal.has_value(), c.accepted) << c.endpoint.toStdString();
        if (refusal) {
            EXPECT_TRUE(refusal->text.contains(u"WCTP"_s));
        }
    }
}

class LevelSwitchesTest : public testing::DatabaseTest
{
protected:
    LevelSwitchesTest() : DatabaseTest(Start::LoadSettings) {}
};

TEST_F(LevelSwitchesTest, ThePresetsSwitchLoadsThePresetsOfTheOtherDatabaseOnlyWhenItChanges)
{
    open_user_database(*state);
    store::Statement mine = state->user_db.prepare(u"UPDATE cv_presets SET cv_description = ?1 WHERE cv_index = 1"_s);
    mine.bind(1, u"Mine"_s);
    mine.step();
    addressbook::PresetTable presets;
    addressbook::load_presets(*state, presets);
    ASSERT_EQ(presets.at(1).description, u"Prog 1"_s);

    LevelSwitches values = read_level_switches(state->settings);
    EXPECT_EQ(values, LevelSwitches{});
    values.at(0) = true; // Sender: written, nothing loaded
    EXPECT_FALSE(store_level_switches(*state, presets, values));
    EXPECT_EQ(presets.at(1).description, u"Prog 1"_s);
    EXPECT_EQ(state->settings.get_setting_flag({u"level", u"user_sender"}), -1);

    values.at(2) = true;
    EXPECT_TRUE(store_level_switches(*state, presets, values));
    EXPECT_EQ(presets.at(1).description, u"Mine"_s);
    EXPECT_EQ(read_level_switches(state->settings), values);
    // Written to memory only: the database has the switch when the settings are next saved.
    EXPECT_EQ(scalar(u"SELECT cv_value FROM cv_settings WHERE cv_name = 'user_presets'"_s), 0);
}

TEST_F(LevelSwitchesTest, MissingEndpointsReadEmptyAndAnOddPortAsTheFirst)
{
    state->settings.put_setting({u"connector", u"port"}, u"20"_s);
    const ModemSetup values = read_modem_setup(state->settings);
    EXPECT_EQ(values.port, 0);
    EXPECT_EQ(values.retries, u"2"_s);
    EXPECT_EQ(values.retry_interval, u"15"_s);
    EXPECT_TRUE(values.scan_smtp_host.isEmpty());
    EXPECT_TRUE(values.scan_snpp_host.isEmpty());
}

} // namespace
} // namespace cvd::desk
