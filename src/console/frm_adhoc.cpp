#include "console/frm_adhoc.h"

#include "addressbook/pickers.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "console/geometry.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

frmAdhoc::frmAdhoc(ConsoleContext& context, QWidget* parent) : QDialog(parent)
{
    setWindowTitle(u"Ad-Hoc Entry Screen"_s);
    auto* lblText = make_control<QLabel>(this, "lblText",
                                         u"You have chosen an Ad-Hoc user.  Please enter an ID/PIN number for "
                                         "the recipient you want to page."_s);
    lblText->setWordWrap(true);
    auto* lblPin = make_control<QLabel>(this, "lblPin", u"PIN/ID"_s);
    fpin = make_control<QLineEdit>(this, "fpin");
    lblPin->setBuddy(fpin);
    btnApply = make_control<QPushButton>(this, "btnApply", u"Apply"_s);
    btnCancel = make_control<QPushButton>(this, "btnCancel", u"Close"_s);
    btnApply->setDefault(true);

    auto* pin_row = new QFormLayout;
    pin_row->addRow(lblPin, fpin);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnApply);
    buttons->addWidget(btnCancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblText);
    layout->addLayout(pin_row);
    layout->addLayout(buttons);
    setMinimumWidth(380);

    connect(btnApply, &QPushButton::clicked, this, &frmAdhoc::apply);
    // Close, Escape and the window's own close button all leave the PIN empty.
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
    publish_accessibility(*this);
    adjustSize();
    if (context.send_form != nullptr) {
        center_on_form(*this, context.send_form->window());
    }
}

QString frmAdhoc::ask(ConsoleContext& context, QWidget* parent)
{
    frmAdhoc dialog(context, parent);
    dialog.exec();
    return dialog.pin();
}

void frmAdhoc::apply()
{
    m_pin = addressbook::adhoc_pin_on_apply(fpin->text());
    fpin->setText(m_pin);
    accept();
}

} // namespace cvd::console
