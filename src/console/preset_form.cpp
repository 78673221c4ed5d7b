#include "console/preset_form.h"

#include "addressbook/presets.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "console/preset_recipient_list.h"
#include "core/text.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

preset_form::preset_form(ConsoleContext& context, int preset_number, QWidget* parent)
    : QDialog(parent), m_context(context), m_number(preset_number)
{
    const addressbook::Preset& preset = m_context.shared.presets.at(m_number);
    setWindowTitle(preset.description + u" - Preprogrammed Text"_s);

    fbutton = make_control<QLineEdit>(this, "fbutton");
    preset_text = make_control<QPlainTextEdit>(this, "preset_text");
    preset_text->setTabChangesFocus(true);
    lstRecipient = new PresetRecipientList(this);
    apply_button = make_control<QPushButton>(this, "apply", u"&Apply"_s);
    close_button = make_control<QPushButton>(this, "close", u"&Close"_s);

    auto* form = new QFormLayout;
    add_labelled_row(*form, this, "lblButtonText", u"&Button Text"_s, fbutton);
    add_labelled_row(*form, this, "lblMessage", u"&Message"_s, preset_text);
    add_labelled_row(*form, this, "lblRecipient", u"&Recipient (optional)"_s, lstRecipient);
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(apply_button, QDialogButtonBox::AcceptRole);
    buttons->addButton(close_button, QDialogButtonBox::RejectRole);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
    resize(560, 420);

    lstRecipient->fill(addressbook::preset_recipient_choices(m_context.state, u"Procedure: preset_form load"_s),
                       preset.recipient);
    fbutton->setText(preset.description);
    preset_text->setPlainText(cut_to(preset.message, addressbook::kPresetTextLength));

    connect(preset_text, &QPlainTextEdit::textChanged, this, &preset_form::cut_text);
    connect(apply_button, &QPushButton::clicked, this, &preset_form::on_apply);
    connect(close_button, &QPushButton::clicked, this, &QDialog::reject);
    publish_accessibility(*this);
}

void preset_form::cut_text()
{
    if (preset_text->toPlainText().size() <= addressbook::kPresetTextLength) {
        return;
    }
    preset_text->setPlainText(cut_to(preset_text->toPlainText(), addressbook::kPresetTextLength));
    preset_text->moveCursor(QTextCursor::End);
}

void preset_form::on_apply()
{
    addressbook::apply_preset_form(m_context.state, m_context.shared.presets, m_number,
                                   {fbutton->text(), preset_text->toPlainText(), lstRecipient->selected_name()});
    if (m_context.send_form != nullptr) {
        m_context.send_form->update_prog_captions();
    }
    accept();
}

} // namespace cvd::console
