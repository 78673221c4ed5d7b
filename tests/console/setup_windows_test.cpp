// The setup dialogs as an operator uses them: boxes corrected when left, Apply storing and saving, the send
// window taking display options up at once, the presets switch, and the raw settings window.
#include "console/frm_display_options.h"
#include "console/frm_global_settings.h"
#include "console/frm_setting.h"
#include "console/modem_setup.h"
#include "console/send_form.h"
#include "console/setup_form.h"
#include "console/setup_windows.h"
#include "console_test.h"
#include "core/app_state.h"
#include "core/databases.h"
#include "store/database.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFocusEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

class SetupWindows : public ConsoleTest
{
protected:
    // Types into the box as the operator does, then moves the focus away.
    void type_and_leave(QWidget& window, const char* name, const QString& text)
    {
        auto& box = control<QLineEdit>(window, name);
        box.clear();
        QTest::keyClicks(&box, text);
        QFocusEvent out(QEvent::FocusOut, Qt::TabFocusReason);
        QApplication::sendEvent(&box, &out);
    }

    QString text(QWidget& window, const char* name) { return control<QLineEdit>(window, name).text(); }

    // The value saved in the global database, or "(none)".
    QString saved(const QString& category, const QString& name)
    {
        store::Statement select =
            db().prepare(u"SELECT cv_value FROM cv_settings WHERE cv_category = ?1 AND cv_name = ?2"_s);
        select.bind(1, category);
        select.bind(2, name);
        return select.step() ? select.text(0).value_or(QString()) : u"(none)"_s;
    }
};

TEST_F(SetupWindows, GeneralSetupCorrectsBoxesWhenLeftAndApplySaves)
{
    for (const auto& [level, shown] : {std::pair{u"2"_s, u"Debug"_s}, std::pair{u"1"_s, u"Detail"_s}}) {
        state->settings.put_setting({u"logging", u"level"}, level);
        console::setup_form general(*context, &send_form.window());
        EXPECT_EQ(control<QComboBox>(general, "cmbLogLevel").currentText(), shown);
    }
    console::setup_form general(*context, &send_form.window());
    general.show();
    EXPECT_EQ(general.windowTitle(), u"General Setup"_s);
    auto& sender = control<QLineEdit>(general, "fsender");
    sender.clear();
    QTest::keyClicks(&sender, u" "_s + QString(89, u'n'));
    EXPECT_EQ(sender.text().size(), 90); // not cut while typing
    QFocusEvent out(QEvent::FocusOut, Qt::TabFocusReason);
    QApplication::sendEvent(&sender, &out);
    EXPECT_EQ(sender.text(), u" "_s + QString(79, u'n'));
    type_and_leave(general, "fpurge", u"0"_s);
    type_and_leave(general, "fLogLength", u"-5"_s);
    EXPECT_EQ(text(general, "fpurge"), u"1"_s);
    EXPECT_EQ(text(general, "fLogLength"), u"0"_s);
    control<QCheckBox>(general, "fArchiveLogs").setChecked(true);

    EXPECT_FALSE(general.applied());
    control<QPushButton>(general, "apply").click();
    EXPECT_TRUE(general.applied());
    EXPECT_TRUE(general.isVisible()); // the window stays
    EXPECT_TRUE(control<QLineEdit>(general, "fsender").isEnabled());
    EXPECT_EQ(saved(u"connector"_s, u"sender"_s), QString(79, u'n'));
    EXPECT_EQ(saved(u"database"_s, u"purge_after"_s), u"1"_s);
    EXPECT_EQ(saved(u"logging"_s, u"length"_s), u"0"_s);
    EXPECT_EQ(saved(u"logging"_s, u"archive"_s), u"-1"_s);
    EXPECT_EQ(saved(u"logging"_s, u"level"_s), u"1"_s);
}

TEST_F(SetupWindows, ConnectionKeepsRetriesInRangeAndRefusesABadEndpoint)
{
    console::modem_setup connection(*context, &send_form.window());
    EXPECT_EQ(control<QComboBox>(connection, "lstPort").count(), 17);
    const struct
    {
        const char* box;
        QString typed, left;
    } cases[] = {
        {"fInterval", u"0"_s, u"1"_s},        {"fRetries", u"0"_s, u"0"_s},    {"fInterval", u"40000"_s, u"32000"_s},
        {"fRetries", u"40000"_s, u"32000"_s}, {"fRetries", u"lots"_s, u"0"_s},
    };
    for (const auto& c : cases) {
        type_and_leave(connection, c.box, c.typed);
        EXPECT_EQ(text(connection, c.box), c.left) << c.box << " " << c.typed.toStdString();
    }
    control<QComboBox>(connection, "lstPort").setCurrentIndex(3);
    type_and_leave(connection, "txtScanSmtpHost", u"mail.example.org:99999"_s);
    control<QPushButton>(connection, "apply").click();
    ASSERT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_TRUE(env.prompter.boxes.at(0).text.contains(u"SMTP"_s));
    EXPECT_EQ(saved(u"connector"_s, u"port"_s), u"0"_s); // nothing stored
    EXPECT_EQ(text(connection, "txtScanSmtpHost"), u"mail.example.org:99999"_s);

    type_and_leave(connection, "txtScanSmtpHost", u" mail.example.org:2525"_s);
    control<QPushButton>(connection, "apply").click();
    EXPECT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_EQ(saved(u"connector"_s, u"port"_s), u"3"_s);
    EXPECT_EQ(saved(u"connector"_s, u"retries"_s), u"0"_s);
    EXPECT_EQ(saved(u"connector"_s, u"retry_interval"_s), u"32000"_s);
    EXPECT_EQ(saved(u"connector"_s, u"scan_smtp_host"_s), u"mail.example.org:2525"_s);
    EXPECT_EQ(saved(u"connector"_s, u"scan_wctp_host"_s), QString());
}

TEST_F(SetupWindows, DisplayOptionsChangeTheSendWindowAtOnce)
{
    db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_group, cv_ad_hoc) VALUES "
              "('ops', 'Operations', -1, 0)"_s);
    console::send_form window(*context, [](const QString&, const QStringList&) {});
    context->send_form = &window;
    window.resize(900, 700);
    window.show();
    window.apply_display_options();
    window.show_users();
    ASSERT_FALSE(control<QPushButton>(window, "btnProg1").isHidden());
    ASSERT_EQ(window.unpicked_entries().at(0).label, u"(G) Operations"_s);

    console::frmDisplayOptions display(*context, &window);
    EXPECT_EQ(display.windowTitle(), u"Display Setup"_s);
    type_and_leave(display, "fMaxLength", u"5"_s);
    EXPECT_EQ(text(display, "fMaxLength"), u"10"_s);
    control<QCheckBox>(display, "fRemovePresets").setChecked(true);
    control<QCheckBox>(display, "fSmallFont").setChecked(true);
    control<QRadioButton>(display, "optAfter").setChecked(true);
    control<QPushButton>(display, "apply").click();

    EXPECT_TRUE(control<QPushButton>(window, "btnProg1").isHidden());
    EXPECT_EQ(control<QListWidget>(window, "picked").font().family(), u"Small Fonts"_s);
    EXPECT_EQ(window.unpicked_entries().at(0).label, u"Operations (G)"_s);
    auto& message = control<QPlainTextEdit>(window, "message");
    QTest::keyClicks(&message, u"twelve chars"_s);
    EXPECT_EQ(message.toPlainText(), u"twelve cha"_s);
    EXPECT_EQ(saved(u"display"_s, u"remove_presets"_s), u"-1"_s);
    EXPECT_EQ(saved(u"display"_s, u"max_msg_length"_s), u"10"_s);
    context->send_form = &send_form;
}

TEST_F(SetupWindows, ChangingThePresetsSwitchLoadsThePresetsAtOnce)
{
    open_user_database(*state);
    store::Statement mine = state->user_db.prepare(u"UPDATE cv_presets SET cv_description = ?1 WHERE cv_index = 1"_s);
    mine.bind(1, u"Mine"_s);
    mine.step();
    close_user_database(*state);
    addressbook::load_presets(*state, shared.presets);
    state->settings.put_setting({u"level", u"user_small_font"}, true);

    console::frmGlobalSettings switches(*context, &send_form.window());
    EXPECT_EQ(switches.windowTitle(), u"User/Global Settings"_s);
    EXPECT_TRUE(control<QRadioButton>(switches, "optSmallFontUser").isChecked());
    EXPECT_FALSE(control<QRadioButton>(switches, "optSmallFontGlobal").isChecked());
    EXPECT_TRUE(control<QRadioButton>(switches, "optPresetsGlobal").isChecked());

    control<QRadioButton>(switches, "optRemoveLogsUser").setChecked(true);
    control<QPushButton>(switches, "btnApply").click();
    EXPECT_EQ(shared.presets.at(1).description, u"Prog 1"_s);
    EXPECT_EQ(send_form.prog_caption_updates, 0);
    EXPECT_EQ(state->settings.get_setting_flag({u"level", u"user_remove_logs"}), -1);

    control<QRadioButton>(switches, "optPresetsUser").setChecked(true);
    control<QPushButton>(switches, "btnApply").click();
    EXPECT_EQ(shared.presets.at(1).description, u"Mine"_s);
    EXPECT_EQ(send_form.prog_caption_updates, 1);
    EXPECT_EQ(saved(u"level"_s, u"user_presets"_s), u"0"_s); // saved with the next save, not here
}

TEST_F(SetupWindows, CtrlAltSInGeneralSetupOpensProgramSettingsAndPlainSTypes)
{
    console::register_setup_windows(*context);
    for (const QString& entry : {u"setup_general"_s, u"setup_modem"_s, u"setup_display"_s, u"setup_user_global"_s}) {
        QString title;
        QWidget* owner = nullptr;
        when_modal([&](QWidget& dialog) {
            title = dialog.windowTitle();
            owner = dialog.parentWidget();
            dialog.close();
        });
        context->catalog.open(entry);
        EXPECT_FALSE(title.isEmpty()) << entry.toStdString();
        EXPECT_EQ(owner, &send_form.window()) << entry.toStdString();
    }

    console::setup_form general(*context, &send_form.window());
    general.show();
    auto& sender = control<QLineEdit>(general, "fsender");
    sender.clear();
    QTest::keyClicks(&sender, u"sS"_s);
    EXPECT_EQ(sender.text(), u"sS"_s);
    QString opened;
    when_modal([&](QWidget& dialog) {
        opened = dialog.windowTitle();
        dialog.close();
    });
    QTest::keyClick(&sender, Qt::Key_S, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_EQ(opened, u"Program Settings"_s);
    EXPECT_EQ(sender.text(), u"sS"_s);
}

TEST_F(SetupWindows, ProgramSettingsGetsAndSetsAnySettingWithoutSaving)
{
    console::frmSetting raw(*context, &send_form.window());
    auto& category = control<QLineEdit>(raw, "txtCategory");
    QTest::keyClicks(&category, u"  Display"_s);
    EXPECT_EQ(category.text(), u"display"_s);
    QTest::keyClicks(&control<QLineEdit>(raw, "txtName"), u"Max_Msg_Length "_s);
    EXPECT_EQ(text(raw, "txtName"), u"max_msg_length"_s);
    control<QPushButton>(raw, "btnGet").click();
    EXPECT_EQ(text(raw, "txtValue"), u"2000"_s);

    control<QLineEdit>(raw, "txtValue").setText(u"150"_s);
    control<QPushButton>(raw, "btnSet").click();
    EXPECT_EQ(state->settings.get_setting_long({u"display", u"max_msg_length"}), 150);
    EXPECT_EQ(saved(u"display"_s, u"max_msg_length"_s), u"2000"_s);

    category.setText(u"nosuch"_s);
    control<QPushButton>(raw, "btnGet").click();
    EXPECT_EQ(text(raw, "txtValue"), QString());
}

} // namespace
} // namespace cvd::testing
