// Password dialogs and help: the masked box, the password setup, the start gate through the real dialog.
#include "console/console_prompter.h"
#include "console/frm_password_setup.h"
#include "console/help_viewer.h"
#include "console/masked_entry.h"
#include "console_test.h"
#include "core/passwords.h"
#include "core/setting_keys.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

class Access : public ConsoleTest
{
protected:
    // Types each entry into the next password dialog and applies it; nullopt cancels. What each dialog showed
    // (title|prompt) and what its box held go to `seen`.
    static void answer_password_dialogs(QList<std::optional<QString>> entries, QStringList& seen)
    {
        when_modal([entries, &seen](QWidget& dialog) mutable {
            const std::optional<QString> entry = entries.takeFirst();
            seen.append(dialog.windowTitle() + u'|' + dialog.findChild<QLabel*>(u"lblPrompt"_s)->text());
            auto* box = dialog.findChild<console::MaskedEntry*>(u"fpassword"_s);
            QTest::keyClicks(box, entry.value_or(QString()));
            seen.append(box->real_text());
            QTest::mouseClick(dialog.findChild<QPushButton*>(entry ? u"btnApply"_s : u"btnCancel"_s), Qt::LeftButton);
            if (!entries.isEmpty()) {
                answer_password_dialogs(entries, seen);
            }
        });
    }
};

TEST_F(Access, MaskedEntryEditsTheRealTextAtTheCaretShowsOnlyStarsAndKeepsItsLimit)
{
    for (const int limit : {14, 20}) {
        QWidget window;
        auto* entry = new console::MaskedEntry(limit, &window);
        QTest::keyClicks(entry, u"abcdef"_s);
        EXPECT_EQ(entry->text(), u"******"_s);
        entry->setCursorPosition(2);
        QTest::keyClicks(entry, u"X"_s); // inserted at the caret
        EXPECT_EQ(entry->real_text(), u"abXcdef"_s);
        entry->setSelection(1, 3);
        QTest::keyClicks(entry, u"Y"_s); // the selection replaced
        EXPECT_EQ(entry->real_text(), u"aYdef"_s);
        QTest::keyClick(entry, Qt::Key_Backspace);
        QTest::keyClick(entry, Qt::Key_Delete);
        EXPECT_EQ(entry->real_text(), u"aef"_s);
        EXPECT_EQ(entry->cursorPosition(), 1);

        // Nothing leaves through the clipboard and nothing comes in from it.
        QApplication::clipboard()->setText(u"pasted"_s);
        QTest::keyClick(entry, Qt::Key_V, Qt::ControlModifier);
        entry->selectAll();
        QTest::keyClick(entry, Qt::Key_C, Qt::ControlModifier);
        EXPECT_EQ(QApplication::clipboard()->text(), u"pasted"_s);
        EXPECT_EQ(entry->real_text(), u"aef"_s);

        entry->set_real_text(QString());
        QTest::keyClicks(entry, u"0123456789abcdefghijklmnop"_s);
        EXPECT_EQ(entry->real_text(), u"0123456789abcdefghijklmnop"_s.left(limit));
        EXPECT_EQ(entry->text(), QString(limit, u'*'));
    }
}

TEST_F(Access, PasswordSetupOpensFilledRefusesAMismatchAndStoresOnApply)
{
    state->admin_password = u"boss"_s;
    console::frmPasswordSetup dialog(*context, &send_form.window());
    dialog.show();
    EXPECT_EQ(control<console::MaskedEntry>(dialog, "fAdmin2").real_text(), u"boss"_s);
    EXPECT_EQ(control<console::MaskedEntry>(dialog, "fAdmin2").text(), u"****"_s);
    QTest::keyClicks(&control<console::MaskedEntry>(dialog, "fSuper1"), u"chief"_s);
    QTest::keyClicks(&control<console::MaskedEntry>(dialog, "fSuper2"), u"chef"_s);
    QTest::mouseClick(&control<QPushButton>(dialog, "add"), Qt::LeftButton);
    EXPECT_EQ(env.prompter.box_titles(), QStringList{u"Password Mismatch"_s});
    EXPECT_TRUE(dialog.isVisible());

    control<console::MaskedEntry>(dialog, "fSuper2").set_real_text(u"chief"_s);
    QTest::mouseClick(&control<QPushButton>(dialog, "add"), Qt::LeftButton);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(state->super_password, u"chief"_s);
    EXPECT_EQ(state->settings.get_setting_text(setting_keys::security::super_password), encode_password(u"chief"_s));
}

TEST_F(Access, StartGateAsksThroughThePasswordDialogUntilRightAndACancelEnds)
{
    console::ConsolePrompter prompter;
    AppState gate(prompter, env.clock, platform::Registry(env.registry_root()), env.runtime_dir());
    gate.user_password = u"open"_s;
    QStringList seen;
    answer_password_dialogs({u"wrong"_s, u"open"_s}, seen);
    EXPECT_TRUE(pass_start_gate(gate));
    const QString asked = u"Password Required|A Password is required to start Corvane Desk"_s;
    EXPECT_EQ(seen, (QStringList{asked, u"wrong"_s, asked, u"open"_s}));

    seen.clear();
    answer_password_dialogs({std::nullopt}, seen);
    EXPECT_FALSE(pass_start_gate(gate));
    EXPECT_EQ(seen.size(), 2);

    // The database password box takes 14 characters.
    seen.clear();
    answer_password_dialogs({u"0123456789abcdef"_s}, seen);
    EXPECT_EQ(prompter.ask_password(PasswordKind::Database, {}), u"0123456789abcd"_s);
    EXPECT_TRUE(seen.value(0).startsWith(u"Database Password|The Corvane Desk database has been"_s));
}

TEST_F(Access, HelpWithoutItsFileSaysSo)
{
    console::help_contents(*context);
    EXPECT_EQ(env.prompter.boxes.value(0), (Notice{u"Unable to open help file"_s, u"Help Not Available"_s}));
}

} // namespace
} // namespace cvd::testing
