#include "console/group_form.h"

#include "console/console_context.h"
#include "console/controls.h"
#include "core/app_state.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

constexpr SettingKey kExtra1Label{u"display", u"extra1_label"};
constexpr SettingKey kExtra2Label{u"display", u"extra2_label"};

constexpr int kBoxMinimumWidth = 300;
constexpr int kButtonGap = 10;

} // namespace

GroupForm::GroupForm(ConsoleContext& context, bool adding, QWidget* parent)
    : QDialog(parent), m_context(context), lblShortName(make_control<QLabel>(this, "lblShortName", u"Short Name"_s)),
      fuser(make_control<QLineEdit>(this, "fuser")),
      lblDescription(make_control<QLabel>(this, "lblDescription", u"Description"_s)),
      ffull_name(make_control<QLineEdit>(this, "ffull_name")),
      lblExtra1(make_control<QLabel>(this, "lblExtra1", context.state.settings.get_setting_text(kExtra1Label))),
      fExtra1(make_control<QLineEdit>(this, "fExtra1")),
      lblExtra2(make_control<QLabel>(this, "lblExtra2", context.state.settings.get_setting_text(kExtra2Label))),
      fExtra2(make_control<QLineEdit>(this, "fExtra2")),
      fon_call(make_control<QCheckBox>(this, "fon_call", u"On-Call Group"_s)),
      btnOnCall(make_control<QPushButton>(this, "btnOnCall", u"On-Call Schedule"_s)),
      Command1(make_control<QPushButton>(this, "Command1", u"&Apply"_s)),
      btnClose(make_control<QPushButton>(this, "btnClose", u"&Close"_s)), m_adding(adding)
{
    build_layout();
    connect_boxes();
    btnOnCall->setEnabled(false);
    Command1->setEnabled(false);
    Command1->setDefault(true);
}

void GroupForm::build_layout()
{
    auto* grid = new QGridLayout;
    const std::pair<QLabel*, QLineEdit*> rows[] = {
        {lblShortName, fuser}, {lblDescription, ffull_name}, {lblExtra1, fExtra1}, {lblExtra2, fExtra2}};
    int row = 0;
    for (const auto& [label, box] : rows) {
        label->setBuddy(box);
        box->setMinimumWidth(kBoxMinimumWidth);
        grid->addWidget(label, row, 0);
        grid->addWidget(box, row, 1);
        ++row;
    }
    auto* on_call = new QHBoxLayout;
    on_call->addWidget(fon_call);
    on_call->addStretch();
    on_call->addWidget(btnOnCall);
    grid->addLayout(on_call, row, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(Command1);
    buttons->addWidget(btnClose);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addSpacing(kButtonGap);
    layout->addStretch();
    layout->addLayout(buttons);
}

void GroupForm::connect_boxes()
{
    const auto enable_apply = [this] { Command1->setEnabled(true); };
    for (QLineEdit* box : {fuser, ffull_name, fExtra1, fExtra2}) {
        connect(box, &QLineEdit::textChanged, this, enable_apply);
    }
    connect(fon_call, &QCheckBox::clicked, this, enable_apply);
    connect(fon_call, &QCheckBox::toggled, btnOnCall, &QPushButton::setEnabled);

    connect(fuser, &QLineEdit::editingFinished, this, [this] {
        if (m_adding) {
            fuser->setText(addressbook::on_leaving(addressbook::GroupBox::ShortName, fuser->text()));
        }
    });
    connect(ffull_name, &QLineEdit::editingFinished, this, [this] {
        const QString description = addressbook::on_leaving(addressbook::GroupBox::Description, ffull_name->text());
        ffull_name->setText(description);
        if (m_adding) {
            fuser->setText(addressbook::group_short_name_after_description(fuser->text(), description));
        }
    });
    for (QLineEdit* box : {fExtra1, fExtra2}) {
        connect(box, &QLineEdit::editingFinished, this,
                [box] { box->setText(addressbook::on_leaving(addressbook::GroupBox::Comment, box->text())); });
    }
    connect(btnOnCall, &QPushButton::clicked, this, &GroupForm::open_roster);
    connect(Command1, &QPushButton::clicked, this, [this] { apply(); });
    connect(btnClose, &QPushButton::clicked, this, &QDialog::reject);
}

addressbook::GroupEntry GroupForm::entry() const
{
    return {fuser->text(), ffull_name->text(), fExtra1->text(), fExtra2->text(), fon_call->isChecked()};
}

void GroupForm::show_entry(const addressbook::GroupEntry& entry)
{
    fuser->setText(entry.short_name);
    ffull_name->setText(entry.description);
    fExtra1->setText(entry.extra1);
    fExtra2->setText(entry.extra2);
    fon_call->setChecked(entry.on_call);
}

void GroupForm::open_roster()
{
    // The roster rows are keyed by name, so add_group may open them before the group's own row exists.
    m_context.shared.selected_name = roster_name();
    m_context.shared.oncall_from_add = m_adding;
    m_context.catalog.open(u"frmOnCallSched"_s, this);
}

} // namespace cvd::console
