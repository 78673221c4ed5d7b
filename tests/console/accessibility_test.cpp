// Every window of the console publishes, for each named control, its objectName as accessible description and
// the caption an operator sees as accessible name, so that screen readers and automation find it by either.
#include "addressbook/presets.h"
#include "console/about_form.h"
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
#include "console/preset_form.h"
#include "console_test.h"

#include <QAbstractButton>
#include <QLabel>
#include <memory>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

using Accessibility = ConsoleTest;

void expect_published(QWidget& window)
{
    const std::string window_name = window.metaObject()->className();
    for (QWidget* control : window.findChildren<QWidget*>()) {
        const QString name = control->objectName();
        if (name.isEmpty() || name.startsWith(u"qt_"_s)) {
            continue;
        }
        EXPECT_EQ(control->accessibleDescription(), name) << window_name;
        const auto* button = qobject_cast<QAbstractButton*>(control);
        const auto* label = qobject_cast<QLabel*>(control);
        if ((button != nullptr && !button->text().isEmpty()) || (label != nullptr && !label->text().isEmpty())) {
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

} // namespace
} // namespace cvd::testing
