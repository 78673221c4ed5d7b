#include "addressbook/carrier_format.h"

#include "addressbook/carrier_rules.h"

#include <cmath>

namespace cvd::addressbook {

namespace {

// Texts are written as empty, never as null, so that readers of the row see what the frame showed.
QString stored_text(const QString& text)
{
    return text.isNull() ? QStringLiteral("") : text;
}

QString text_of(const std::optional<QString>& column)
{
    return column.value_or(QString());
}

QString number_text(const std::optional<qint32>& column)
{
    return column ? QString::number(*column) : QString();
}

// The columns as a protocol without phone, line, init string, credentials or relay writes them.
CarrierRow base_row(const QString& name, const QString& dial_type, const QString& max_chars, const QString& priority)
{
    CarrierRow row;
    row.name = stored_text(name);
    row.phone_number = stored_text({});
    row.modem_settings = stored_text({});
    row.maxchars = box_number(BoxRule::MaxChars, max_chars);
    row.init_string = stored_text({});
    row.retries = 0; // every Apply starts the engine's count afresh, also on an edit
    row.message_limit = 0;
    row.dial_type = dial_type;
    row.auth_type = static_cast<qint32>(AuthType::None);
    row.auth_user = stored_text({});
    row.auth_pass = stored_text({});
    row.relay_mail = false;
    row.relay_server = stored_text({});
    row.priority = box_number(BoxRule::Priority, priority);
    return row;
}

// A numeric port is stored as plain decimal text within 1 to 65535.
QString stored_port(const QString& port)
{
    return QString::number(box_number(BoxRule::NumericPort, port));
}

CarrierRow encode_frame(const FaxFrame& frame)
{
    CarrierRow row = base_row(frame.name, dial_type_code(Protocol::Fax), frame.max_chars, frame.priority);
    row.modem_settings = fax_class_code(frame.fax_class);
    row.init_string = stored_text(frame.init_string);
    return row;
}

CarrierRow encode_frame(const FaxSrvFrame& frame)
{
    return base_row(frame.name, dial_type_code(Protocol::FaxSrv), frame.max_chars, frame.priority);
}

CarrierRow encode_frame(const GsmatFrame& frame)
{
    CarrierRow row = base_row(frame.name, dial_type_code(Protocol::Gsmat), frame.max_chars, frame.priority);
    row.modem_settings = encode_line_settings(frame.line);
    row.init_string = stored_text(frame.init_string);
    row.message_limit = box_number(BoxRule::MsgLimit, frame.msg_limit);
    return row;
}

CarrierRow encode_frame(const SmtpFrame& frame)
{
    CarrierRow row = base_row(frame.name, dial_type_code(Protocol::Smtp), frame.max_chars, frame.priority);
    row.phone_number = stored_text(frame.domain);
    row.modem_settings = stored_text(frame.port); // the engine reads the security words out of it
    row.auth_type = static_cast<qint32>(frame.auth);
    row.auth_user = stored_text(frame.username);
    row.auth_pass = stored_text(frame.password);
    row.relay_mail = frame.relay;
    row.relay_server = stored_text(frame.relay_server);
    return row;
}

CarrierRow encode_frame(const SnppFrame& frame)
{
    CarrierRow row = base_row(frame.name, dial_type_code(Protocol::Snpp), frame.max_chars, frame.priority);
    row.phone_number = stored_text(frame.host);
    row.modem_settings = stored_port(frame.port);
    row.message_limit = box_number(BoxRule::MsgLimit, frame.msg_limit);
    row.auth_type = static_cast<qint32>(frame.auth);
    row.auth_pass = stored_text(frame.password);
    return row;
}

template <Protocol P> CarrierRow encode_frame(const DialUpFrame<P>& frame)
{
    CarrierRow row = base_row(frame.name, dial_type_code(P), frame.max_chars, frame.priority);
    row.phone_number = stored_text(frame.phone_number);
    row.modem_settings = encode_line_settings(frame.line);
    row.init_string = stored_text(frame.init_string);
    row.message_limit = box_number(BoxRule::MsgLimit, frame.msg_limit);
    row.auth_type = static_cast<qint32>(frame.auth);
    row.auth_pass = stored_text(frame.password);
    return row;
}

CarrierRow encode_frame(const ToneFrame& frame)
{
    CarrierRow row = base_row(frame.name, tone_dial_type(frame.wait_string), frame.max_chars, frame.priority);
    row.init_string = stored_text(frame.init_string);
    return row;
}

CarrierRow encode_frame(const WctpFrame& frame)
{
    CarrierRow row = base_row(frame.name, wctp_dial_type(frame.send_method), frame.max_chars, frame.priority);
    row.phone_number = stored_text(frame.host);
    row.modem_settings = stored_port(frame.port);
    row.auth_type = static_cast<qint32>(frame.auth);
    row.auth_user = stored_text(frame.username);
    row.auth_pass = stored_text(frame.password);
    return row;
}

// Each reader fills the fields its protocol reads back; the rest keep the frame's defaults.

void decode_into(FaxFrame& frame, const CarrierRow& row)
{
    frame.init_string = text_of(row.init_string);
    frame.fax_class = fax_class_of_code(text_of(row.modem_settings));
    frame.max_chars = number_text(row.maxchars);
}

void decode_into(FaxSrvFrame& frame, const CarrierRow& row)
{
    frame.max_chars = number_text(row.maxchars);
}

void decode_into(GsmatFrame& frame, const CarrierRow& row)
{
    frame.line = decode_line_settings(text_of(row.modem_settings), frame.line);
    frame.init_string = text_of(row.init_string);
    frame.max_chars = number_text(row.maxchars);
    frame.msg_limit = number_text(row.message_limit);
}

void decode_into(SmtpFrame& frame, const CarrierRow& row)
{
    frame.port = text_of(row.modem_settings);
    frame.domain = text_of(row.phone_number);
    frame.max_chars = number_text(row.maxchars);
    frame.relay = row.relay_mail.value_or(false);
    frame.relay_server = text_of(row.relay_server);
    frame.auth = auth_of_value(Protocol::Smtp, row.auth_type);
    frame.username = text_of(row.auth_user);
    frame.password = text_of(row.auth_pass);
}

void decode_into(SnppFrame& frame, const CarrierRow& row)
{
    frame.host = text_of(row.phone_number);
    frame.password = text_of(row.auth_pass);
    frame.port = text_of(row.modem_settings);
    frame.max_chars = number_text(row.maxchars);
    frame.msg_limit = number_text(row.message_limit);
    frame.auth = auth_of_value(Protocol::Snpp, row.auth_type);
}

template <Protocol P> void decode_into(DialUpFrame<P>& frame, const CarrierRow& row)
{
    frame.phone_number = text_of(row.phone_number);
    frame.line = decode_line_settings(text_of(row.modem_settings), frame.line);
    frame.init_string = text_of(row.init_string);
    frame.max_chars = number_text(row.maxchars);
    frame.msg_limit = number_text(row.message_limit);
    frame.password = text_of(row.auth_pass);
    frame.auth = auth_of_value(P, row.auth_type);
}

void decode_into(ToneFrame& frame, const CarrierRow& row)
{
    frame.init_string = text_of(row.init_string);
    frame.max_chars = number_text(row.maxchars);
    frame.wait_string = tone_wait_string_of(text_of(row.dial_type));
}

void decode_into(WctpFrame& frame, const CarrierRow& row)
{
    frame.host = text_of(row.phone_number);
    frame.port = text_of(row.modem_settings);
    frame.max_chars = number_text(row.maxchars);
    frame.send_method = wctp_send_method_of(text_of(row.dial_type));
    frame.auth = auth_of_value(Protocol::Wctp, row.auth_type);
    frame.username = text_of(row.auth_user);
    frame.password = text_of(row.auth_pass);
}

} // namespace

CarrierRow encode_carrier(const CarrierFrame& frame)
{
    return std::visit([](const auto& fields) { return encode_frame(fields); }, frame);
}

DecodedCarrier decode_carrier(const CarrierRow& row)
{
    DecodedCarrier decoded;
    decoded.name = text_of(row.name);
    decoded.priority = number_text(row.priority);
    const std::optional<Protocol> protocol = protocol_of_dial_type(text_of(row.dial_type));
    if (!protocol) {
        return decoded;
    }
    CarrierFrame frame = default_frame(*protocol);
    set_name_and_priority(frame, decoded.name, decoded.priority);
    std::visit([&](auto& fields) { decode_into(fields, row); }, frame);
    decoded.frame = std::move(frame);
    return decoded;
}

QString encode_line_settings(const LineSettings& line)
{
    const QString baud = QString::number(box_number(BoxRule::Baud, line.baud));
    const QString parity = parity_list_text(line.parity).left(1).toLower();
    return baud + u',' + parity + u',' + line.data_bits + u',' + line.stop_bits;
}

LineSettings decode_line_settings(const QString& stored, const LineSettings& shown)
{
    LineSettings line = shown;
    const qsizetype first = stored.indexOf(u',');
    line.baud = first < 0 ? stored : stored.left(first);
    if (first < 0) {
        return line;
    }
    const QString parity = stored.mid(first + 1, 1);
    if (parity == u"n") {
        line.parity = Parity::None;
    } else if (parity == u"e") {
        line.parity = Parity::Even;
    } else if (parity == u"o") {
        line.parity = Parity::Odd;
    }
    const qsizetype second = stored.indexOf(u',', first + 1);
    if (second < 0) {
        return line;
    }
    const QString data_bits = stored.mid(second + 1, 1);
    if (data_bits_list().contains(data_bits)) {
        line.data_bits = data_bits;
    }
    const qsizetype third = stored.indexOf(u',', second + 1);
    if (third < 0) {
        return line;
    }
    const QString stop_bits = stored.mid(third + 1);
    if (stop_bits_list().contains(stop_bits)) {
        line.stop_bits = stop_bits;
    }
    return line;
}

QString fax_class_code(const QString& fax_class)
{
    // The place in the list is stored, not the text: "2.0" is class code 3.
    return QString::number(fax_class_list().indexOf(fax_class) + 1);
}

QString fax_class_of_code(const QString& code)
{
    const QStringList classes = fax_class_list();
    const double number = std::nearbyint(leading_number(code));
    if (!(number >= 1 && number <= static_cast<double>(classes.size()))) {
        return {}; // no position: the box shows no class, and stores "0" again
    }
    return classes.at(static_cast<qsizetype>(number) - 1);
}

QString wctp_dial_type(WctpSendMethod method)
{
    return dial_type_code(Protocol::Wctp) + u'-' + QString::number(static_cast<int>(method));
}

WctpSendMethod wctp_send_method_of(const QString& dial_type)
{
    return leading_number(dial_type.mid(4)) == 1 ? WctpSendMethod::EnterpriseHost : WctpSendMethod::TransientClient;
}

QString tone_dial_type(const QString& wait_string)
{
    return QStringLiteral("tone-") + wait_string;
}

QString tone_wait_string_of(const QString& dial_type)
{
    return dial_type.mid(5);
}

AuthType auth_of_value(Protocol protocol, std::optional<qint32> stored)
{
    for (const AuthType auth : auth_list(protocol)) {
        if (static_cast<qint32>(auth) == stored.value_or(0)) {
            return auth;
        }
    }
    return AuthType::None;
}

} // namespace cvd::addressbook
