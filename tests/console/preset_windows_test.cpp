// The preset windows: a program button's preset, the preset list with its sorts, and its edit window.
#include "console/frm_more_presets.h"
#include "console/preset_form.h"
#include "console_test.h"
#include "core/settings.h"
#include "store/database.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

class PresetWindows : public ConsoleTest
{
protected:
    void SetUp() override
    {
        ConsoleTest::SetUp();
        db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_group, cv_ad_hoc) VALUES "
                  "('ops', 'Operations', -1, 0), ('zed', 'Zed Ward', 0, 0)"_s);
        addressbook::PresetTable& presets = shared.presets;
        addressbook::load_presets(*state, presets);
        presets.at(2) = {u"2"_s, u"beta"_s, u"second text"_s, u"zed"_s};
        presets.at(7) = {u"7"_s, u"Alpha"_s, u"seventh text"_s, QString()};
        addressbook::save_presets(*state, presets);
    }

    // The row of the list whose column shows the text, clicked as an operator would.
    void click_row(QTreeWidget& list, int column, const QString& text)
    {
        const QList<QTreeWidgetItem*> found = list.findItems(text, Qt::MatchExactly, column);
        ASSERT_EQ(found.size(), 1) << text.toStdString();
        QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.visualItemRect(found.front()).center());
    }

    QStringList column(QTreeWidget& list, int index, int rows = 3)
    {
        QStringList texts;
        for (int row = 0; row < rows; ++row) {
            texts.append(list.topLevelItem(row)->text(index));
        }
        return texts;
    }

    QStringList stored_row(int index)
    {
        store::Statement select =
            db().prepare(u"SELECT cv_description, cv_recipient, cv_message FROM cv_presets WHERE cv_index = ?1"_s);
        select.bind(1, index);
        EXPECT_TRUE(select.step());
        return {select.text(0).value_or(QString()), select.text(1).value_or(QString()),
                select.text(2).value_or(QString())};
    }

    console::frmMorePresets& open_list()
    {
        auto& window = windows.open<console::frmMorePresets>(*context, &send_form.window());
        window.show();
        return window;
    }
};

TEST_F(PresetWindows, ProgramButtonPresetIsStoredCleanedAndRenamesTheButtons)
{
    auto& form = windows.open<console::preset_form>(*context, 2, &send_form.window());
    form.show();
    EXPECT_EQ(form.windowTitle(), u"beta - Preprogrammed Text"_s);
    auto& list = control<QTreeWidget>(form, "lstRecipient");
    EXPECT_EQ(list.topLevelItem(0)->text(0), u"(none)"_s);
    EXPECT_EQ(list.currentItem()->text(1), u"zed"_s);

    auto& text = control<QPlainTextEdit>(form, "preset_text");
    text.clear();
    text.insertPlainText(QString(201, u'x'));
    EXPECT_EQ(text.toPlainText(), QString(200, u'x'));
    text.clear();
    QTest::keyClicks(&text, u"Boiler  room"_s);
    QTest::keyClick(&text, Qt::Key_Return);
    QTest::keyClicks(&text, u"is hot"_s);
    auto& button_text = control<QLineEdit>(form, "fbutton");
    button_text.clear();
    QTest::keyClicks(&button_text, u"Boiler"_s);
    click_row(list, 1, u"ops"_s);
    QTest::mouseClick(&control<QPushButton>(form, "apply"), Qt::LeftButton);

    // The message lives in cv_recipient and the short name in cv_message.
    const QStringList stored{u"Boiler"_s, u"Boiler room is hot"_s, u"ops"_s};
    EXPECT_EQ(stored_row(2), stored);
    EXPECT_EQ(shared.presets.at(2), (addressbook::Preset{u"2"_s, stored[0], stored[1], stored[2]}));
    EXPECT_EQ(send_form.prog_caption_updates, 1);
    EXPECT_FALSE(form.isVisible());
}

TEST_F(PresetWindows, HeadingClicksAlternateAndTheOrderIsKept)
{
    auto& window = open_list();
    auto& list = control<QTreeWidget>(window, "lstPresets");
    EXPECT_EQ(column(list, 0), (QStringList{u"1"_s, u"2"_s, u"3"_s})); // nothing stored: by number
    EXPECT_EQ(column(list, 2, 2), (QStringList{QString(), u"Zed Ward"_s}));
    QHeaderView& header = *list.header();
    const QPoint description_head(header.sectionViewportPosition(1) + 5, header.height() / 2);

    const std::pair<QString, QStringList> clicks[] = {
        {u"SortByDescriptionAscending"_s, {u"6"_s, u"8"_s, u"9"_s}}, // empty descriptions first, by number
        {u"SortByDescriptionDescending"_s, {u"5"_s, u"4"_s, u"3"_s}},
        {u"SortByDescriptionAscending"_s, {u"6"_s, u"8"_s, u"9"_s}},
    };
    click_row(list, 0, u"2"_s);
    for (const auto& [order, numbers] : clicks) {
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, description_head);
        EXPECT_EQ(state->settings.get_setting_text({u"display", u"preset_sort_order"}), order);
        EXPECT_EQ(column(list, 0), numbers);
    }
    EXPECT_EQ(list.currentItem()->text(0), u"2"_s) << "the selection follows its row";
    window.close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    // The next opening sorts as the stored order says.
    state->settings.put_setting({u"display", u"preset_sort_order"}, u"SortByDescriptionDescending"_s);
    EXPECT_EQ(column(control<QTreeWidget>(open_list(), "lstPresets"), 0), (QStringList{u"5"_s, u"4"_s, u"3"_s}));
}

TEST_F(PresetWindows, ApplyEnterAndDoubleClickHandTheSelectedPresetToTheSendWindow)
{
    const std::function<void(QTreeWidget&, QPushButton&)> ways[] = {
        [](QTreeWidget&, QPushButton& apply) { QTest::mouseClick(&apply, Qt::LeftButton); },
        [](QTreeWidget& list, QPushButton&) { QTest::keyClick(&list, Qt::Key_Return); },
        [](QTreeWidget& list, QPushButton&) {
            QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, list.visualItemRect(list.currentItem()).center());
        },
    };
    for (const auto& use : ways) {
        auto& window = open_list();
        auto& list = control<QTreeWidget>(window, "lstPresets");
        auto& apply = control<QPushButton>(window, "btnAccept");
        QTest::mouseClick(&apply, Qt::LeftButton);
        EXPECT_TRUE(send_form.used_presets.isEmpty()) << "nothing is selected";
        EXPECT_TRUE(window.isVisible());

        click_row(list, 0, u"7"_s);
        use(list, apply);
        ASSERT_EQ(send_form.used_presets.size(), 1);
        EXPECT_EQ(send_form.used_presets.takeFirst(), shared.presets.at(7));
        EXPECT_FALSE(window.isVisible());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    EXPECT_EQ(send_form.prog_caption_updates, 3);
}

TEST_F(PresetWindows, EditedPresetIsStoredAndShownInItsRow)
{
    auto& window = open_list();
    auto& list = control<QTreeWidget>(window, "lstPresets");
    click_row(list, 0, u"7"_s);
    when_modal([this](QWidget& edit) {
        EXPECT_EQ(edit.windowTitle(), u"Edit Preset Message"_s);
        auto& description = control<QLineEdit>(edit, "txtDescription");
        EXPECT_EQ(description.text(), u"Alpha"_s);
        QTest::keyClicks(&description, u" \"hot\""_s);
        click_row(control<QTreeWidget>(edit, "lstRecipient"), 1, u"ops"_s);
        QTest::mouseClick(&control<QPushButton>(edit, "btnAccept"), Qt::LeftButton);
    });
    QTest::mouseClick(&control<QPushButton>(window, "btnEdit"), Qt::LeftButton);

    EXPECT_EQ(list.currentItem()->text(0), u"7"_s);
    EXPECT_EQ(column(list, 1, 7).last(), u"Alpha 'hot'"_s);
    EXPECT_EQ(column(list, 2, 7).last(), u"(G) Operations"_s);
    EXPECT_EQ(stored_row(7), (QStringList{u"Alpha 'hot'"_s, u"seventh text"_s, u"ops"_s}));
    EXPECT_TRUE(send_form.used_presets.isEmpty());
}

} // namespace
} // namespace cvd::testing
