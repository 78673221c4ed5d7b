#include "console/frm_add_carrier.h"

#include "addressbook/carrier_rules.h"
#include "addressbook/carriers_store.h"
#include "console/busy_lock.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "console/geometry.h"
#include "core/app_state.h"
#include "core/prompter.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>

using namespace Qt::StringLiterals;

namespace cvd::console {

using addressbook::Protocol;

namespace {

// Where the focus goes when an Advanced frame comes up.
QWidget* first_advanced_control(const CarrierFrameControls& frame)
{
    switch (frame.protocol) {
    case Protocol::Fax:
        return frame.fax_class;
    case Protocol::Gsmat:
    case Protocol::Tap:
    case Protocol::Ucp:
        return frame.baud;
    case Protocol::Snpp:
        return frame.port;
    case Protocol::Tone:
        return frame.init_string;
    case Protocol::Wctp:
        return frame.send_method;
    case Protocol::FaxSrv:
    case Protocol::Smtp:
        break;
    }
    return frame.max_chars;
}

} // namespace

frmAddCarrier::frmAddCarrier(ConsoleContext& context, bool is_edit, QString carrier_name, QWidget* parent)
    : QDialog(parent), m_context(context), m_is_edit(is_edit), m_carrier_name(std::move(carrier_name))
{
    setObjectName(u"frmAddCarrier"_s);
    build_frames();
    for (const CarrierFrameControls& frame : m_frames) {
        connect_rules(frame);
        connect(frame.protocol_list, &QComboBox::currentIndexChanged, this, [this](int index) {
            if (index >= 0) {
                tabCarrier->setCurrentIndex(index);
            }
        });
        connect(frame.advanced_button, &QPushButton::clicked, this, [this] { show_advanced(true); });
        connect(frame.back, &QPushButton::clicked, this, [this] { show_advanced(false); });
        connect(frame.apply, &QPushButton::clicked, this, &frmAddCarrier::on_apply);
        connect(frame.cancel, &QPushButton::clicked, this, &QDialog::reject);
    }
    connect(tabCarrier, &QStackedWidget::currentChanged, this, &frmAddCarrier::disable_frames);

    show_defaults();
    if (m_is_edit) {
        load_row();
    } else {
        // A new carrier starts on SMTP.
        tabCarrier->setCurrentIndex(addressbook::main_tab(Protocol::Smtp));
    }
    disable_frames(tabCarrier->currentIndex());
    update_caption();
    publish_accessibility(*this);
}

void frmAddCarrier::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (parentWidget() != nullptr) {
        center_on_form(*this, *parentWidget());
    }
}

void frmAddCarrier::show_defaults()
{
    for (const CarrierFrameControls& frame : m_frames) {
        frame.protocol_list->blockSignals(true);
        frame.protocol_list->setCurrentIndex(static_cast<int>(frame.protocol));
        frame.protocol_list->blockSignals(false);
        show_values(frame, addressbook::default_frame(frame.protocol));
        if (frame.relay != nullptr) {
            relay_chosen(frame);
        }
    }
}

void frmAddCarrier::load_row()
{
    for (const CarrierFrameControls& frame : m_frames) {
        frame.name->setText(m_carrier_name);
        frame.name->setEnabled(false); // names are never changed once given
    }
    tabCarrier->setCurrentIndex(addressbook::main_tab(Protocol::Smtp));
    const std::optional<addressbook::DecodedCarrier> decoded =
        addressbook::load_carrier(m_context.state, m_carrier_name);
    if (!decoded) {
        return;
    }
    for (const CarrierFrameControls& frame : m_frames) {
        frame.name->setText(decoded->name);
        frame.priority->setText(decoded->priority);
    }
    if (decoded->frame) {
        const Protocol protocol = addressbook::protocol_of(*decoded->frame);
        show_values(m_frames.at(static_cast<std::size_t>(protocol)), *decoded->frame);
        tabCarrier->setCurrentIndex(addressbook::main_tab(protocol));
    }
}

void frmAddCarrier::disable_frames(int tab)
{
    if (tab < 0) {
        return;
    }
    const bool advanced = tab >= addressbook::protocol_count;
    const int protocol = tab % addressbook::protocol_count;
    for (const CarrierFrameControls& frame : m_frames) {
        frame.main->setEnabled(frame.main == tabCarrier->widget(tab));
        frame.advanced->setEnabled(frame.advanced == tabCarrier->widget(tab));
        frame.protocol_list->blockSignals(true);
        frame.protocol_list->setCurrentIndex(protocol);
        frame.protocol_list->blockSignals(false);
    }
    const CarrierFrameControls& current = m_frames.at(static_cast<std::size_t>(protocol));
    (advanced ? current.back : current.apply)->setDefault(true);
    if (!isVisible()) {
        return;
    }
    if (!advanced) {
        current.protocol_list->setFocus();
        return;
    }
    first_advanced_control(current)->setFocus();
}

void frmAddCarrier::show_advanced(bool advanced)
{
    const int protocol = tabCarrier->currentIndex() % addressbook::protocol_count;
    tabCarrier->setCurrentIndex(advanced ? protocol + addressbook::protocol_count : protocol);
    update_caption();
}

void frmAddCarrier::update_caption()
{
    setWindowTitle(
        addressbook::carrier_dialog_caption(m_is_edit, tabCarrier->currentIndex() >= addressbook::protocol_count));
}

void frmAddCarrier::on_apply()
{
    const CarrierFrameControls& frame =
        m_frames.at(static_cast<std::size_t>(tabCarrier->currentIndex() % addressbook::protocol_count));
    addressbook::CarrierApplyOutcome outcome;
    {
        BusyLock lock(*this);
        outcome = addressbook::apply_carrier(m_context.state, frame_values(frame), m_is_edit, m_carrier_name);
        if (!outcome.stored && !outcome.notice) {
            outcome.notice = addressbook::edited_carrier_gone_notice();
        }
        m_context.state.prompter.show_box(*outcome.notice);
    }
    if (outcome.stored) {
        accept();
    }
}

} // namespace cvd::console
