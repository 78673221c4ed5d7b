#include "console/frm_global_settings.h"

#include "console/busy_lock.h"
#include "console/controls.h"
#include "console/dialog_layout.h"
#include "console/geometry.h"
#include "core/app_state.h"

#include <QButtonGroup>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

frmGlobalSettings::frmGlobalSettings(ConsoleContext& context, QWidget* parent) : QDialog(parent), m_context(context)
{
    setObjectName(u"frmGlobalSettings"_s);
    setWindowTitle(u"User/Global Settings"_s);
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(fontMetrics().averageCharWidth() * 3);
    auto* user_heading = make_control<QLabel>(this, "lblUser", u"User"_s);
    auto* global_heading = make_control<QLabel>(this, "lblGlobal", u"Global"_s);
    QFont bold = user_heading->font();
    bold.setBold(true);
    for (QLabel* heading : {user_heading, global_heading}) {
        heading->setFont(bold);
    }
    grid->addWidget(user_heading, 0, 1, Qt::AlignHCenter);
    grid->addWidget(global_heading, 0, 2, Qt::AlignHCenter);
    const auto& rows = desk::level_switch_rows();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const desk::LevelSwitchRow& row = rows.at(i);
        const QString caption = QString::fromUtf16(row.label);
        auto* label = new QLabel(caption, this);
        // Each option is named by its row and column, as a screen reader reads the table.
        QRadioButton* user = make_control<QRadioButton>(this, row.user_option);
        QRadioButton* global = make_control<QRadioButton>(this, row.global_option);
        user->setAccessibleName(caption + u" User"_s);
        global->setAccessibleName(caption + u" Global"_s);
        auto* pair = new QButtonGroup(this);
        pair->addButton(user);
        pair->addButton(global);
        const int line = static_cast<int>(i) + 1;
        grid->addWidget(label, line, 0);
        grid->addWidget(user, line, 1, Qt::AlignHCenter);
        grid->addWidget(global, line, 2, Qt::AlignHCenter);
        m_user.at(i) = user;
        m_global.at(i) = global;
    }
    btnApply = make_control<QPushButton>(this, "btnApply", u"Apply"_s);
    btnClose = make_control<QPushButton>(this, "btnClose", u"Close"_s);
    connect(btnApply, &QPushButton::clicked, this, &frmGlobalSettings::on_apply);
    connect(btnClose, &QPushButton::clicked, this, &QDialog::reject);

    auto* buttons = button_row({btnApply, btnClose});
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addSpacing(fontMetrics().height() / 2);
    layout->addLayout(buttons);
    settle_over_parent(*this, parent);
    fill_options();
}

void frmGlobalSettings::fill_options()
{
    const desk::LevelSwitches values = desk::read_level_switches(m_context.state.settings);
    for (std::size_t i = 0; i < values.size(); ++i) {
        (values.at(i) ? m_user.at(i) : m_global.at(i))->setChecked(true);
    }
}

void frmGlobalSettings::on_apply()
{
    BusyLock lock(*this);
    desk::LevelSwitches values{};
    for (std::size_t i = 0; i < values.size(); ++i) {
        values.at(i) = m_user.at(i)->isChecked();
    }
    // The program buttons show presets 1 to 5, which may now come from the other database.
    if (desk::store_level_switches(m_context.state, m_context.shared.presets, values) &&
        m_context.send_form != nullptr) {
        m_context.send_form->update_prog_captions();
    }
}

} // namespace cvd::console
