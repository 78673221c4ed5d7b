// The carrier dialog and the carrier list: what an operator sees, what Apply stores, what the list refuses.
#include "addressbook/carriers_store.h"
#include "carrier_entry.h"
#include "console/carrier_windows.h"
#include "console/frm_add_carrier.h"
#include "console/frm_export_text.h"
#include "console/frm_import_text.h"
#include "console/list_carriers.h"
#include "console_test.h"
#include "core/databases.h"
#include "store/database.h"
#include "store/schema.h"

#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

using addressbook::CarrierRow;
using addressbook::Protocol;

class CarrierWindows : public ConsoleTest
{
protected:
    std::optional<CarrierRow> row(const QString& name) { return addressbook::read_carrier(db(), name); }

    bool add(const CarrierEntry& entry) { return add_carrier_through_window(*context, &send_form.window(), entry); }

    // What a box shows: a text box's text or a list's current text.
    static QString shown(QWidget& dialog, const QString& name)
    {
        if (auto* list = dialog.findChild<QComboBox*>(name)) {
            return list->currentText();
        }
        return carrier_box(dialog, name).text();
    }

    static int tab(QWidget& dialog) { return dialog.findChild<QStackedWidget*>(u"tabCarrier"_s)->currentIndex(); }
};

TEST_F(CarrierWindows, NewCarrierStartsOnSmtpWithEachProtocolsDefaults)
{
    console::frmAddCarrier dialog(*context, false, {}, &send_form.window());
    dialog.show();
    EXPECT_EQ(dialog.windowTitle(), u"Add Carrier"_s);
    EXPECT_EQ(tab(dialog), 3);
    const std::pair<const char16_t*, const char16_t*> expected[] = {
        {u"cmbFaxClass", u"1"},           {u"cmbFaxInitString", u"(auto)"},
        {u"txtFaxMaxChars", u"5000"},     {u"txtFaxSrvMaxChars", u"5000"},
        {u"cmbGsmatBaud", u"115200"},     {u"cmbGsmatParity", u"NONE"},
        {u"cmbGsmatDataBits", u"8"},      {u"cmbGsmatStopBits", u"1"},
        {u"cmbGsmatInitString", u""},     {u"txtGsmatMsgLimit", u"0"},
        {u"txtGsmatMaxChars", u"160"},    {u"cmbSmtpPort", u"25"},
        {u"cmbSmtpAuthType", u"None"},    {u"cmbSnppPort", u"444"},
        {u"cmbSnppAuthType", u"None"},    {u"cmbTapBaud", u"1200"},
        {u"cmbTapParity", u"EVEN"},       {u"cmbTapDataBits", u"7"},
        {u"cmbTapInitString", u"(auto)"}, {u"txtTapMsgLimit", u"0"},
        {u"cmbToneInitString", u""},      {u"txtToneWaitString", u",,@"},
        {u"txtToneMaxChars", u"10"},      {u"cmbUcpBaud", u"1200"},
        {u"cmbUcpParity", u"EVEN"},       {u"cmbUcpInitString", u"(auto)"},
        {u"cmbWctpPort", u"80"},          {u"cmbWctpSendMethod", u"Transient Client"},
        {u"cmbWctpAuthType", u"None"},    {u"txtWctpMaxChars", u"160"},
    };
    for (const auto& [name, text] : expected) {
        EXPECT_EQ(shown(dialog, QString::fromUtf16(name)), QString::fromUtf16(text))
            << QString::fromUtf16(name).toStdString();
    }
    // GSMAT and TONE start with no init string chosen, unlike FAX, TAP and UCP.
    EXPECT_EQ(carrier_list(dialog, u"cmbGsmatInitString"_s).currentIndex(), -1);
    EXPECT_EQ(carrier_list(dialog, u"cmbToneInitString"_s).currentIndex(), -1);
    EXPECT_EQ(carrier_list(dialog, u"cmbTapInitString"_s).currentIndex(), 0);
    EXPECT_TRUE(dialog.findChild<QRadioButton*>(u"optSmtpDirect"_s)->isChecked());
    EXPECT_FALSE(carrier_box(dialog, u"txtSmtpRelayServer"_s).isEnabled());
    for (const char16_t* prefix : {u"Fax", u"FaxSrv", u"Gsmat", u"Smtp", u"Snpp", u"Tap", u"Tone", u"Ucp", u"Wctp"}) {
        EXPECT_EQ(shown(dialog, u"txt"_s + QString::fromUtf16(prefix) + u"Priority"_s), u"100"_s);
    }
    // Which lists take typed text, and how many entries each offers (the modem lists keep their duplicates).
    const std::tuple<const char16_t*, bool, int> lists[] = {
        {u"cmbFaxInitString", true, 9}, {u"cmbToneInitString", true, 15}, {u"cmbGsmatInitString", true, 15},
        {u"cmbTapBaud", true, 10},      {u"cmbFaxClass", true, 3},        {u"cmbSmtpPort", true, 4},
        {u"cmbWctpPort", true, 2},      {u"cmbSnppPort", true, 1},        {u"cmbUcpParity", false, 3},
        {u"cmbUcpStopBits", false, 3},  {u"cmbGsmatDataBits", false, 2},  {u"cmbWctpAuthType", false, 5},
        {u"cmbSnppAuthType", false, 2}, {u"cmbWctpSendMethod", false, 2}, {u"cmbToneProtocol", false, 9},
    };
    for (const auto& [name, takes_typing, count] : lists) {
        const QComboBox& list = carrier_list(dialog, QString::fromUtf16(name));
        EXPECT_EQ(list.isEditable(), takes_typing) << QString::fromUtf16(name).toStdString();
        EXPECT_EQ(list.count(), count) << QString::fromUtf16(name).toStdString();
    }
    // SMTP's list keeps its own order, which is not the numeric one.
    QStringList smtp_auth;
    for (int i = 0; i < carrier_list(dialog, u"cmbSmtpAuthType"_s).count(); ++i) {
        smtp_auth.append(carrier_list(dialog, u"cmbSmtpAuthType"_s).itemText(i));
    }
    EXPECT_EQ(smtp_auth, (QStringList{u"None"_s, u"Standard"_s, u"Force CRAM-MD5"_s, u"Force LOGIN"_s, u"Force PLAIN"_s,
                                      u"Force NTLM"_s, u"Sender Override"_s}));
}

TEST_F(CarrierWindows, ProtocolListsAdvancedAndBackMoveBetweenTheFrames)
{
    console::frmAddCarrier dialog(*context, false, {}, &send_form.window());
    dialog.show();
    choose_protocol(dialog, Protocol::Tap);
    EXPECT_EQ(tab(dialog), 5);
    EXPECT_TRUE(dialog.findChild<QWidget*>(u"fraTap"_s)->isEnabled());
    EXPECT_FALSE(dialog.findChild<QWidget*>(u"fraSmtp"_s)->isEnabled());
    EXPECT_EQ(carrier_list(dialog, u"cmbWctpProtocol"_s).currentText(), u"TAP"_s);
    QTest::mouseClick(dialog.findChild<QPushButton*>(u"btnTapAdv"_s), Qt::LeftButton);
    EXPECT_EQ(tab(dialog), 14);
    EXPECT_EQ(dialog.windowTitle(), u"Add Carrier - Advanced"_s);
    EXPECT_TRUE(dialog.findChild<QPushButton*>(u"btnTapAdvClose"_s)->isDefault());
    QTest::mouseClick(dialog.findChild<QPushButton*>(u"btnTapAdvClose"_s), Qt::LeftButton);
    EXPECT_EQ(tab(dialog), 5);
    EXPECT_EQ(dialog.windowTitle(), u"Add Carrier"_s);
    EXPECT_TRUE(dialog.findChild<QPushButton*>(u"btnTapApply"_s)->isDefault());
}

TEST_F(CarrierWindows, TapWithAllDefaultsStoresTheDefaultLineAndInitString)
{
    ASSERT_TRUE(add({Protocol::Tap, u"tap1"_s, {}, {}}));
    const std::optional<CarrierRow> stored = row(u"tap1"_s);
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->modem_settings, u"1200,e,7,1"_s);
    EXPECT_EQ(stored->init_string, u"(auto)"_s);
    EXPECT_EQ(stored->auth_type, 0);
    EXPECT_EQ(stored->dial_type, u"tap"_s);
    EXPECT_EQ(stored->maxchars, 160);
    EXPECT_EQ(stored->priority, 100);
    EXPECT_EQ(stored->retries, 0);
    EXPECT_EQ(env.prompter.boxes.last(), (Notice{u"Carrier record added"_s, u"Carrier Added"_s}));
}

// What one carrier stores and what the dialog shows again when it is edited.
TEST_F(CarrierWindows, EncodedFieldsAreStoredAndShownAgainOnEdit)
{
    struct Case
    {
        CarrierEntry entry;
        QString dial_type;
        QString modem_settings;
        int auth_type;
        QString frame;
        QList<std::pair<QString, QString>> shown_again;
    };
    const Case cases[] = {
        {{Protocol::Fax, u"fax2"_s, {}, {{u"cmbFaxClass"_s, u"2.0"_s}}},
         u"fax"_s,
         u"3"_s,
         0,
         u"fraFax"_s,
         {{u"cmbFaxClass"_s, u"2.0"_s}}},
        {{Protocol::Tone, u"tone1"_s, {}, {}},
         u"tone-,,@"_s,
         u""_s,
         0,
         u"fraTone"_s,
         {{u"txtToneWaitString"_s, u",,@"_s}}},
        {{Protocol::Tone, u"tone2"_s, {{u"txtToneWaitString"_s, u"  9,,#  "_s}}, {}},
         u"tone-9,,#"_s,
         u""_s,
         0,
         u"fraTone"_s,
         {{u"txtToneWaitString"_s, u"9,,#"_s}}},
        {{Protocol::Wctp,
          u"wctp1"_s,
          {{u"txtWctpHost"_s, u"pager.example"_s}},
          {{u"cmbWctpSendMethod"_s, u"Enterprise Host"_s}, {u"cmbWctpAuthType"_s, u"Recipient"_s}}},
         u"wct-1"_s,
         u"80"_s,
         12,
         u"fraWctp"_s,
         {{u"cmbWctpSendMethod"_s, u"Enterprise Host"_s},
          {u"cmbWctpAuthType"_s, u"Recipient"_s},
          {u"txtWctpHost"_s, u"pager.example"_s}}},
        {{Protocol::Smtp, u"mail1"_s, {}, {{u"cmbSmtpPort"_s, u"587 STARTTLS"_s}}},
         u"eml"_s,
         u"587 STARTTLS"_s,
         0,
         u"fraSmtp"_s,
         {{u"cmbSmtpPort"_s, u"587 STARTTLS"_s}}},
        {{Protocol::Smtp, u"mail2"_s, {{u"cmbSmtpPort"_s, u" 2525 SSL/TLS "_s}, {u"txtSmtpUsername"_s, u"ops"_s}}, {}},
         u"eml"_s,
         u"2525 SSL/TLS"_s,
         1,
         u"fraSmtp"_s,
         {{u"cmbSmtpAuthType"_s, u"Standard"_s}}},
        {{Protocol::Snpp, u"snpp1"_s, {{u"cmbSnppPort"_s, u"70000"_s}, {u"txtSnppPassword"_s, u"pw"_s}}, {}},
         u"snp"_s,
         u"65535"_s,
         0,
         u"fraSnpp"_s,
         {{u"cmbSnppPort"_s, u"65535"_s}, {u"cmbSnppAuthType"_s, u"None"_s}}},
        {{Protocol::Ucp,
          u"ucp1"_s,
          {{u"cmbUcpBaud"_s, u"9600"_s}},
          {{u"cmbUcpParity"_s, u"ODD"_s}, {u"cmbUcpDataBits"_s, u"8"_s}, {u"cmbUcpStopBits"_s, u"1.5"_s}}},
         u"ucp"_s,
         u"9600,o,8,1.5"_s,
         0,
         u"fraUcp"_s,
         {{u"cmbUcpBaud"_s, u"9600"_s}, {u"cmbUcpParity"_s, u"ODD"_s}, {u"cmbUcpStopBits"_s, u"1.5"_s}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.entry.name.toStdString());
        ASSERT_TRUE(add(c.entry));
        const std::optional<CarrierRow> stored = row(c.entry.name);
        ASSERT_TRUE(stored);
        EXPECT_EQ(stored->dial_type, c.dial_type);
        EXPECT_EQ(stored->modem_settings, c.modem_settings);
        EXPECT_EQ(stored->auth_type, c.auth_type);

        console::frmAddCarrier edit(*context, true, c.entry.name, &send_form.window());
        edit.show();
        EXPECT_EQ(edit.windowTitle(), u"Edit Carrier"_s);
        EXPECT_EQ(edit.findChild<QStackedWidget*>(u"tabCarrier"_s)->currentWidget()->objectName(), c.frame);
        EXPECT_FALSE(carrier_box(edit, u"txtTapName"_s).isEnabled());
        EXPECT_EQ(carrier_box(edit, u"txtGsmatName"_s).text(), c.entry.name);
        for (const auto& [box, text] : c.shown_again) {
            EXPECT_EQ(shown(edit, box), text) << box.toStdString();
        }
    }
}

TEST_F(CarrierWindows, ApplyRefusesBadNamesAndKeepsTheDialogAsTyped)
{
    ASSERT_TRUE(add({Protocol::FaxSrv, u"taken"_s, {}, {}}));
    struct Case
    {
        QString name;
        Notice box;
    };
    const Case cases[] = {
        {u"has blank"_s, {u"Illegal Character in the Carrier Name"_s, u"BAD CARRIER"_s}},
        {u""_s, {u"A carrier name must be entered"_s, u"Invalid Entry"_s}},
        {u"TAKEN"_s, {u"A carrier with that name already exists"_s, u"Duplicate Carrier"_s}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name.toStdString());
        EXPECT_FALSE(add({Protocol::Tap, c.name, {{u"txtTapPhoneNumber"_s, u"5551234"_s}}, {}}));
        EXPECT_EQ(env.prompter.boxes.last(), c.box);
    }
    EXPECT_EQ(scalar(u"SELECT COUNT(*) FROM cv_carriers"_s), 1);
    EXPECT_EQ(row(u"taken"_s)->dial_type, u"fxs"_s);
}

TEST_F(CarrierWindows, NameAndPriorityAreCorrectedAndCopiedToAllNineFrames)
{
    const QStringList prefixes{u"Fax"_s, u"FaxSrv"_s, u"Gsmat"_s, u"Smtp"_s, u"Snpp"_s,
                               u"Tap"_s, u"Tone"_s,   u"Ucp"_s,   u"Wctp"_s};
    console::frmAddCarrier dialog(*context, false, {}, &send_form.window());
    dialog.show();
    type_and_leave(dialog, u"txtSmtpName"_s, u"  "_s + QString(41, u'n'));
    const std::pair<const char16_t*, const char16_t*> priorities[] = {
        {u"0", u"1"}, {u"40000", u"30000"}, {u"abc", u"1"}, {u"250", u"250"}};
    for (const auto& [typed, corrected] : priorities) {
        type_and_leave(dialog, u"txtSmtpPriority"_s, QString::fromUtf16(typed));
        for (const QString& prefix : prefixes) {
            EXPECT_EQ(carrier_box(dialog, u"txt"_s + prefix + u"Priority"_s).text(), QString::fromUtf16(corrected))
                << prefix.toStdString();
            EXPECT_EQ(carrier_box(dialog, u"txt"_s + prefix + u"Name"_s).text(), QString(40, u'n'));
        }
    }
    // FAXSRV's box corrects as it is typed, before it is left.
    choose_protocol(dialog, Protocol::FaxSrv);
    QLineEdit& faxsrv = carrier_box(dialog, u"txtFaxSrvPriority"_s);
    reach(dialog, faxsrv);
    faxsrv.selectAll();
    QTest::keyClicks(&faxsrv, u"99999"_s);
    EXPECT_EQ(faxsrv.text(), u"30000"_s);
    EXPECT_EQ(carrier_box(dialog, u"txtTapPriority"_s).text(), u"30000"_s);
    // A strict number box left empty or without a number takes its lower limit.
    type_and_leave(dialog, u"txtFaxSrvMaxChars"_s, u""_s);
    EXPECT_EQ(carrier_box(dialog, u"txtFaxSrvMaxChars"_s).text(), u"1"_s);
}

TEST_F(CarrierWindows, SwitchingProtocolInEditModeOverwritesTheWholeRow)
{
    ASSERT_TRUE(add(
        {Protocol::Tap,
         u"paging"_s,
         {{u"txtTapPhoneNumber"_s, u"5551234"_s}, {u"txtTapPassword"_s, u"secret"_s}, {u"txtTapMsgLimit"_s, u"9"_s}},
         {{u"cmbTapAuthType"_s, u"Standard"_s}}}));
    console::frmAddCarrier edit(*context, true, u"paging"_s, &send_form.window());
    edit.show();
    choose_protocol(edit, Protocol::Wctp);
    type_and_leave(edit, u"txtWctpHost"_s, u"wctp.example"_s);
    press_apply(edit);
    EXPECT_EQ(edit.result(), QDialog::Accepted);
    EXPECT_EQ(env.prompter.boxes.last(), (Notice{u"Carrier record updated"_s, u"Carrier Updated"_s}));
    CarrierRow expected{
        u"paging"_s, u"wctp.example"_s, u"80"_s, 160, u""_s, 0, 0, u"wct-0"_s, 0, u""_s, u""_s, false, u""_s, 100};
    EXPECT_EQ(row(u"paging"_s), expected);

    // Deleted by another console while the dialog stood open: nothing comes back, the dialog stays.
    console::frmAddCarrier stale(*context, true, u"paging"_s, &send_form.window());
    stale.show();
    ASSERT_FALSE(addressbook::delete_carrier(db(), u"paging"_s));
    press_apply(stale);
    EXPECT_NE(stale.result(), QDialog::Accepted);
    EXPECT_EQ(env.prompter.box_titles().last(), u"Unable to Update"_s);
    EXPECT_FALSE(row(u"paging"_s));
}

class CarrierList : public CarrierWindows
{
protected:
    void SetUp() override
    {
        CarrierWindows::SetUp();
        console::register_carrier_windows(*context);
        for (const char16_t* name : {u"used", u"waiting", u"done", u"idle"}) {
            ASSERT_TRUE(add({Protocol::FaxSrv, QString::fromUtf16(name), {}, {}}));
        }
        env.prompter.boxes.clear();
        db().exec(u"INSERT INTO cv_recipients (cv_name, cv_carrier) VALUES ('r1', 'used')"_s);
        db().exec(u"INSERT INTO cv_messages (cv_carrier, cv_sent) VALUES ('used', -1), ('waiting', 0), "
                  "('done', -1)"_s);
    }

    static QStringList names(QWidget& window)
    {
        QStringList listed;
        auto* list = window.findChild<QListWidget*>(u"lstCarriers"_s);
        for (int i = 0; i < list->count(); ++i) {
            listed.append(list->item(i)->text());
        }
        return listed;
    }

    static void press_on(QWidget& window, const QString& name)
    {
        auto* list = window.findChild<QListWidget*>(u"lstCarriers"_s);
        list->setCurrentItem(list->findItems(name, Qt::MatchExactly).first());
        QTest::mouseClick(window.findChild<QPushButton*>(u"btnEdit"_s), Qt::LeftButton);
    }
};

TEST_F(CarrierList, DeleteRefusesCarriersInUseWithTheirOwnTitlesAndDeletesTheRestUnasked)
{
    console::list_carriers list(*context, false, &send_form.window());
    list.show();
    EXPECT_EQ(list.windowTitle(), u"Delete Carrier"_s);
    EXPECT_EQ(list.findChild<QPushButton*>(u"btnEdit"_s)->text(), u"&Delete"_s);
    EXPECT_EQ(names(list), (QStringList{u"done"_s, u"idle"_s, u"used"_s, u"waiting"_s}));

    QTest::mouseClick(list.findChild<QPushButton*>(u"btnEdit"_s), Qt::LeftButton); // nothing selected
    EXPECT_TRUE(env.prompter.boxes.isEmpty());
    EXPECT_TRUE(list.findChild<QPushButton*>(u"btnEdit"_s)->isEnabled());

    press_on(list, u"used"_s);
    press_on(list, u"waiting"_s);
    EXPECT_EQ(env.prompter.box_titles(), (QStringList{u"Unalbe to Delete"_s, u"Unable to Delete"_s}));
    EXPECT_EQ(env.prompter.boxes.at(1).text, u"A carrier can not be deleted if there are cv_messages pending for it"_s);

    press_on(list, u"done"_s); // only sent messages
    EXPECT_EQ(env.prompter.boxes.size(), 2);
    EXPECT_EQ(names(list), (QStringList{u"idle"_s, u"used"_s, u"waiting"_s}));
    EXPECT_FALSE(row(u"done"_s));
}

TEST_F(CarrierList, EditOpensTheChosenCarrierAndTheListIsReadAfresh)
{
    console::list_carriers list(*context, true, &send_form.window());
    list.show();
    EXPECT_EQ(list.windowTitle(), u"Edit Carrier"_s);
    QString title;
    QString name;
    when_modal([&](QWidget& dialog) {
        title = dialog.windowTitle();
        name = carrier_box(dialog, u"txtFaxSrvName"_s).text();
        addressbook::delete_carrier(db(), u"done"_s); // another console meanwhile
        QTest::mouseClick(dialog.findChild<QPushButton*>(u"btnFaxSrvCancel"_s), Qt::LeftButton);
    });
    // A double click on the row does what Edit does.
    auto* listed = list.findChild<QListWidget*>(u"lstCarriers"_s);
    const QRect place = listed->visualItemRect(listed->findItems(u"idle"_s, Qt::MatchExactly).first());
    QTest::mouseClick(listed->viewport(), Qt::LeftButton, {}, place.center());
    QTest::mouseDClick(listed->viewport(), Qt::LeftButton, {}, place.center());
    EXPECT_EQ(title, u"Edit Carrier"_s);
    EXPECT_EQ(name, u"idle"_s);
    EXPECT_EQ(names(list), (QStringList{u"idle"_s, u"used"_s, u"waiting"_s}));
}

// Every kind of carrier entered through the dialog survives the export and import windows column for column.
TEST_F(CarrierWindows, EveryKindRoundTripsThroughTheTextExchange)
{
    const CarrierEntry entries[] = {
        {Protocol::Fax, u"k.fax"_s, {{u"cmbFaxInitString"_s, u"AT&FE0V1&C1&D2S0=0"_s}}, {{u"cmbFaxClass"_s, u"2"_s}}},
        {Protocol::FaxSrv, u"k.fxs"_s, {{u"txtFaxSrvMaxChars"_s, u"900"_s}}, {}},
        {Protocol::Gsmat, u"k.gsm"_s, {{u"txtGsmatMsgLimit"_s, u"3"_s}}, {{u"cmbGsmatStopBits"_s, u"2"_s}}},
        {Protocol::Smtp,
         u"k_eml"_s,
         {{u"txtSmtpDomain"_s, u"example.org"_s},
          {u"txtSmtpRelayServer"_s, u"relay.example.org"_s},
          {u"txtSmtpPassword"_s, u"p,w\"d"_s}},
         {{u"cmbSmtpPort"_s, u"465 SSL/TLS"_s}, {u"cmbSmtpAuthType"_s, u"Force NTLM"_s}}},
        {Protocol::Snpp, u"k-snp"_s, {{u"txtSnppHost"_s, u"snpp.example"_s}}, {{u"cmbSnppAuthType"_s, u"Standard"_s}}},
        {Protocol::Tap, u"K.TAP"_s, {{u"txtTapPhoneNumber"_s, u"1-800-555"_s}, {u"txtTapPriority"_s, u"7"_s}}, {}},
        {Protocol::Tone,
         u"k.ton"_s,
         {{u"txtToneWaitString"_s, u",,,@"_s}},
         {{u"cmbToneInitString"_s, u"AT&FQ0V1X4&D2"_s}}},
        {Protocol::Ucp, u"k.ucp"_s, {{u"txtUcpPhoneNumber"_s, u"0031"_s}}, {{u"cmbUcpParity"_s, u"NONE"_s}}},
        {Protocol::Wctp,
         u"k.wct"_s,
         {{u"txtWctpUsername"_s, u"me"_s}, {u"cmbWctpPort"_s, u"443"_s}},
         {{u"cmbWctpAuthType"_s, u"MiscInfo"_s}}},
    };
    for (const CarrierEntry& entry : entries) {
        ASSERT_TRUE(add(entry)) << entry.name.toStdString();
    }
    // Relay delivery is an option, not a typed box.
    {
        console::frmAddCarrier edit(*context, true, u"k_eml"_s, &send_form.window());
        edit.show();
        QTest::mouseClick(edit.findChild<QRadioButton*>(u"optSmtpRelay"_s), Qt::LeftButton);
        EXPECT_TRUE(carrier_box(edit, u"txtSmtpRelayServer"_s).isEnabled());
        press_apply(edit);
    }
    // Exported with the File menu's window, the file named through its Browse button.
    const qsizetype boxes_before = env.prompter.boxes.size();
    {
        console::frmExportText exporting(*context, &send_form.window());
        exporting.show();
        QTest::mouseClick(exporting.findChild<QRadioButton*>(u"optCarriers"_s), Qt::LeftButton);
        env.prompter.choose_next(env.path(u"moved"_s));
        QTest::mouseClick(exporting.findChild<QPushButton*>(u"btnBrowse"_s), Qt::LeftButton);
        QTest::mouseClick(exporting.findChild<QPushButton*>(u"btnApply"_s), Qt::LeftButton);
    }

    // Imported by the import window of a second installation whose address book is empty.
    auto target = env.make_state();
    target->global_db_folder = env.path(u"target/g/"_s);
    target->user_db_folder = env.path(u"target/u/"_s);
    QDir().mkpath(target->global_db_folder);
    QDir().mkpath(target->user_db_folder);
    store::create_global_database(global_db_path(*target));
    open_database(*target);
    ASSERT_TRUE(addressbook::list_carriers(target->global_db).isEmpty());
    console::ConsoleState target_shared;
    console::WindowOwner target_windows;
    console::ActivityLog target_activity;
    console::ConsoleContext target_context{*target, target_shared, target_windows, target_activity, &send_form, {}, {}};
    {
        console::frmImportText importing(target_context, &send_form.window());
        importing.show();
        QTest::mouseClick(importing.findChild<QRadioButton*>(u"optCarriers"_s), Qt::LeftButton);
        env.prompter.choose_next(env.path(u"moved.txt"_s));
        QTest::mouseClick(importing.findChild<QPushButton*>(u"btnBrowse"_s), Qt::LeftButton);
        QTest::mouseClick(importing.findChild<QPushButton*>(u"btnApply"_s), Qt::LeftButton);
    }
    EXPECT_EQ(env.prompter.boxes.mid(boxes_before),
              (QList<Notice>{{u"9 carrier records exported"_s, u"Export Complete"_s},
                             {u"9 carrier records imported,\n0 carrier records skipped."_s, u"Import Complete"_s}}));
    ASSERT_EQ(env.prompter.file_choices.size(), 2);
    EXPECT_EQ(env.prompter.file_choices[0].start_name, u"carriers.txt"_s);

    const QList<CarrierRow> source = addressbook::list_carriers(db());
    EXPECT_EQ(addressbook::list_carriers(target->global_db), source);
    ASSERT_EQ(source.size(), 9);
    EXPECT_EQ(addressbook::read_carrier(db(), u"k_eml"_s)->relay_mail, true);
}

} // namespace
} // namespace cvd::testing

namespace cvd::testing {
namespace {

TEST_F(CarrierList, MenuEntriesOpenTheirWindowsWhosePublishedNamesAreTheirCaptions)
{
    const std::pair<const char16_t*, const char16_t*> entries[] = {{u"carriers_add", u"Add Carrier"},
                                                                   {u"carriers_edit", u"Edit Carrier"},
                                                                   {u"carriers_delete", u"Delete Carrier"}};
    for (const auto& [entry, title] : entries) {
        const QString name = QString::fromUtf16(entry);
        ASSERT_TRUE(context->catalog.has(name));
        QString seen;
        when_modal([&](QWidget& window) {
            seen = window.windowTitle();
            for (QWidget* control : window.findChildren<QWidget*>()) {
                if (!control->objectName().isEmpty() && !control->objectName().startsWith(u"qt_"_s)) {
                    EXPECT_EQ(control->accessibleDescription(), control->objectName());
                }
            }
            window.close();
        });
        context->catalog.open(name);
        EXPECT_EQ(seen, QString::fromUtf16(title));
    }
    console::frmAddCarrier dialog(*context, false, {}, &send_form.window());
    EXPECT_EQ(carrier_box(dialog, u"txtTapPhoneNumber"_s).accessibleName(), u"Phone #"_s);
    EXPECT_EQ(carrier_list(dialog, u"cmbWctpSendMethod"_s).accessibleName(), u"Send Method"_s);
}

} // namespace
} // namespace cvd::testing
