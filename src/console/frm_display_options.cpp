#include "console/frm_display_options.h"

#include "console/busy_lock.h"
#include "console/controls.h"
#include "console/dialog_layout.h"
#include "console/geometry.h"
#include "console/setup_boxes.h"
#include "core/app_state.h"
#include "core/databases.h"
#include "desk/setup_rules.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

// A frame of two option buttons, one above the other.
QGroupBox* option_pair(QWidget* window, const char* name, const QString& title, QRadioButton* first,
                       QRadioButton* second)
{
    auto* frame = make_control<QGroupBox>(window, name, title);
    auto* layout = new QVBoxLayout(frame);
    layout->addWidget(first);
    layout->addWidget(second);
    return frame;
}

} // namespace

frmDisplayOptions::frmDisplayOptions(ConsoleContext& context, QWidget* parent) : QDialog(parent), m_context(context)
{
    setObjectName(u"frmDisplayOptions"_s);
    setWindowTitle(u"Display Setup"_s);
    fMaxLength = make_control<QLineEdit>(this, "fMaxLength");
    fClear = make_control<QCheckBox>(this, "fClear", u"Clear on Send"_s);
    fWarning = make_control<QCheckBox>(this, "fWarning", u"Failure Warning Popup"_s);
    fRemovePresets = make_control<QCheckBox>(this, "fRemovePresets", u"Remove Preset Buttons"_s);
    fRemoveOptions = make_control<QCheckBox>(this, "fRemoveOptions", u"Remove Schedule Button"_s);
    fRemoveLogs = make_control<QCheckBox>(this, "fRemoveLogs", u"Remove Logs"_s);
    fRemoveReports = make_control<QCheckBox>(this, "fRemoveReports", u"Remove Reports"_s);
    optAfter = make_control<QRadioButton>(this, "optAfter", u"After group's name"_s);
    optBefore = make_control<QRadioButton>(this, "optBefore", u"Before group's name"_s);
    optTaskBar = make_control<QRadioButton>(this, "optTaskBar", u"Task Bar"_s);
    optSysTray = make_control<QRadioButton>(this, "optSysTray", u"System Tray"_s);
    fSmallFont = make_control<QCheckBox>(this, "fSmallFont", u"Small Recipient Font"_s);
    fExtra1 = make_control<QLineEdit>(this, "fExtra1");
    fExtra2 = make_control<QLineEdit>(this, "fExtra2");
    apply = make_control<QPushButton>(this, "apply", u"Apply"_s);
    btnClose = make_control<QPushButton>(this, "btnClose", u"Close"_s);
    clamp_when_left(fMaxLength, desk::kMaxMessageRange);
    cut_when_left(fExtra1, desk::kCommentLabelLength, true);
    cut_when_left(fExtra2, desk::kCommentLabelLength, true);
    connect(apply, &QPushButton::clicked, this, &frmDisplayOptions::on_apply);
    connect(btnClose, &QPushButton::clicked, this, &QDialog::reject);

    const int digit = fontMetrics().averageCharWidth();
    auto* top = new QFormLayout;
    add_labelled_row(*top, this, "lblMaxLength", u"Max Msg Length"_s, fMaxLength);
    fMaxLength->setMaximumWidth(digit * 8);

    auto* switches = new QGridLayout;
    switches->addWidget(fClear, 0, 0);
    switches->addWidget(fWarning, 1, 0);
    switches->addWidget(fSmallFont, 2, 0);
    switches->addWidget(fRemovePresets, 0, 1);
    switches->addWidget(fRemoveOptions, 1, 1);
    switches->addWidget(fRemoveLogs, 2, 1);
    switches->addWidget(fRemoveReports, 3, 1);

    auto* frames = new QHBoxLayout;
    frames->addWidget(option_pair(this, "fraGroupLabel", u"Display group label '(G)'"_s, optAfter, optBefore));
    frames->addWidget(option_pair(this, "fraMinimize", u"Minimize To:"_s, optTaskBar, optSysTray));

    auto* labels = new QFormLayout;
    add_labelled_row(*labels, this, "lblExtra1", u"Comment1 Label"_s, fExtra1);
    add_labelled_row(*labels, this, "lblExtra2", u"Comment2 Label"_s, fExtra2);
    for (QLineEdit* label : {fExtra1, fExtra2}) {
        label->setMaximumWidth(digit * 26);
    }

    auto* buttons = button_row({apply, btnClose});
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addLayout(switches);
    layout->addLayout(frames);
    layout->addLayout(labels);
    layout->addSpacing(fontMetrics().height() / 2);
    layout->addLayout(buttons);
    settle_over_parent(*this, parent);
    fill_boxes();
}

void frmDisplayOptions::fill_boxes()
{
    const desk::DisplayOptions values = desk::read_display_options(m_context.state.settings);
    fMaxLength->setText(values.max_msg_length);
    fClear->setChecked(values.clear_on_send);
    fWarning->setChecked(values.warning_popup);
    fRemovePresets->setChecked(values.remove_presets);
    fRemoveOptions->setChecked(values.remove_options);
    fRemoveLogs->setChecked(values.remove_logs);
    fRemoveReports->setChecked(values.remove_reports);
    (values.group_label_after ? optAfter : optBefore)->setChecked(true);
    (values.minimize_to_taskbar ? optTaskBar : optSysTray)->setChecked(true);
    fSmallFont->setChecked(values.small_font);
    fExtra1->setText(values.extra1_label);
    fExtra2->setText(values.extra2_label);
}

void frmDisplayOptions::on_apply()
{
    BusyLock lock(*this);
    desk::DisplayOptions values;
    values.max_msg_length = fMaxLength->text();
    values.clear_on_send = fClear->isChecked();
    values.warning_popup = fWarning->isChecked();
    values.remove_presets = fRemovePresets->isChecked();
    values.remove_options = fRemoveOptions->isChecked();
    values.remove_logs = fRemoveLogs->isChecked();
    values.remove_reports = fRemoveReports->isChecked();
    values.group_label_after = optAfter->isChecked();
    values.minimize_to_taskbar = optTaskBar->isChecked();
    values.small_font = fSmallFont->isChecked();
    values.extra1_label = fExtra1->text();
    values.extra2_label = fExtra2->text();
    desk::store_display_options(m_context.state.settings, values);
    if (m_context.send_form != nullptr) {
        m_context.send_form->apply_display_options();
    }
    save_settings(m_context.state);
    // The lists again, so that the group mark's side and the font show.
    if (m_context.send_form != nullptr) {
        m_context.send_form->show_users();
    }
    fill_boxes();
}

} // namespace cvd::console
