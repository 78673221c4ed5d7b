// Every window of the console publishes, for each named control, its objectName as accessible description and
// the caption an operator sees as accessible name, so that screen readers and automation find it by either.
#include "addressbook/presets.h"
#include "console/about_form.h"
#include "console/carrier_windows.h"
#include "console/device_windows.h"
#include "console/edit_group.h"
#include "console/exchange_windows.h"
#include "console/frm_add_oncall.h"
#include "console/frm_adhoc.h"
#include "console/frm_app_password.h"
#include "console/frm_db_password.h"
#include "console/frm_edit_more_presets.h"
#include "console/frm_failure_warning.h"
#include "console/frm_folders.h"
#include "console/frm_info.h"
#include "console/frm_monitor.h"
#include "console/frm_more_presets.h"
#include "console/frm_password_setup.h"
#include "console/frm_pp.h"
#include "console/frm_spell_check.h"
#include "console/group_maint.h"
#include "console/log_windows.h"
#include "console/preset_form.h"
#include "console/queue_windows.h"
#include "console/recipient_windows.h"
#include "console/report_windows.h"
#include "console/setup_windows.h"
#include "console_test.h"
#include "desk/spelling.h"
#include "reports/report_request.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QPrinter>
#include <QSet>
#include <QTimer>
#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <typeinfo>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

using Accessibility = ConsoleTest;

// Knows no word at all, so the spell check has something to ask about.
class UnknownWords : public desk::Dictionary
{
public:
    bool check(const QString&) override { return false; }
    QStringList suggest(const QString& word) override { return {word.toUpper()}; }
    void add_to_personal(const QString&) override {}
    void ignore_all(const QString&) override {}
};

// The C++ class of a widget: most windows have no meta-object of their own, so the class name Qt knows is
// often just QDialog.
QString class_of(const QWidget& widget)
{
    int status = 0;
    char* demangled = abi::__cxa_demangle(typeid(widget).name(), nullptr, nullptr, &status);
    QString name = QString::fromLatin1(status == 0 ? demangled : typeid(widget).name());
    std::free(demangled); // NOLINT(cppcoreguidelines-no-malloc): the demangler hands back malloc'd memory
    return name;
}

void expect_published(QWidget& window)
{
    const std::string window_name = class_of(window).toStdString();
    for (QWidget* control : window.findChildren<QWidget*>()) {
        const QString name = control->objectName();
        // A control the window keeps hidden for good (a shadow list beside a visible one) is never read out.
        const bool kept_hidden = control->testAttribute(Qt::WA_WState_ExplicitShowHide) && control->isHidden();
        if (name.isEmpty() || name.startsWith(u"qt_"_s) || kept_hidden) {
            continue;
        }
        EXPECT_EQ(control->accessibleDescription(), name) << window_name;
        const auto* button = qobject_cast<QAbstractButton*>(control);
        const auto* label = qobject_cast<QLabel*>(control);
        const bool has_caption =
            (button != nullptr && !button->text().isEmpty()) || (label != nullptr && !label->text().isEmpty());
        // A box, list or grid has no caption of its own: a label standing for it or a tooltip names it.
        const bool takes_input = control->focusPolicy() != Qt::NoFocus && button == nullptr && label == nullptr;
        if (has_caption || takes_input) {
            EXPECT_FALSE(control->accessibleName().isEmpty()) << window_name << ' ' << name.toStdString();
        }
    }
}

TEST_F(Accessibility, EveryCompanionWindowPublishesItsControls)
{
    addressbook::load_presets(*state, shared.presets);
    QWidget* parent = &send_form.window();
    std::vector<std::unique_ptr<QWidget>> windows_under_test;
    windows_under_test.push_back(std::make_unique<console::frmInfo>(*context, parent));
    windows_under_test.push_back(std::make_unique<console::frmAdhoc>(*context, parent));
    windows_under_test.push_back(std::make_unique<console::frmMonitor>(*context));
    windows_under_test.push_back(std::make_unique<console::frmFailureWarning>(*context, parent));
    windows_under_test.push_back(std::make_unique<console::frmFolders>(*context, parent));
    windows_under_test.push_back(std::make_unique<console::about_form>(*context, parent));
    windows_under_test.push_back(std::make_unique<console::preset_form>(*context, 1, parent));
    windows_under_test.push_back(std::make_unique<console::frmMorePresets>(*context, parent));
    windows_under_test.push_back(std::make_unique<console::frmEditMorePresets>(*context, 1, parent));
    windows_under_test.push_back(std::make_unique<console::frmAppPassword>(parent, u"A password is required"_s));
    windows_under_test.push_back(std::make_unique<console::frmDBPassword>(parent));
    windows_under_test.push_back(std::make_unique<console::frmPasswordSetup>(*context, parent));
    for (const std::unique_ptr<QWidget>& window : windows_under_test) {
        expect_published(*window);
    }
}

// Opens every entry of the catalog families as the menus and the other windows do. Each window that shows,
// modal or not, is checked and closed; the reports window also opens its send dialog on the way out.
TEST_F(Accessibility, EveryCatalogWindowPublishesItsControls)
{
    db().exec(u"INSERT INTO cv_carriers (cv_name, cv_dial_type) VALUES ('TapNet', 'tap')"_s);
    db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_carrier, cv_maxchars, cv_group) VALUES "
              "('zed', 'Zed Ward', 'TapNet', 80, 0), ('ops', 'Operations', '', 0, -1)"_s);
    db().exec(u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_message, cv_date_time_requested, "
              "cv_date_time_sent, cv_sent, cv_scheduled, cv_error) VALUES "
              "('zed', '555', 'Pump 3 down', '2026-11-23 08:00:00', '2026-11-23 08:00:30', -1, -1, 0)"_s);
    console::register_setup_windows(*context);
    console::register_carrier_windows(*context);
    console::register_recipient_windows(*context);
    console::register_queue_windows(*context);
    console::register_device_windows(*context);
    console::register_log_windows(*context);
    console::register_report_windows(*context);
    console::register_exchange_windows(*context);

    QSet<QString> checked_classes;
    // Dialogs live on the stack one after another, often at the same address: a mark on the window itself
    // says it was seen.
    const char* const seen = "accessibility_checked";
    const auto check = [&](QWidget& window) {
        window.setProperty(seen, true);
        checked_classes.insert(class_of(window));
        expect_published(window);
    };
    QTimer poll;
    poll.setInterval(2);
    QObject::connect(&poll, &QTimer::timeout, [&] {
        QWidget* modal = QApplication::activeModalWidget();
        if (modal == nullptr || modal->property(seen).toBool()) {
            return;
        }
        check(*modal);
        if (class_of(*modal) == u"cvd::console::frmReports"_s) {
            // Opened from a later timer event, so that this poll keeps running inside the send dialog.
            QTimer::singleShot(0, modal, [this, modal] {
                context->catalog.open(u"frmSendReport"_s, modal);
                modal->close();
            });
            return;
        }
        modal->close();
    });
    poll.start();

    shared.selected_name = u"ops"_s;
    shared.detail_source = 3;
    shared.detail_message_id = 1;
    const char* const entries[] = {"setup_general",
                                   "setup_modem",
                                   "setup_display",
                                   "setup_user_global",
                                   "frmSetting",
                                   "carriers_add",
                                   "frmAddCarrier",
                                   "carriers_edit",
                                   "carriers_delete",
                                   "recipients_add",
                                   "recipients_edit",
                                   "recipients_delete",
                                   "groups_add",
                                   "groups_edit",
                                   "groups_members",
                                   "groups_delete",
                                   "frmGroupMembers",
                                   "frmOnCallSched",
                                   "import_text",
                                   "export_text",
                                   "scheduled",
                                   "pending",
                                   "sent",
                                   "bad",
                                   "tbrSchedule",
                                   "frmMessageDetail",
                                   "modem_scan",
                                   "port_scan",
                                   "rptSentRecipient",
                                   "rptSentDate",
                                   "mnuStatisticsCarrier",
                                   "mnuListRecipients",
                                   "mnuListGroups",
                                   "mnuListCarriers",
                                   "history",
                                   "log"};
    for (const char* entry : entries) {
        context->catalog.open(QString::fromLatin1(entry), &send_form.window());
        if (qstrcmp(entry, "history") == 0) {
            shared.find_target = 2;
            context->catalog.open(u"frmFind"_s);
        }
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->isVisible() && !window->property(seen).toBool()) {
                check(*window);
            }
        }
        windows.close_all();
        QApplication::processEvents();
    }
    poll.stop();

    // The windows that only another window's buttons open.
    std::vector<std::unique_ptr<QWidget>> reached_from_others;
    reached_from_others.push_back(std::make_unique<console::edit_group>(*context, &send_form.window()));
    reached_from_others.push_back(std::make_unique<console::group_maint>(*context, &send_form.window()));
    reached_from_others.push_back(
        std::make_unique<console::frmAddOncall>(*context, u"ops"_s, std::nullopt, &send_form.window()));
    UnknownWords dictionary;
    desk::SpellWalk walk(dictionary, u"Pump down"_s);
    reached_from_others.push_back(std::make_unique<console::frmSpellCheck>(*context, &send_form.window(), walk));
    QPrinter printer;
    reached_from_others.push_back(std::make_unique<console::frmPP>(
        *context, reports::ReportResult{u"Carrier List"_s, reports::ReportDocument(), {}}, printer,
        &send_form.window()));
    for (const std::unique_ptr<QWidget>& window : reached_from_others) {
        check(*window);
    }

    const char* const expected[] = {"setup_form",       "modem_setup",      "frmDisplayOptions", "frmGlobalSettings",
                                    "frmSetting",       "frmAddCarrier",    "list_carriers",     "frmAddRecipient",
                                    "list_recipients",  "add_group",        "list_groups",       "frmGroupMembers",
                                    "frmOnCallSched",   "frmImportText",    "frmExportText",     "sched_form",
                                    "pending_form",     "sent_form",        "bad_form",          "frmSchedule",
                                    "frmMessageDetail", "frmModemScan",     "frmPortScan",       "frmReports",
                                    "frmSendReport",    "frmRecipientList", "log_form",          "modem_log_form",
                                    "frmFind"};
    for (const char* name : expected) {
        EXPECT_TRUE(checked_classes.contains(u"cvd::console::"_s + QString::fromLatin1(name))) << name;
    }
}

} // namespace
} // namespace cvd::testing
