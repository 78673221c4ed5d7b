#include "store/database.h"
#include "store/schema.h"
#include "store_test_support.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::store {
namespace {

using testing::query_rows;
using testing::query_value;
using testing::TempFolder;

// Category, name, value of every settings row of a new global database, in order; written out by hand.
const QList<QStringList> kGlobalSettings = {
    {u"database"_s, u"version"_s, u"501"_s},
    {u"database"_s, u"purge_after"_s, u"30"_s},
    {u"database"_s, u"rebuild_index"_s, u"0"_s},
    {u"connector"_s, u"retries"_s, u"2"_s},
    {u"connector"_s, u"retry_interval"_s, u"15"_s},
    {u"connector"_s, u"dial_prefix"_s, u""_s},
    {u"connector"_s, u"port"_s, u"0"_s},
    {u"connector"_s, u"dns1"_s, u"0.0.0.0"_s},
    {u"connector"_s, u"dns2"_s, u"0.0.0.0"_s},
    {u"connector"_s, u"sender"_s, u"%LoginName%"_s},
    {u"connector"_s, u"sender_email"_s, u"%LoginName%@example.com"_s},
    {u"connector"_s, u"subject_delimiter"_s, u""_s},
    {u"logging"_s, u"level"_s, u"2"_s},
    {u"logging"_s, u"archive"_s, u"0"_s},
    {u"logging"_s, u"length"_s, u"100000"_s},
    {u"security"_s, u"admin_password"_s, u""_s},
    {u"security"_s, u"super_password"_s, u""_s},
    {u"security"_s, u"user_password"_s, u""_s},
    {u"display"_s, u"extra1_label"_s, u"Comment1"_s},
    {u"display"_s, u"extra2_label"_s, u"Comment2"_s},
    {u"display"_s, u"spell_check"_s, u"0"_s},
    {u"display"_s, u"clear_on_send"_s, u"0"_s},
    {u"display"_s, u"warning_popup"_s, u"0"_s},
    {u"display"_s, u"small_font"_s, u"0"_s},
    {u"display"_s, u"max_msg_length"_s, u"2000"_s},
    {u"display"_s, u"remove_presets"_s, u"0"_s},
    {u"display"_s, u"remove_options"_s, u"0"_s},
    {u"display"_s, u"remove_logs"_s, u"0"_s},
    {u"display"_s, u"remove_reports"_s, u"0"_s},
    {u"display"_s, u"group_label_after"_s, u"0"_s},
    {u"display"_s, u"minimize_to_taskbar"_s, u"-1"_s},
    {u"display"_s, u"connection_monitor_visible"_s, u"-1"_s},
    {u"level"_s, u"user_presets"_s, u"0"_s},
    {u"level"_s, u"user_sender"_s, u"0"_s},
    {u"level"_s, u"user_sender_email"_s, u"0"_s},
    {u"level"_s, u"user_spell_check"_s, u"0"_s},
    {u"level"_s, u"user_clear_on_send"_s, u"0"_s},
    {u"level"_s, u"user_warning_popup"_s, u"0"_s},
    {u"level"_s, u"user_small_font"_s, u"0"_s},
    {u"level"_s, u"user_group_label_after"_s, u"0"_s},
    {u"level"_s, u"user_minimize_to_taskbar"_s, u"0"_s},
    {u"level"_s, u"user_remove_presets"_s, u"0"_s},
    {u"level"_s, u"user_remove_options"_s, u"0"_s},
    {u"level"_s, u"user_remove_logs"_s, u"0"_s},
    {u"level"_s, u"user_remove_reports"_s, u"0"_s},
    {u"level"_s, u"user_send_form_top"_s, u"-1"_s},
    {u"level"_s, u"user_send_form_left"_s, u"-1"_s},
    {u"level"_s, u"user_send_form_width"_s, u"-1"_s},
    {u"level"_s, u"user_send_form_height"_s, u"-1"_s},
    {u"level"_s, u"user_connection_monitor_scroll"_s, u"-1"_s},
    {u"level"_s, u"user_connection_monitor_top"_s, u"-1"_s},
    {u"level"_s, u"user_connection_monitor_left"_s, u"-1"_s},
    {u"level"_s, u"user_connection_monitor_width"_s, u"-1"_s},
    {u"level"_s, u"user_connection_monitor_height"_s, u"-1"_s},
    {u"level"_s, u"user_sched_sort_order"_s, u"-1"_s},
    {u"level"_s, u"user_pend_sort_order"_s, u"-1"_s},
    {u"level"_s, u"user_sent_sort_order"_s, u"-1"_s},
    {u"level"_s, u"user_bad_sort_order"_s, u"-1"_s},
    {u"level"_s, u"user_preset_sort_order"_s, u"-1"_s},
    {u"level"_s, u"user_sched_top"_s, u"-1"_s},
    {u"level"_s, u"user_sched_left"_s, u"-1"_s},
    {u"level"_s, u"user_sched_width"_s, u"-1"_s},
    {u"level"_s, u"user_sched_height"_s, u"-1"_s},
    {u"level"_s, u"user_pend_top"_s, u"-1"_s},
    {u"level"_s, u"user_pend_left"_s, u"-1"_s},
    {u"level"_s, u"user_pend_width"_s, u"-1"_s},
    {u"level"_s, u"user_pend_height"_s, u"-1"_s},
    {u"level"_s, u"user_sent_top"_s, u"-1"_s},
    {u"level"_s, u"user_sent_left"_s, u"-1"_s},
    {u"level"_s, u"user_sent_width"_s, u"-1"_s},
    {u"level"_s, u"user_sent_height"_s, u"-1"_s},
    {u"level"_s, u"user_bad_top"_s, u"-1"_s},
    {u"level"_s, u"user_bad_left"_s, u"-1"_s},
    {u"level"_s, u"user_bad_width"_s, u"-1"_s},
    {u"level"_s, u"user_bad_height"_s, u"-1"_s},
    {u"level"_s, u"user_activity_top"_s, u"-1"_s},
    {u"level"_s, u"user_activity_left"_s, u"-1"_s},
    {u"level"_s, u"user_activity_width"_s, u"-1"_s},
    {u"level"_s, u"user_activity_height"_s, u"-1"_s},
};

const QList<QStringList> kUserSettings = {
    {u"database"_s, u"version"_s, u"500"_s},
    {u"display"_s, u"send_form_top"_s, u"0"_s},
    {u"display"_s, u"send_form_left"_s, u"0"_s},
    {u"display"_s, u"send_form_width"_s, u"0"_s},
    {u"display"_s, u"send_form_height"_s, u"0"_s},
    {u"display"_s, u"connection_monitor_scroll"_s, u"-1"_s},
    {u"display"_s, u"connection_monitor_top"_s, u"0"_s},
    {u"display"_s, u"connection_monitor_left"_s, u"0"_s},
    {u"display"_s, u"connection_monitor_width"_s, u"0"_s},
    {u"display"_s, u"connection_monitor_height"_s, u"0"_s},
};

QList<QStringList> settings_rows(Database& db)
{
    return query_rows(db, u"SELECT cv_category, cv_name, cv_value FROM cv_settings ORDER BY cv_id"_s);
}

// Preset rows as index, description, recipient, message, in the order they were written.
QList<QStringList> preset_rows(Database& db)
{
    return query_rows(db,
                      u"SELECT cv_index, cv_description, cv_recipient, cv_message FROM cv_presets ORDER BY cv_id"_s);
}

TEST(DefaultRows, GlobalDatabaseStartsWithCounterPresetsAndSettingsInOrder)
{
    TempFolder folder;
    const QString path = folder.path(u"cvd.mdb"_s);
    create_global_database(path);
    Database db = Database::open(path);

    EXPECT_EQ(query_rows(db, u"SELECT cv_id, cv_unique FROM cv_counters"_s), (QList<QStringList>{{u"1"_s, u"1"_s}}));

    const QList<QStringList> presets = preset_rows(db);
    ASSERT_EQ(presets.size(), 100);
    for (int i = 0; i < presets.size(); ++i) {
        const QString description = i < 5 ? u"Prog "_s + QString::number(i + 1) : QString();
        // Empty texts, not nulls: "<null>" would show here.
        EXPECT_EQ(presets[i], (QStringList{QString::number(i + 1), description, QString(), QString()})) << i;
    }
    EXPECT_EQ(presets[0][1], u"Prog 1"_s);
    EXPECT_EQ(presets[4][1], u"Prog 5"_s);

    EXPECT_EQ(settings_rows(db), kGlobalSettings);
    EXPECT_EQ(query_value(db, u"SELECT count(*) FROM cv_settings WHERE cv_category = 'level'"_s), u"47"_s);
    EXPECT_EQ(query_value(db, u"SELECT min(cv_id) || '-' || max(cv_id) FROM cv_settings"_s), u"1-79"_s);

    for (const QString& table :
         {u"cv_messages"_s, u"cv_recipients"_s, u"cv_carriers"_s, u"cv_groups"_s, u"cv_oncalltable"_s}) {
        EXPECT_EQ(query_value(db, u"SELECT count(*) FROM "_s + table), u"0"_s) << table.toStdString();
    }
}

TEST(DefaultRows, UserDatabaseStartsWithEmptyPresetsAndItsDisplayRows)
{
    TempFolder folder;
    const QString path = folder.path(u"cvd.mdb"_s);
    create_user_database(path);
    Database db = Database::open(path);

    const QList<QStringList> presets = preset_rows(db);
    ASSERT_EQ(presets.size(), 100);
    for (int i = 0; i < presets.size(); ++i) {
        EXPECT_EQ(presets[i], (QStringList{QString::number(i + 1), QString(), QString(), QString()})) << i;
    }
    EXPECT_EQ(settings_rows(db), kUserSettings);
}

TEST(DefaultRows, SettingsRowsAreFoundWhateverTheCaseOfTheKey)
{
    TempFolder folder;
    const QString path = folder.path(u"cvd.mdb"_s);
    create_global_database(path);
    Database db = Database::open(path);
    Statement find = db.prepare(u"SELECT cv_value FROM cv_settings WHERE cv_category = ?1 AND cv_name = ?2"_s);
    find.bind(1, u"Connector"_s).bind(2, u"SENDER_EMAIL"_s);
    ASSERT_TRUE(find.step());
    EXPECT_EQ(find.text(0), u"%LoginName%@example.com"_s);
    EXPECT_FALSE(find.step());
}

} // namespace
} // namespace cvd::store
