#include "console/frm_edit_more_presets.h"

#include "addressbook/presets.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "console/preset_recipient_list.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

// Leaving the box turns its double quotes into apostrophes.
void quote_on_leaving(QLineEdit* box)
{
    QObject::connect(box, &QLineEdit::editingFinished, box,
                     [box] { box->setText(addressbook::quotes_to_apostrophes(box->text())); });
}

} // namespace

frmEditMorePresets::frmEditMorePresets(ConsoleContext& context, int preset_number, QWidget* parent)
    : QDialog(parent), m_context(context), m_number(preset_number)
{
    setWindowTitle(u"Edit Preset Message"_s);
    txtDescription = make_control<QLineEdit>(this, "txtDescription");
    txtMessage = make_control<QLineEdit>(this, "txtMessage");
    lstRecipient = new PresetRecipientList(this);
    btnAccept = make_control<QPushButton>(this, "btnAccept", u"&Apply"_s);
    btnCancel = make_control<QPushButton>(this, "btnCancel", u"&Close"_s);

    auto* form = new QFormLayout;
    add_labelled_row(*form, this, "lblDescription", u"&Description"_s, txtDescription);
    add_labelled_row(*form, this, "lblMessage", u"&Message"_s, txtMessage);
    add_labelled_row(*form, this, "lblRecipient", u"&Recipient (optional)"_s, lstRecipient);
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(btnAccept, QDialogButtonBox::AcceptRole);
    buttons->addButton(btnCancel, QDialogButtonBox::RejectRole);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
    resize(560, 380);

    const addressbook::Preset& preset = m_context.shared.presets.at(m_number);
    txtDescription->setText(preset.description);
    txtMessage->setText(preset.message);
    lstRecipient->fill(addressbook::preset_recipient_choices(m_context.state, u"Procedure: frmEditMorePresets load"_s),
                       preset.recipient);

    quote_on_leaving(txtDescription);
    quote_on_leaving(txtMessage);
    connect(btnAccept, &QPushButton::clicked, this, &frmEditMorePresets::on_accept);
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
    publish_accessibility(*this);
}

void frmEditMorePresets::on_accept()
{
    // Apply leaves the box as well, also when it is pressed from the keyboard.
    addressbook::apply_preset_edit(m_context.state, m_context.shared.presets, m_number,
                                   {addressbook::quotes_to_apostrophes(txtDescription->text()),
                                    addressbook::quotes_to_apostrophes(txtMessage->text()),
                                    lstRecipient->selected_name()});
    accept();
}

} // namespace cvd::console
