// The send window as an operator uses it: the two lists, presets, counters, closing, guarded menu entries, SEND.
#include "console/send_form.h"
#include "console_test.h"
#include "core/app_state.h"
#include "dispatch/dispatch_loop.h"
#include "store/database.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

using addressbook::PickerEntry;

// Mouse and keys as the operator's hardware delivers them, event filters included.
void mouse_click(QWidget& widget, Qt::MouseButton button, Qt::KeyboardModifiers modifiers = {}, QPoint at = {2, 2})
{
    QMouseEvent press(QEvent::MouseButtonPress, at, widget.mapToGlobal(at), button, button, modifiers);
    QApplication::sendEvent(&widget, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, at, widget.mapToGlobal(at), button, Qt::NoButton, modifiers);
    QApplication::sendEvent(&widget, &release);
}

void key_click(QWidget& widget, int key, Qt::KeyboardModifiers modifiers = {}, const QString& text = {})
{
    QKeyEvent press(QEvent::KeyPress, key, modifiers, text);
    QApplication::sendEvent(&widget, &press);
    QKeyEvent release(QEvent::KeyRelease, key, modifiers, text);
    QApplication::sendEvent(&widget, &release);
}

void key_clicks(QWidget& widget, const QString& text)
{
    for (const QChar ch : text) {
        key_click(widget, Qt::Key_unknown, {}, QString(ch));
    }
}

class SendFormTest : public ConsoleTest
{
protected:
    void SetUp() override
    {
        ConsoleTest::SetUp();
        db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_group, cv_ad_hoc, cv_priority) VALUES "
                  "('bob', 'Bob Smith', 0, 0, 5), ('ops', 'Operations', -1, 0, 1), ('fx', 'Fax', 0, -1, 2)"_s);
        context->doors.ask_adhoc_pin = [this] { return next_pin; };
        context->doors.info_details = [this] { opened.append(u"details "_s + shared.info_key); };
        context->doors.info_filter = [this] { opened.append(u"filter"_s); };
        context->doors.has_window = [](const QString&) { return true; };
        context->doors.open_window = [this](const QString& name) { opened.append(name); };
    }

    console::send_form& make_window()
    {
        window = std::make_unique<console::send_form>(*context, [](const QString&, const QStringList&) {});
        window->resize(900, 700);
        window->show();
        window->show_users();
        return *window;
    }

    QStringList labels(const QList<PickerEntry>& entries)
    {
        QStringList result;
        for (const PickerEntry& entry : entries) {
            result.append(entry.label);
        }
        return result;
    }

    // A mouse click on the row of that label, as an operator makes it.
    void click(const char* list_name, const QString& label, Qt::KeyboardModifiers modifiers = {},
               Qt::MouseButton button = Qt::LeftButton)
    {
        auto& list = control<QListWidget>(*window, list_name);
        const QList<QListWidgetItem*> items = list.findItems(label, Qt::MatchExactly);
        ASSERT_EQ(items.size(), 1) << label.toStdString();
        mouse_click(*list.viewport(), button, modifiers, list.visualItemRect(items.first()).center());
    }

    QString next_pin;
    QStringList opened;
    std::unique_ptr<console::send_form> window;
};

TEST_F(SendFormTest, MouseClicksMoveEntriesAndTheKeyboardOnlyWithEnter)
{
    make_window();
    EXPECT_EQ(labels(window->unpicked_entries()), (QStringList{u"(A) Fax"_s, u"(G) Operations"_s, u"Bob Smith"_s}));
    click("unpicked", u"Bob Smith"_s, Qt::ShiftModifier); // details, nothing moves
    EXPECT_EQ(opened, QStringList{u"details bob"_s + QString(47, u' ') + u"5"_s});
    click("unpicked", u"Bob Smith"_s);
    EXPECT_EQ(labels(window->picked_entries()), QStringList{u"Bob Smith"_s});

    next_pin.clear(); // the ad hoc dialog cancelled: nothing picked
    click("unpicked", u"(A) Fax"_s);
    next_pin = u"555"_s;
    click("unpicked", u"(A) Fax"_s);
    next_pin = u"777"_s;
    click("unpicked", u"(A) Fax"_s);
    EXPECT_EQ(labels(window->picked_entries()), (QStringList{u"(A) Fax | 555"_s, u"(A) Fax | 777"_s, u"Bob Smith"_s}));
    EXPECT_EQ(window->unpicked_entries().size(), 2); // the ad hoc row stays for more numbers
    click("picked", u"(A) Fax | 555"_s);             // goes, and nothing goes back
    EXPECT_EQ(window->unpicked_entries().size(), 2);
    EXPECT_EQ(window->picked_entries().size(), 2);

    auto& unpicked = control<QListWidget>(*window, "unpicked");
    unpicked.setFocus();
    key_click(unpicked, Qt::Key_Down);
    key_click(unpicked, Qt::Key_Down);
    EXPECT_EQ(window->picked_entries().size(), 2); // selecting moves nothing
    key_click(unpicked, Qt::Key_Return);
    EXPECT_EQ(window->picked_entries().size(), 3);
    EXPECT_EQ(opened.size(), 1);
}

TEST_F(SendFormTest, WithTheMarkBehindAPickedAdHocEntryGoesBackAsItStands)
{
    state->settings.put_setting({u"display", u"group_label_after"}, true);
    make_window();
    next_pin = u"12"_s;
    click("unpicked", u"Fax (A)"_s);
    click("picked", u"Fax (A) | 12"_s);
    EXPECT_TRUE(window->picked_entries().isEmpty());
    EXPECT_TRUE(labels(window->unpicked_entries()).contains(u"Fax (A) | 12"_s));
    click("unpicked", u"Operations (G)"_s, Qt::ShiftModifier);
    EXPECT_EQ(shared.info_group_label, u"Operations"_s);
    click("unpicked", u"Bob Smith"_s, {}, Qt::RightButton); // the filter, not a move
    EXPECT_TRUE(shared.info_filter);
    EXPECT_EQ(opened.last(), u"filter"_s);
}

TEST_F(SendFormTest, PresetsGoIntoTheMessageByTheCaretAndPickTheirRecipient)
{
    make_window();
    auto& message = control<QPlainTextEdit>(*window, "message");
    shared.presets.at(1).message = u"X"_s;
    const struct
    {
        int selection_start;
        int caret;
        QString result;
    } cases[] = {{1, 3, u"aXdef"_s}, {0, 0, u"abcdefX"_s}, {2, 2, u"abXcdef"_s}, {6, 6, u"abcdefX"_s}};
    for (const auto& c : cases) {
        message.setPlainText(u"abcdef"_s);
        QTextCursor cursor = message.textCursor();
        cursor.setPosition(c.selection_start);
        cursor.setPosition(c.caret, QTextCursor::KeepAnchor);
        message.setTextCursor(cursor);
        key_click(message, Qt::Key_1, Qt::ControlModifier);
        EXPECT_EQ(message.toPlainText(), c.result);
        EXPECT_EQ(message.textCursor().position(), c.result.size());
    }
    shared.presets.at(2) = {u"2"_s, u"Call"_s, u"Call ops"_s, u"ops"_s};
    key_click(message, Qt::Key_2, Qt::ControlModifier);
    EXPECT_EQ(message.toPlainText(), u"Call ops"_s);
    EXPECT_EQ(labels(window->picked_entries()), QStringList{u"(G) Operations"_s});
    key_click(message, Qt::Key_3, Qt::ControlModifier); // an empty preset
    EXPECT_EQ(env.prompter.box_titles(), QStringList{u"Not Programmed"_s});
}

TEST_F(SendFormTest, PanelsOpenTheirFoldersAndARightClickOnPendAborts)
{
    make_window();
    window->set_counter_panel(kPendPanel, u"Pend: 2"_s);
    auto& pend = control<QLabel>(*window, "sbrCounters_panel3");
    mouse_click(pend, Qt::LeftButton);
    mouse_click(control<QLabel>(*window, "sbrCounters_panel5"), Qt::LeftButton);
    EXPECT_EQ(opened, (QStringList{u"pending"_s, u"bad"_s}));
    mouse_click(pend, Qt::RightButton);
    EXPECT_EQ(env.prompter.box_titles(), QStringList{u"Cancel Pending Messages"_s});
    EXPECT_EQ(opened.size(), 2);
}

TEST_F(SendFormTest, ClosingAsksUnlessNothingIsPending)
{
    make_window();
    int unloaded = 0;
    QObject::connect(window.get(), &console::send_form::unloaded, [&] { ++unloaded; });
    window->set_counter_panel(kPendPanel, u"Pend: 1"_s);
    EXPECT_FALSE(window->close()); // answered No
    EXPECT_EQ(env.prompter.box_titles(), QStringList{u"Quit While Sending?"_s});
    window->set_counter_panel(kPendPanel, u"Pend: 0"_s);
    EXPECT_TRUE(window->close());
    EXPECT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_EQ(unloaded, 1);
    EXPECT_NE(state->settings.get_setting_long({u"display", u"send_form_width"}), 0);
}

TEST_F(SendFormTest, GuardedEntriesAskForTheirLevelPassword)
{
    state->admin_password = u"boss"_s;
    state->super_password = u"super"_s;
    make_window();
    env.prompter.enter_next(u"wrong"_s);
    window->findChild<QAction*>(u"setup_general"_s)->trigger();
    env.prompter.enter_next(u"super"_s);
    window->findChild<QAction*>(u"carriers_add"_s)->trigger();
    EXPECT_EQ(env.prompter.password_prompts, (QStringList{u"A password is required for the setup screens"_s,
                                                          u"A password is required to add carriers"_s}));
    EXPECT_EQ(opened, QStringList{u"carriers_add"_s});
}

TEST_F(SendFormTest, SendStoresOneRowPerPickedRecipient)
{
    int schedule_unloads = 0;
    context->doors.unload_schedule = [&schedule_unloads] { ++schedule_unloads; };
    make_window();
    auto& send = control<QPushButton>(*window, "send");
    mouse_click(send, Qt::LeftButton);
    EXPECT_EQ(env.prompter.box_titles(), QStringList{u"No Recipient"_s});
    click("unpicked", u"Bob Smith"_s);
    next_pin = u"9"_s;
    click("unpicked", u"(A) Fax"_s);
    key_clicks(control<QPlainTextEdit>(*window, "message"), u"Disk full"_s);
    EXPECT_EQ(control<QLabel>(*window, "cc").text(), u"9"_s);
    key_click(send, Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(scalar(u"SELECT COUNT(DISTINCT cv_transaction) FROM cv_messages WHERE cv_recipient IN ('bob', 'fx')"_s),
              1);
    EXPECT_EQ(scalar(u"SELECT COUNT(*) FROM cv_messages WHERE cv_message = 'Disk full'"_s), 2);
    EXPECT_EQ(env.clock.waits, QList<int>(6, 30));
    EXPECT_EQ(send.text(), u"SEND"_s);
    EXPECT_EQ(schedule_unloads, 1); // only the send that stored rows
}

TEST_F(SendFormTest, AStoredMessageLoadedPicksEveryMatchingEntryAndFillsTheMessage)
{
    db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_group, cv_ad_hoc, cv_priority) VALUES "
              "('bob', 'Bob at home', 0, 0, 5)"_s);
    make_window();
    click("unpicked", u"(G) Operations"_s); // picked before the load: the lists start afresh
    auto& message = control<QPlainTextEdit>(*window, "message");
    message.setPlainText(u"old text"_s);
    ASSERT_TRUE(window->load_message(u"bob"_s, u"Call the desk"_s));
    EXPECT_EQ(labels(window->picked_entries()), (QStringList{u"Bob at home"_s, u"Bob Smith"_s}));
    EXPECT_EQ(labels(window->unpicked_entries()), (QStringList{u"(A) Fax"_s, u"(G) Operations"_s}));
    EXPECT_EQ(message.toPlainText(), u"Call the desk"_s);

    ASSERT_TRUE(window->load_message(u"gone"_s, u"Nobody"_s)); // nobody matches: nothing picked
    EXPECT_TRUE(window->picked_entries().isEmpty());
    db().exec(u"DELETE FROM cv_recipients"_s);
    EXPECT_FALSE(window->load_message(u"bob"_s, u"Lost"_s)); // an empty list: the message stays
    EXPECT_EQ(message.toPlainText(), u"Nobody"_s);
}

TEST_F(SendFormTest, LoadPlacesTheFirstRunAndHidesWhatTheSettingsSay)
{
    state->settings.put_setting({u"display", u"remove_presets"}, true);
    state->settings.put_setting({u"display", u"remove_reports"}, true);
    window = std::make_unique<console::send_form>(*context, [](const QString&, const QStringList&) {});
    QString error;
    ASSERT_TRUE(window->load(&error)) << error.toStdString();
    EXPECT_TRUE(window->loop()->running());
    EXPECT_EQ(state->settings.get_setting_long({u"display", u"connection_monitor_width"}), 4000);
    EXPECT_TRUE(window->findChild<QAction*>(u"view_connection_monitor"_s)->isChecked());
    EXPECT_TRUE(control<QPushButton>(*window, "btnProg1").isHidden());
    EXPECT_FALSE(window->findChild<QAction*>(u"mnuReports"_s)->isVisible());
    EXPECT_EQ(window->unpicked_entries().size(), 3);
    window->set_counter_panel(kPendPanel, u"Pend: 0"_s);
    window->close();
    EXPECT_FALSE(window->loop()->running());
}

TEST_F(SendFormTest, EveryNamedControlPublishesItsNameAndCaption)
{
    make_window();
    for (QWidget* control : window->findChildren<QWidget*>()) {
        const QString name = control->objectName();
        if (name.isEmpty() || name.startsWith(u"qt_"_s)) {
            continue;
        }
        EXPECT_EQ(control->accessibleDescription(), name);
        const auto* button = qobject_cast<QAbstractButton*>(control);
        const auto* label = qobject_cast<QLabel*>(control);
        const bool captioned =
            (button != nullptr && !button->text().isEmpty()) || (label != nullptr && !label->text().isEmpty());
        if (captioned || qobject_cast<QListWidget*>(control) != nullptr) {
            EXPECT_FALSE(control->accessibleName().isEmpty()) << name.toStdString();
        }
    }
}

} // namespace
} // namespace cvd::testing
