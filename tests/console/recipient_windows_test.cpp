// The recipient dialog and the recipient list: the frame follows the carrier, twins, flags and constants,
// what Apply stores in both modes, and delete with its check.
#include "console/add_group.h"
#include "console/edit_group.h"
#include "console/frm_add_recipient.h"
#include "console/frm_group_members.h"
#include "console/group_maint.h"
#include "console/list_groups.h"
#include "console/list_recipients.h"
#include "console/recipient_windows.h"
#include "console_test.h"
#include "support/printers.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QTest>
#include <QTreeView>
#include <memory>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

// One carrier per protocol, named so that the list order is the protocol order.
const char* const kCarrierRows = "INSERT INTO cv_carriers (cv_name, cv_dial_type, cv_maxchars) VALUES "
                                 "('c0', 'fax', 4000), ('c1', 'fxs', 4100), ('c2', 'gsm', 150), ('c3', 'eml', 900), "
                                 "('c4', 'snpp', 230), ('c5', 'tap', 220), ('c6', 'tone', 20), ('c7', 'ucp', 140), "
                                 "('c8', 'wctp', 200)";

class RecipientWindows : public ConsoleTest
{
protected:
    void SetUp() override
    {
        ConsoleTest::SetUp();
        db().exec(QString::fromLatin1(kCarrierRows));
    }

    QLineEdit& box(QWidget& window, const char* name) { return control<QLineEdit>(window, name); }
    // Types into a box and leaves it, as the operator's Tab does.
    void type_and_leave(QWidget& window, const char* name, const QString& text)
    {
        QLineEdit& edit = box(window, name);
        edit.setText(text);
        emit edit.editingFinished();
    }
    // Every column of every row the query selects, as stored text; `key` is bound to ?1 when given.
    QStringList stored(const QString& sql, const QString& key = {})
    {
        store::Statement select = db().prepare(sql);
        if (!key.isNull()) {
            select.bind(1, key);
        }
        QStringList texts;
        while (select.step()) {
            for (int column = 0; column < select.column_count(); ++column) {
                texts.append(select.text(column).value_or(u"<null>"_s));
            }
        }
        return texts;
    }
    QWidget* shown_frame(console::frmAddRecipient& dialog)
    {
        return control<QStackedWidget>(dialog, "tabFrames").currentWidget();
    }
};

TEST_F(RecipientWindows, EachFrameOffersItsFlagsAndStoresItsConstants)
{
    struct Case
    {
        int carrier;
        const char* frame;
        const char* identity;
        QString identity_label;
        QStringList boxes;  // the flag boxes the frame offers; all are checked before Apply
        QStringList absent; // boxes of the same kind that the frame does not have
        QStringList stored; // cv_drop_control, cv_SendSubject, cv_remove_from, cv_alpha
    };
    const Case cases[] = {
        {0,
         "fraFax",
         "txtFaxPhone",
         u"Phone #"_s,
         {u"chkFaxSendSubject"_s},
         {u"chkFaxAlpha"_s},
         {u"0"_s, u"-1"_s, u"0"_s, u"-1"_s}},
        {1,
         "fraFaxSrv",
         "txtFaxSrvPhone",
         u"Phone #"_s,
         {u"chkFaxSrvSendSubject"_s},
         {u"chkFaxSrvStripSender"_s},
         {u"0"_s, u"-1"_s, u"0"_s, u"-1"_s}},
        {2,
         "fraGsmat",
         "txtGsmatPhone",
         u"Phone #"_s,
         {u"chkGsmatStripNonPrint"_s, u"chkGsmatStripSender"_s, u"chkGsmatAlpha"_s},
         {u"chkGsmatSendSubject"_s},
         {u"-1"_s, u"0"_s, u"-1"_s, u"-1"_s}},
        {3,
         "fraSmtp",
         "txtSmtpEmail",
         u"ID / PIN"_s,
         {u"chkSmtpStripNonPrint"_s, u"chkSmtpSendSubject"_s, u"chkSmtpStripSender"_s, u"chkSmtpAlpha"_s},
         {},
         {u"-1"_s, u"-1"_s, u"-1"_s, u"-1"_s}},
        {4,
         "fraSnpp",
         "txtSnppId",
         u"ID / PIN"_s,
         {u"chkSnppStripNonPrint"_s, u"chkSnppStripSender"_s, u"chkSnppAlpha"_s},
         {u"chkSnppSendSubject"_s},
         {u"-1"_s, u"0"_s, u"-1"_s, u"-1"_s}},
        {6,
         "fraTone",
         "txtTonePhone",
         u"Phone #"_s,
         {u"chkToneStripSender"_s},
         {u"chkToneStripNonPrint"_s, u"chkToneAlpha"_s},
         {u"-1"_s, u"0"_s, u"-1"_s, u"0"_s}},
        {8,
         "fraWctp",
         "txtWctpId",
         u"ID / PIN"_s,
         {u"chkWctpStripNonPrint"_s, u"chkWctpStripSender"_s, u"chkWctpAlpha"_s},
         {u"chkWctpSendSubject"_s},
         {u"-1"_s, u"0"_s, u"-1"_s, u"-1"_s}},
    };
    int added = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.frame);
        console::frmAddRecipient dialog(*context, false, {}, &send_form.window());
        dialog.show();
        control<QComboBox>(dialog, "cmbFaxCarrier").setCurrentIndex(c.carrier);
        QWidget* frame = shown_frame(dialog);
        ASSERT_EQ(frame->objectName(), QString::fromLatin1(c.frame));
        const std::string protocol = std::string(c.frame).substr(3);
        EXPECT_EQ(control<QLabel>(*frame, ("lbl" + std::string(c.identity).substr(3)).c_str()).text(),
                  c.identity_label);
        for (const QString& name : c.boxes) {
            auto& flag = control<QCheckBox>(dialog, name.toLatin1().constData());
            if (!flag.isChecked()) {
                flag.click();
            }
        }
        for (const QString& name : c.absent) {
            EXPECT_EQ(dialog.findChild<QCheckBox*>(name), nullptr) << name.toStdString();
        }
        const QString name = u"r"_s + QString::number(c.carrier);
        box(*frame, c.identity).setText(u"555"_s);
        type_and_leave(*frame, ("txt" + protocol + "FullName").c_str(), name);
        control<QPushButton>(*frame, ("btn" + protocol + "Apply").c_str()).click();
        EXPECT_EQ(env.prompter.boxes.value(added), (Notice{u"Recipient record added"_s, u"Recipient Added"_s}));
        ++added;
        EXPECT_EQ(stored(u"SELECT cv_drop_control, cv_SendSubject, cv_remove_from, cv_alpha FROM cv_recipients "
                         "WHERE cv_name = ?1"_s,
                         name),
                  c.stored);
    }
}

TEST_F(RecipientWindows, TwinsFollowTheCarrierAndTheBoxRulesApplyOnLeaving)
{
    console::frmAddRecipient dialog(*context, false, {}, &send_form.window());
    dialog.show();
    EXPECT_EQ(dialog.windowTitle(), u"Add Recipient"_s);
    EXPECT_EQ(shown_frame(dialog)->objectName(), u"fraFax"_s);
    // The frames' own defaults, not the first carrier's 4000.
    EXPECT_EQ(box(dialog, "txtFaxMaxChars").text(), u"5000"_s);
    EXPECT_EQ(box(dialog, "txtToneMaxChars").text(), u"10"_s);
    EXPECT_EQ(box(dialog, "txtTapPriority").text(), u"100"_s);

    type_and_leave(dialog, "txtFaxFullName", u"Ann B. Cole"_s);
    type_and_leave(dialog, "txtFaxPhone", u" 12345 "_s);
    type_and_leave(dialog, "txtFaxMaxChars", u"5"_s);
    control<QComboBox>(dialog, "cmbFaxCarrier").setCurrentIndex(5);
    EXPECT_EQ(shown_frame(dialog)->objectName(), u"fraTap"_s);
    EXPECT_EQ(control<QComboBox>(dialog, "cmbUcpCarrier").currentText(), u"c5"_s);
    EXPECT_EQ(control<QComboBox>(dialog, "cmbCarrierType").currentText(), u"tap"_s);
    EXPECT_EQ(box(dialog, "txtTapShortName").text(), u"ann_b_cole"_s);
    EXPECT_EQ(box(dialog, "txtTapId").text(), u"12345"_s);
    EXPECT_EQ(box(dialog, "txtWctpMaxChars").text(), u"220"_s); // the new carrier's limit in Add mode

    type_and_leave(dialog, "txtTapMaxChars", u"5"_s);
    EXPECT_EQ(box(dialog, "txtGsmatMaxChars").text(), u"10"_s);
    control<QComboBox>(dialog, "cmbTapType").setCurrentIndex(1);
    EXPECT_EQ(control<QComboBox>(dialog, "cmbSmtpType").currentText(), u"Ad-Hoc"_s);
    control<QCheckBox>(dialog, "chkTapAlpha").click();
    EXPECT_FALSE(control<QCheckBox>(dialog, "chkUcpAlpha").isChecked());
    // Extract Subject is not copied between the frames that have it.
    control<QCheckBox>(dialog, "chkFaxSendSubject").click();
    EXPECT_TRUE(control<QCheckBox>(dialog, "chkSmtpSendSubject").isChecked());

    control<QPushButton>(dialog, "btnTapAdvanced").click();
    EXPECT_EQ(shown_frame(dialog)->objectName(), u"fraTapAdv"_s);
    EXPECT_EQ(dialog.windowTitle(), u"Add Recipient - Advanced"_s);
    EXPECT_EQ(control<QLabel>(dialog, "lblTapPriority").text(), u"Priorty"_s);
    control<QPushButton>(dialog, "btnTapBack").click();
    EXPECT_EQ(shown_frame(dialog)->objectName(), u"fraTap"_s);
}

TEST_F(RecipientWindows, AddStaysOpenForTheNextAndARefusalKeepsWhatWasTyped)
{
    console::frmAddRecipient dialog(*context, false, {}, &send_form.window());
    dialog.show();
    control<QComboBox>(dialog, "cmbFaxCarrier").setCurrentIndex(5);
    type_and_leave(dialog, "txtTapFullName", u"Pat Lee"_s);
    type_and_leave(dialog, "txtTapShortName", u"pat's"_s);
    auto& apply = control<QPushButton>(dialog, "btnTapApply");
    apply.click();
    EXPECT_EQ(env.prompter.boxes.value(0), (Notice{u"You must enter a ID/PIN number"_s, u"Missing Data"_s}));
    EXPECT_EQ(box(dialog, "txtTapShortName").text(), u"pat`s"_s);
    EXPECT_TRUE(dialog.isVisible());

    type_and_leave(dialog, "txtTapId", u"777"_s);
    control<QCheckBox>(dialog, "chkTapStripSender").click();
    apply.click();
    EXPECT_EQ(env.prompter.boxes.value(1), (Notice{u"Recipient record added"_s, u"Recipient Added"_s}));
    EXPECT_EQ(stored(u"SELECT cv_name, cv_full_name, cv_id, cv_carrier, cv_maxchars, cv_remove_from, cv_group "
                     "FROM cv_recipients"_s),
              (QStringList{u"pat`s"_s, u"Pat Lee"_s, u"777"_s, u"c5"_s, u"220"_s, u"-1"_s, u"0"_s}));
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(box(dialog, "txtWctpFullName").text(), QString());
    EXPECT_EQ(box(dialog, "txtTapId").text(), QString());
    EXPECT_EQ(control<QComboBox>(dialog, "cmbTapCarrier").currentText(), u"c5"_s);
    EXPECT_TRUE(control<QCheckBox>(dialog, "chkTapStripSender").isChecked());

    EXPECT_EQ(send_form.show_users_calls, 0);
    dialog.reject();
    EXPECT_EQ(send_form.show_users_calls, 1);
}

TEST_F(RecipientWindows, EditLoadsTheRowKeepsItsLimitAndStoresTheToneConstants)
{
    db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_id, cv_carrier, cv_maxchars, cv_priority, "
              "cv_drop_control, cv_SendSubject, cv_remove_from, cv_alpha, cv_ad_hoc, cv_group, cv_on_call) "
              "VALUES ('tina', 'Tina T', '555', 'c5', 80, 7, 0, -1, 0, -1, 0, 0, 0)"_s);
    console::frmAddRecipient dialog(*context, true, u"tina"_s, &send_form.window());
    dialog.show();
    EXPECT_EQ(dialog.windowTitle(), u"Edit Recipient"_s);
    EXPECT_EQ(shown_frame(dialog)->objectName(), u"fraTap"_s);
    EXPECT_FALSE(box(dialog, "txtTapShortName").isEnabled());
    EXPECT_EQ(box(dialog, "txtToneFullName").text(), u"Tina T"_s);
    EXPECT_TRUE(control<QCheckBox>(dialog, "chkUcpAlpha").isChecked());

    control<QComboBox>(dialog, "cmbTapCarrier").setCurrentIndex(6);
    EXPECT_EQ(shown_frame(dialog)->objectName(), u"fraTone"_s);
    EXPECT_EQ(box(dialog, "txtToneMaxChars").text(), u"80"_s); // edit mode keeps the row's limit
    control<QPushButton>(dialog, "btnToneApply").click();
    EXPECT_EQ(env.prompter.boxes, (QList<Notice>{{u"Recipient record updated"_s, u"Recipient Updated"_s}}));
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(stored(u"SELECT cv_carrier, cv_maxchars, cv_priority, cv_drop_control, cv_alpha FROM cv_recipients"_s),
              (QStringList{u"c6"_s, u"80"_s, u"7"_s, u"-1"_s, u"0"_s}));

    // A refused edit closes too, and stores nothing.
    console::frmAddRecipient again(*context, true, u"tina"_s, &send_form.window());
    again.show();
    type_and_leave(again, "txtToneFullName", u"Tina (T)"_s);
    control<QPushButton>(again, "btnToneApply").click();
    EXPECT_EQ(env.prompter.boxes.last(), (Notice{u"Illegal Characters in Full Name"_s, u"Bad Full Name"_s}));
    EXPECT_FALSE(again.isVisible());
    EXPECT_EQ(stored(u"SELECT cv_full_name FROM cv_recipients"_s), QStringList{u"Tina T"_s});

    // A row whose carrier is gone keeps it through an edit.
    db().exec(u"UPDATE cv_recipients SET cv_carrier = 'retired'"_s);
    console::frmAddRecipient orphan(*context, true, u"tina"_s, &send_form.window());
    orphan.show();
    EXPECT_EQ(control<QComboBox>(orphan, "cmbWctpCarrier").currentText(), u"retired"_s);
    control<QPushButton>(orphan, "btnFaxApply").click();
    EXPECT_EQ(stored(u"SELECT cv_carrier FROM cv_recipients"_s), QStringList{u"retired"_s});
}

TEST_F(RecipientWindows, WithoutCarriersTheDialogSaysSoAndClosesItself)
{
    db().exec(u"DELETE FROM cv_carriers"_s);
    console::register_recipient_windows(*context);
    context->catalog.open(u"recipients_add"_s);
    EXPECT_EQ(env.prompter.boxes, (QList<Notice>{{u"At Least One Carrier Must Be Setup First"_s, u"No Carriers"_s}}));
    EXPECT_EQ(send_form.show_users_calls, 1);
}

TEST_F(RecipientWindows, ListDeletesUnlessMessagesWaitAndEditsThroughTheDialog)
{
    db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_carrier, cv_group, cv_id) VALUES "
              "('bob', 'Bob', 'c5', 0, '1'), ('ann', 'Ann', 'c5', 0, '2'), ('crew', 'A Crew', '', -1, '')"_s);
    db().exec(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('crew', 'ann'), ('crew', 'bob')"_s);
    db().exec(u"INSERT INTO cv_messages (cv_recipient, cv_sent) VALUES ('bob', 0), ('ann', -1)"_s);
    console::register_recipient_windows(*context);

    console::list_recipients remove(*context, console::list_recipients::Mode::Delete, {}, &send_form.window());
    remove.show();
    EXPECT_EQ(remove.windowTitle(), u"Delete Recipient"_s);
    auto& list = control<QTreeView>(remove, "lstRecipients");
    ASSERT_EQ(list.model()->rowCount(), 2); // groups are not listed
    auto& act = control<QPushButton>(remove, "btnEdit");
    EXPECT_EQ(act.text(), u"&Delete"_s);
    list.setCurrentIndex(list.model()->index(1, 0));
    act.click();
    EXPECT_EQ(env.prompter.boxes,
              (QList<Notice>{{u"A recipient can not be deleted if there are cv_messages pending for it"_s,
                              u"Unable to Delete"_s}}));
    list.setCurrentIndex(list.model()->index(0, 0));
    act.click();
    EXPECT_EQ(list.model()->rowCount(), 1);
    EXPECT_EQ(list.model()->index(0, 0).data().toString(), u"bob"_s);
    EXPECT_EQ(stored(u"SELECT cv_recipient FROM cv_groups"_s), QStringList{u"bob"_s});
    remove.reject();
    EXPECT_EQ(send_form.show_users_calls, 1);

    // Edit mode, from the menu: the recipient dialog for the chosen row, and the list read again afterwards.
    when_modal([this](QWidget& window) {
        auto& edit_list = control<QTreeView>(window, "lstRecipients");
        edit_list.setCurrentIndex(edit_list.model()->index(0, 0));
        when_modal([this](QWidget& dialog) {
            EXPECT_EQ(box(dialog, "txtTapShortName").text(), u"bob"_s);
            box(dialog, "txtTapFullName").setText(u"Robert"_s);
            control<QPushButton>(dialog, "btnTapApply").click();
        });
        control<QPushButton>(window, "btnEdit").click();
        EXPECT_EQ(edit_list.model()->index(0, 1).data().toString(), u"Robert"_s);
        control<QPushButton>(window, "btnClose").click();
    });
    context->catalog.open(u"recipients_edit"_s);
    EXPECT_EQ(stored(u"SELECT cv_full_name FROM cv_recipients WHERE cv_name = 'bob'"_s), QStringList{u"Robert"_s});
    EXPECT_EQ(send_form.show_users_calls, 2); // once by the dialog; the list in edit mode leaves it to the dialog
}

TEST_F(RecipientWindows, EveryWindowNamesItsControlsByCaptionAndObjectName)
{
    QWidget* parent = &send_form.window();
    std::vector<std::unique_ptr<QWidget>> windows_under_test;
    windows_under_test.push_back(std::make_unique<console::frmAddRecipient>(*context, false, QString(), parent));
    windows_under_test.push_back(std::make_unique<console::list_recipients>(
        *context, console::list_recipients::Mode::Edit, console::list_recipients::EditRecipient(), parent));
    windows_under_test.push_back(std::make_unique<console::add_group>(*context, parent));
    windows_under_test.push_back(std::make_unique<console::edit_group>(*context, parent));
    windows_under_test.push_back(std::make_unique<console::list_groups>(*context, console::list_groups::Mode::Members,
                                                                        console::list_groups::OpenNext(), parent));
    windows_under_test.push_back(std::make_unique<console::group_maint>(*context, parent));
    windows_under_test.push_back(std::make_unique<console::frmGroupMembers>(*context, parent));
    for (const std::unique_ptr<QWidget>& window : windows_under_test) {
        const std::string window_name = window->metaObject()->className();
        for (QWidget* control : window->findChildren<QWidget*>()) {
            const QString name = control->objectName();
            if (name.isEmpty() || name.startsWith(u"qt_"_s)) {
                continue;
            }
            EXPECT_EQ(control->accessibleDescription(), name) << window_name;
            // Buttons, labels and the boxes their labels stand for carry the caption an operator sees.
            if (qobject_cast<QAbstractButton*>(control) != nullptr || qobject_cast<QLabel*>(control) != nullptr ||
                qobject_cast<QLineEdit*>(control) != nullptr) {
                EXPECT_FALSE(control->accessibleName().isEmpty()) << window_name << ' ' << name.toStdString();
            }
        }
    }
}

} // namespace
} // namespace cvd::testing
