// Moving a frame's values between its boxes and the frame records of the address book, and the rules the
// boxes apply to their texts when they are left.
#include "addressbook/carrier_rules.h"
#include "console/frm_add_carrier.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPalette>
#include <QRadioButton>

namespace cvd::console {

using addressbook::AuthType;
using addressbook::BoxRule;
using addressbook::Protocol;

namespace {

// A list that takes typed text shows any text; one that allows selection only moves to the entry or stays.
// The first of equal entries is chosen, as the lists hold duplicates.
void show_list_text(QComboBox* list, const QString& text)
{
    const int index = list->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (!list->isEditable()) {
        if (index >= 0) {
            list->setCurrentIndex(index);
        }
        return;
    }
    list->setCurrentIndex(index);
    if (index < 0) {
        list->setEditText(text);
    }
}

void show_auth(QComboBox* list, AuthType auth)
{
    const int index = list->findData(static_cast<int>(auth));
    list->setCurrentIndex(index < 0 ? 0 : index);
}

AuthType auth_shown(const QComboBox* list)
{
    return list->currentIndex() < 0 ? AuthType::None : static_cast<AuthType>(list->currentData().toInt());
}

void show_line(const CarrierFrameControls& frame, const addressbook::LineSettings& line)
{
    show_list_text(frame.baud, line.baud);
    frame.parity->setCurrentIndex(static_cast<int>(line.parity));
    show_list_text(frame.data_bits, line.data_bits);
    show_list_text(frame.stop_bits, line.stop_bits);
}

addressbook::LineSettings line_shown(const CarrierFrameControls& frame)
{
    addressbook::LineSettings line;
    line.baud = frame.baud->currentText();
    line.parity = static_cast<addressbook::Parity>(std::max(frame.parity->currentIndex(), 0));
    line.data_bits = frame.data_bits->currentText();
    line.stop_bits = frame.stop_bits->currentText();
    return line;
}

// Each frame record has the fields of its protocol; the boxes are filled and read by the fields it has.
template <typename Fields> void show_fields(const CarrierFrameControls& frame, const Fields& fields)
{
    frame.name->setText(fields.name);
    frame.max_chars->setText(fields.max_chars);
    frame.priority->setText(fields.priority);
    if constexpr (requires { fields.phone_number; }) {
        frame.address->setText(fields.phone_number);
    }
    if constexpr (requires { fields.host; }) {
        frame.address->setText(fields.host);
    }
    if constexpr (requires { fields.domain; }) {
        frame.address->setText(fields.domain);
    }
    if constexpr (requires { fields.port; }) {
        show_list_text(frame.port, fields.port);
    }
    if constexpr (requires { fields.relay; }) {
        frame.relay->setChecked(fields.relay);
        frame.direct->setChecked(!fields.relay);
        frame.relay_server->setText(fields.relay_server);
    }
    if constexpr (requires { fields.send_method; }) {
        frame.send_method->setCurrentIndex(static_cast<int>(fields.send_method));
    }
    if constexpr (requires { fields.fax_class; }) {
        show_list_text(frame.fax_class, fields.fax_class);
    }
    if constexpr (requires { fields.line; }) {
        show_line(frame, fields.line);
    }
    if constexpr (requires { fields.init_string; }) {
        show_list_text(frame.init_string, fields.init_string);
    }
    if constexpr (requires { fields.wait_string; }) {
        frame.wait_string->setText(fields.wait_string);
    }
    if constexpr (requires { fields.auth; }) {
        show_auth(frame.auth, fields.auth);
    }
    if constexpr (requires { fields.username; }) {
        frame.username->setText(fields.username);
    }
    if constexpr (requires { fields.password; }) {
        frame.password->setText(fields.password);
    }
    if constexpr (requires { fields.msg_limit; }) {
        frame.msg_limit->setText(fields.msg_limit);
    }
}

template <typename Fields> void read_fields(const CarrierFrameControls& frame, Fields& fields)
{
    fields.name = frame.name->text();
    fields.max_chars = frame.max_chars->text();
    fields.priority = frame.priority->text();
    if constexpr (requires { fields.phone_number; }) {
        fields.phone_number = frame.address->text();
    }
    if constexpr (requires { fields.host; }) {
        fields.host = frame.address->text();
    }
    if constexpr (requires { fields.domain; }) {
        fields.domain = frame.address->text();
    }
    if constexpr (requires { fields.port; }) {
        fields.port = frame.port->currentText();
    }
    if constexpr (requires { fields.relay; }) {
        fields.relay = frame.relay->isChecked();
        fields.relay_server = frame.relay_server->text();
    }
    if constexpr (requires { fields.send_method; }) {
        fields.send_method = static_cast<addressbook::WctpSendMethod>(std::max(frame.send_method->currentIndex(), 0));
    }
    if constexpr (requires { fields.fax_class; }) {
        fields.fax_class = frame.fax_class->currentText();
    }
    if constexpr (requires { fields.line; }) {
        fields.line = line_shown(frame);
    }
    if constexpr (requires { fields.init_string; }) {
        fields.init_string = frame.init_string->currentText();
    }
    if constexpr (requires { fields.wait_string; }) {
        fields.wait_string = frame.wait_string->text();
    }
    if constexpr (requires { fields.auth; }) {
        fields.auth = auth_shown(frame.auth);
    }
    if constexpr (requires { fields.username; }) {
        fields.username = frame.username->text();
    }
    if constexpr (requires { fields.password; }) {
        fields.password = frame.password->text();
    }
    if constexpr (requires { fields.msg_limit; }) {
        fields.msg_limit = frame.msg_limit->text();
    }
}

void set_text_if_changed(QLineEdit* box, const QString& text)
{
    if (box->text() != text) {
        box->setText(text);
    }
}

} // namespace

addressbook::CarrierFrame frmAddCarrier::frame_values(const CarrierFrameControls& frame)
{
    addressbook::CarrierFrame values = addressbook::default_frame(frame.protocol);
    std::visit([&](auto& fields) { read_fields(frame, fields); }, values);
    return values;
}

void frmAddCarrier::show_values(const CarrierFrameControls& frame, const addressbook::CarrierFrame& values)
{
    std::visit([&](const auto& fields) { show_fields(frame, fields); }, values);
}

void frmAddCarrier::rule_on_leaving(QLineEdit* box, int rule)
{
    connect(box, &QLineEdit::editingFinished, this, [box, rule] {
        set_text_if_changed(box, addressbook::on_leaving(static_cast<BoxRule>(rule), box->text()));
    });
}

void frmAddCarrier::copy_name(const QString& text)
{
    const QString name = addressbook::on_leaving(BoxRule::Name, text);
    for (const CarrierFrameControls& frame : m_frames) {
        set_text_if_changed(frame.name, name);
    }
}

void frmAddCarrier::copy_priority(const QString& text)
{
    const QString priority = addressbook::on_leaving(BoxRule::Priority, text);
    for (const CarrierFrameControls& frame : m_frames) {
        set_text_if_changed(frame.priority, priority);
    }
}

void frmAddCarrier::relay_chosen(const CarrierFrameControls& frame)
{
    const bool relay = frame.relay->isChecked();
    frame.relay_server->setEnabled(relay);
    // The box looks like part of the frame while it is out of use.
    const QPalette standard = QApplication::palette(frame.relay_server);
    QPalette palette = frame.relay_server->palette();
    palette.setColor(QPalette::Base, standard.color(relay ? QPalette::Base : QPalette::Button));
    frame.relay_server->setPalette(palette);
}

void frmAddCarrier::connect_rules(const CarrierFrameControls& frame)
{
    connect(frame.name, &QLineEdit::editingFinished, this, [this, box = frame.name] { copy_name(box->text()); });
    if (frame.protocol == Protocol::FaxSrv) {
        // This one box corrects its priority as it is typed, the others when they are left.
        connect(frame.priority, &QLineEdit::textChanged, this, &frmAddCarrier::copy_priority);
    } else {
        connect(frame.priority, &QLineEdit::editingFinished, this,
                [this, box = frame.priority] { copy_priority(box->text()); });
    }
    rule_on_leaving(frame.max_chars, static_cast<int>(BoxRule::MaxChars));
    const std::pair<QLineEdit*, BoxRule> boxes[] = {
        {frame.msg_limit, BoxRule::MsgLimit},
        {frame.baud != nullptr ? frame.baud->lineEdit() : nullptr, BoxRule::Baud},
        {frame.port != nullptr ? frame.port->lineEdit() : nullptr,
         frame.protocol == Protocol::Smtp ? BoxRule::SmtpPort : BoxRule::NumericPort},
        {frame.init_string != nullptr ? frame.init_string->lineEdit() : nullptr, BoxRule::InitString},
        {frame.wait_string, BoxRule::WaitString},
        {frame.address, BoxRule::Text},
        {frame.relay_server, BoxRule::Text},
        {frame.username, BoxRule::Text},
        {frame.password, BoxRule::Text},
    };
    for (const auto& [box, rule] : boxes) {
        if (box != nullptr) {
            rule_on_leaving(box, static_cast<int>(rule));
        }
    }
    if (frame.protocol != Protocol::Smtp) {
        return;
    }
    // Credentials typed while no authentication is chosen nudge the list to "Standard"; SMTP alone does it.
    for (QLineEdit* credential : {frame.username, frame.password}) {
        connect(credential, &QLineEdit::editingFinished, this, [frame, credential] {
            show_auth(frame.auth,
                      addressbook::smtp_auth_on_leaving_credentials(auth_shown(frame.auth), credential->text()));
        });
    }
    connect(frame.relay, &QRadioButton::toggled, this, [this, frame] { relay_chosen(frame); });
}

} // namespace cvd::console
