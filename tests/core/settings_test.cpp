#include "core/databases.h"
#include "core/settings.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/database_test.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd {
namespace {

class SettingsTest : public testing::DatabaseTest
{
protected:
    SettingsTest() : DatabaseTest(Start::LoadSettings) {}

    // The value stored in a database's settings table, read straight from the file.
    std::optional<QString> stored(const QString& path, const QString& category, const QString& name)
    {
        store::Database db = store::Database::open(path, store::Database::OpenMode::ReadOnly);
        store::Statement select =
            db.prepare(u"SELECT cv_value FROM cv_settings WHERE cv_category = ?1 AND cv_name = ?2"_s);
        select.bind(1, category).bind(2, name);
        return select.step() ? select.text(0) : std::nullopt;
    }
};

TEST_F(SettingsTest, SwitchOnCopiesTheGlobalValueIntoTheUserTableForGood)
{
    SettingsStore& settings = state->settings;
    settings.put_setting({u"level", u"user_sender"}, u"-1"_s);
    ASSERT_FALSE(settings.user_table(u"connector"_s)->contains(u"sender"_s));

    EXPECT_EQ(settings.get_setting_text({u"connector", u"sender"}), u"%LoginName%"_s);
    EXPECT_TRUE(settings.user_table(u"connector"_s)->contains(u"sender"_s));

    save_settings(*state);
    EXPECT_EQ(stored(user_db_path(*state), u"connector"_s, u"sender"_s), u"%LoginName%"_s);

    // A later change of the global value no longer reaches this user.
    settings.global_table(u"connector"_s)->set(u"sender"_s, u"dispatch"_s);
    EXPECT_EQ(settings.get_setting_text({u"connector", u"sender"}), u"%LoginName%"_s);
    // And writes go to the user table while the switch is on.
    settings.put_setting({u"connector", u"sender"}, u"night desk"_s);
    EXPECT_EQ(*settings.global_table(u"connector"_s)->find(u"sender"_s), u"dispatch"_s);
    EXPECT_EQ(settings.get_setting_text({u"connector", u"sender"}), u"night desk"_s);

    // Switched off again, the global value is in force.
    settings.put_setting({u"level", u"user_sender"}, 0);
    EXPECT_EQ(settings.get_setting_text({u"connector", u"sender"}), u"dispatch"_s);
}

TEST_F(SettingsTest, KeysAndCategoriesAreCaseBlindAndTypedReadersApplyTheirRules)
{
    SettingsStore& settings = state->settings;
    EXPECT_EQ(settings.get_setting({u"Connector", u"Port"}), settings.get_setting({u"connector", u"port"}));
    EXPECT_EQ(settings.get_setting_text({u"CONNECTOR", u"RETRY_INTERVAL"}), u"15"_s);
    settings.put_setting({u"Display", u"Extra1_Label"}, u"Pager"_s);
    EXPECT_EQ(settings.get_setting_text({u"display", u"extra1_label"}), u"Pager"_s);
    EXPECT_FALSE(settings.get_setting({u"nosuchcategory", u"port"}).has_value());
    EXPECT_FALSE(settings.get_setting({u"connector", u"nosuchname"}).has_value());
    settings.put_setting({u"display", u"extra1_label"}, u"Room\\035"_s);
    EXPECT_EQ(settings.get_setting_text({u"display", u"extra1_label"}), u"Room#"_s);

    settings.put_setting({u"database", u"purge_after"}, u"45days"_s);
    EXPECT_EQ(settings.get_setting_long({u"database", u"purge_after"}), 45);
    settings.put_setting({u"database", u"purge_after"}, u"days"_s);
    EXPECT_EQ(settings.get_setting_long({u"database", u"purge_after"}), 0);
    EXPECT_EQ(settings.get_setting_long({u"database", u"missing"}), 0);

    EXPECT_EQ(settings.get_setting_flag({u"display", u"minimize_to_taskbar"}), -1);
    settings.put_setting({u"display", u"warning_popup"}, true);
    EXPECT_EQ(settings.get_setting_flag({u"display", u"warning_popup"}), -1);
    settings.put_setting({u"display", u"warning_popup"}, QString());
    EXPECT_EQ(settings.get_setting_flag({u"display", u"warning_popup"}), 0);
    EXPECT_EQ(settings.get_setting_flag({u"display", u"missing"}), 0);
    EXPECT_EQ(settings.get_setting_text({u"display", u"missing"}), QString());
}

TEST_F(SettingsTest, SaveRewritesBothTablesWindowStateForTheUserAndLoadReadsThemBack)
{
    SettingsStore& settings = state->settings;
    settings.put_setting({u"display", u"clear_on_send"}, true);
    settings.put_setting({u"logging", u"level"}, 4);
    // Window state is the user's by default.
    settings.put_setting({u"display", u"send_form_top"}, 1200);
    EXPECT_EQ(*settings.user_table(u"display"_s)->find(u"send_form_top"_s), 1200);
    EXPECT_FALSE(settings.global_table(u"display"_s)->contains(u"send_form_top"_s));
    save_settings(*state);
    EXPECT_EQ(stored(user_db_path(*state), u"display"_s, u"send_form_top"_s), u"1200"_s);
    EXPECT_EQ(stored(global_db_path(*state), u"display"_s, u"clear_on_send"_s), u"-1"_s);
    EXPECT_EQ(stored(global_db_path(*state), u"logging"_s, u"level"_s), u"4"_s);
    // The user database keeps its own version row.
    EXPECT_EQ(stored(user_db_path(*state), u"database"_s, u"version"_s), u"500"_s);

    SettingsStore reloaded;
    store::Database global = store::Database::open(global_db_path(*state));
    reloaded.load_global(global);
    EXPECT_EQ(reloaded.get_setting_flag({u"display", u"clear_on_send"}), -1);
    EXPECT_EQ(reloaded.get_setting_long({u"logging", u"level"}), 4);
    EXPECT_EQ(reloaded.get_setting_long({u"database", u"version"}), 501);
}

TEST_F(SettingsTest, NullValuesReadAsEmptyAndTheLastDuplicateWins)
{
    db().exec(u"INSERT INTO cv_settings (cv_category, cv_name, cv_value) VALUES ('display', 'extra2_label', NULL), "
              "('Connector', 'PORT', '7')"_s);
    load_settings(*state);
    const std::optional<QVariant> extra2 = state->settings.get_setting({u"display", u"extra2_label"});
    ASSERT_TRUE(extra2.has_value());
    EXPECT_EQ(extra2->toString(), QString());
    EXPECT_EQ(state->settings.get_setting_long({u"connector", u"port"}), 7);
}

} // namespace
} // namespace cvd
