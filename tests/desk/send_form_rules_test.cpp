// The send window's decisions, without the window: list clicks, preset text, closing, help, layout, first run.
#include "desk/help_texts.h"
#include "desk/pick_lists.h"
#include "desk/send_form_rules.h"
#include "support/database_test.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::desk {
namespace {

using addressbook::PickerEntry;

TEST(ListClicks, EachListDecidesByTheMarkAndShift)
{
    const PickerEntry person{u"Bob Smith"_s, u"bob"_s, u"5"_s};
    const PickerEntry group_before{u"(G) Ops"_s, u"ops"_s, QString()};
    const PickerEntry group_after{u"Ops (G)"_s, u"ops"_s, QString()};
    const PickerEntry adhoc_before{u"(A) Fax"_s, u"fx"_s, QString()};
    const PickerEntry adhoc_after{u"Fax (A)"_s, u"fx"_s, QString()};
    const PickerEntry picked_before{u"(A) Fax | 12"_s, u"(A) fx"_s, QString()};
    const PickerEntry picked_after{u"Fax (A) | 12"_s, u"(A) fx"_s, QString()};
    const struct
    {
        bool in_picked;
        PickerEntry entry;
        bool shift;
        bool label_after;
        ListClick click;
    } cases[] = {
        {false, person, false, false, {}},
        {false, person, true, false, {ClickAction::Details, u"bob"_s + QString(47, u' ') + u"5"_s, {}}},
        {false, group_before, true, false, {ClickAction::Details, u"ops"_s, u"Ops"_s}},
        {false, group_after, true, true, {ClickAction::Details, u"ops"_s, u"Ops"_s}},
        {false, group_before, true, true, {ClickAction::Details, u"ops"_s, u"(G)"_s}}, // the setting's side is cut
        {false, adhoc_before, false, false, {ClickAction::AskAdhocPin, {}, {}}},
        {false, adhoc_after, false, true, {ClickAction::AskAdhocPin, {}, {}}},
        {true, picked_before, false, false, {ClickAction::Drop, {}, {}}},
        {true, picked_after, false, true, {}}, // the narrower test: goes back as it stands
        {true, person, false, false, {}},
        {true, group_after, true, true, {ClickAction::Details, u"ops"_s, u"Ops"_s}},
    };
    for (const auto& c : cases) {
        const ListClick click = c.in_picked ? picked_click(c.entry, c.shift, c.label_after)
                                            : unpicked_click(c.entry, c.shift, c.label_after);
        EXPECT_EQ(click, c.click) << c.entry.label.toStdString() << " shift " << c.shift;
    }
}

TEST(PresetText, SelectionReplacedOtherwiseInsertedAtTheCaretOrAppended)
{
    const struct
    {
        MessageEdit edit;
        QString result;
    } cases[] = {
        {{u"abcdef"_s, 1, 2, 3}, u"aXdef"_s},   // selection replaced
        {{u"abcdef"_s, 0, 0, 0}, u"abcdefX"_s}, // caret at 0: appended, not put in front
        {{u"abcdef"_s, 0, 0, 2}, u"abXcdef"_s}, {{u"abcdef"_s, 0, 0, 6}, u"abcdefX"_s}, {{QString(), 0, 0, 0}, u"X"_s},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(insert_preset_text(c.edit, u"X"_s), c.result) << c.edit.text.toStdString() << c.edit.caret;
    }
    const QList<PickerEntry> unpicked{{u"Bob"_s, u"b"_s, {}},
                                      {u"Bobby"_s, u"c"_s, {}},
                                      {u"Bob"_s, u"d"_s, {}},
                                      {u"Bob"_s + QString(60, u' ') + u"x"_s, u"e"_s, {}}};
    EXPECT_EQ(entries_with_label(unpicked, u"Bob"_s), (QList<qsizetype>{0, 2, 3})); // first 50 characters only
}

class PresetRecipient : public testing::DatabaseTest
{
};

TEST_F(PresetRecipient, LabelIsBuiltAsTheListsShowIt)
{
    db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_group) VALUES ('ops', 'Operations', -1), "
              "('bob', '  ', 0)"_s);
    EXPECT_EQ(preset_recipient_label(*state, u"ops"_s, true), u"Operations (G)"_s);
    EXPECT_EQ(preset_recipient_label(*state, u"bob"_s, false), u"bob"_s);
    EXPECT_EQ(preset_recipient_label(*state, u"gone"_s, false), std::nullopt);
}

TEST(SendFormRules, ClosingAsksUnlessExactlyNothingIsPending)
{
    EXPECT_EQ(closing_question(u"Pend: 0"_s), std::nullopt);
    for (const QString& text : {u"Pend: 3"_s, u"Pend: 0 "_s, QString()}) {
        ASSERT_TRUE(closing_question(text)) << text.toStdString();
        EXPECT_EQ(closing_question(text)->buttons, BoxButtons::YesNo);
    }
}

TEST(SendFormRules, HelpLinesEndInCrLfWithTheirTabs)
{
    const QStringList keyboard = keyboard_shortcuts_notice().text.split(u"\r\n"_s);
    ASSERT_EQ(keyboard.size(), 10);
    EXPECT_EQ(keyboard.at(0), u"Abort All Messages\t\t\tCtrl-A"_s);
    EXPECT_EQ(keyboard.at(3), u"Erase Recipients and Message\t\tCtrl-E"_s);
    EXPECT_TRUE(keyboard.last().isEmpty());
    const Notice mouse = mouse_shortcuts_notice();
    EXPECT_EQ(mouse.title, u"Mouse Shortcuts"_s);
    EXPECT_TRUE(mouse.text.endsWith(u"Autoscroll Monitor Log\t\tRight-Click in Activity Monitor\r\n"_s));
}

TEST(SendFormRules, ListsShareTheFreeHeightAndButtonsTheWidth)
{
    for (const bool hidden : {false, true}) {
        const SendFormLayout small = send_form_layout(6800, 5000, hidden);
        const SendFormLayout large = send_form_layout(9000, 8000, hidden);
        EXPECT_EQ(small.message.height(), hidden ? 1575 : 1215);
        EXPECT_EQ(small.unpicked.height(), small.picked.height());
        EXPECT_EQ(large.unpicked.height() - small.unpicked.height(), 3000); // lists take what the window gains
        EXPECT_EQ(large.message.height(), small.message.height());
        EXPECT_EQ(large.send.right(), large.count.right() + 60 + 1215);
        const int step = large.program_buttons[1].left() - large.program_buttons[0].left();
        for (std::size_t i = 1; i < large.program_buttons.size(); ++i) {
            EXPECT_EQ(large.program_buttons.at(i).left() - large.program_buttons.at(i - 1).left(), step);
        }
        EXPECT_LE(large.program_buttons[5].right(), 9000 - 120);
    }
}

class FirstRun : public testing::DatabaseTest
{
protected:
    FirstRun() : DatabaseTest(Start::LoadSettings) {}
};

TEST_F(FirstRun, MonitorStandsBesideTheWindowAndTheSettingsHide)
{
    write_first_run_monitor_settings(state->settings, 300, 1000, 6345, 5300);
    EXPECT_EQ(state->settings.get_setting_long({u"display", u"connection_monitor_left"}), 1000 + 6345 + 20);
    EXPECT_EQ(state->settings.get_setting_long({u"display", u"connection_monitor_width"}), 4000);
    EXPECT_EQ(state->settings.get_setting_long({u"display", u"connection_monitor_height"}), 5300);
    EXPECT_NE(state->settings.get_setting_flag({u"display", u"connection_monitor_scroll"}), 0);

    state->settings.put_setting(keys::remove_logs, true);
    state->settings.put_setting(keys::remove_presets, false);
    EXPECT_EQ(hidden_controls(state->settings), (HiddenControls{false, false, true, false}));
}

} // namespace
} // namespace cvd::desk
