#include "console/frm_password_setup.h"

#include "console/controls.h"
#include "console/dialog_layout.h"
#include "console/geometry.h"
#include "console/masked_entry.h"
#include "core/app_state.h"
#include "core/passwords.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

frmPasswordSetup::frmPasswordSetup(ConsoleContext& context, QWidget* parent) : QDialog(parent), m_context(context)
{
    setWindowTitle(u"Password Setup"_s);
    fAdmin1 = make_control<MaskedEntry>(this, "fAdmin1", kPasswordMaxLength);
    fAdmin2 = make_control<MaskedEntry>(this, "fAdmin2", kPasswordMaxLength);
    fSuper1 = make_control<MaskedEntry>(this, "fSuper1", kPasswordMaxLength);
    fSuper2 = make_control<MaskedEntry>(this, "fSuper2", kPasswordMaxLength);
    fUser1 = make_control<MaskedEntry>(this, "fUser1", kPasswordMaxLength);
    fUser2 = make_control<MaskedEntry>(this, "fUser2", kPasswordMaxLength);
    add = make_control<QPushButton>(this, "add", u"Apply"_s);
    btnClose = make_control<QPushButton>(this, "btnClose", u"Close"_s);
    connect(add, &QPushButton::clicked, this, &frmPasswordSetup::on_apply);
    connect(btnClose, &QPushButton::clicked, this, &QDialog::reject);

    const AppState& state = context.state;
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(make_level("fraAdmin", u"Admin Password"_s,
                                 u"If the Admin password is set, it will be required to access the program setup "
                                 u"screens.  This password also has Super User and User rights."_s,
                                 fAdmin1, fAdmin2, state.admin_password));
    layout->addWidget(make_level("fraSuper", u"Super User Password"_s,
                                 u"If the Super User password is set, it will be required to access the carrier, "
                                 u"recipient, and group maintenance screens.  This password also has User rights."_s,
                                 fSuper1, fSuper2, state.super_password));
    layout->addWidget(make_level("fraUser", u"User Password"_s,
                                 u"If the User password is set, it will be required to start the Corvane Desk "
                                 u"program."_s,
                                 fUser1, fUser2, state.user_password));
    auto* lblWarning = make_control<QLabel>(this, "lblWarning", u"Do Not Lose These Passwords !!!"_s);
    QFont bold = lblWarning->font();
    bold.setBold(true);
    lblWarning->setFont(bold);
    lblWarning->setAlignment(Qt::AlignCenter);
    auto* lblWarning2 =
        make_control<QLabel>(this, "lblWarning2", u"The program may become unusable if the passwords are lost."_s);
    lblWarning2->setAlignment(Qt::AlignCenter);
    layout->addWidget(lblWarning);
    layout->addWidget(lblWarning2);
    auto* buttons = button_row({add, btnClose});
    layout->addLayout(buttons);

    setMinimumWidth(fontMetrics().averageCharWidth() * 64);
    settle_over_parent(*this, parent);
}

QGroupBox* frmPasswordSetup::make_level(const char* name, const QString& heading, const QString& explanation,
                                        MaskedEntry* first, MaskedEntry* second, const QString& password)
{
    auto* group = make_control<QGroupBox>(this, name, heading);
    auto* text = new QLabel(explanation, group);
    text->setWordWrap(true);
    auto* enter = new QLabel(u"Enter"_s, group);
    auto* reenter = new QLabel(u"Re-enter"_s, group);
    enter->setBuddy(first);
    reenter->setBuddy(second);
    first->set_real_text(password);
    second->set_real_text(password);
    auto* form = new QFormLayout;
    form->addRow(enter, first);
    form->addRow(reenter, second);
    auto* layout = new QVBoxLayout(group);
    layout->addWidget(text);
    layout->addLayout(form);
    return group;
}

void frmPasswordSetup::on_apply()
{
    const PasswordSetupEntries entries{fAdmin1->real_text(), fAdmin2->real_text(), fSuper1->real_text(),
                                       fSuper2->real_text(), fUser1->real_text(),  fUser2->real_text()};
    if (const std::optional<Notice> refusal = apply_password_setup(m_context.state, entries)) {
        m_context.state.prompter.show_box(*refusal);
        return;
    }
    accept();
}

void show_password_setup(ConsoleContext& context)
{
    frmPasswordSetup dialog(context, context.send_form != nullptr ? &context.send_form->window() : nullptr);
    dialog.exec();
}

} // namespace cvd::console
