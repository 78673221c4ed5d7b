#include "addressbook/carrier_types.h"

#include <array>
#include <utility>

namespace cvd::addressbook {

namespace {

struct ProtocolNames
{
    Protocol protocol;
    const char16_t* list_text;
    const char16_t* code;
};

constexpr std::array<ProtocolNames, protocol_count> protocol_names{{
    {Protocol::Fax, u"FAX", u"fax"},
    {Protocol::FaxSrv, u"FAXSRV", u"fxs"},
    {Protocol::Gsmat, u"GSMAT", u"gsm"},
    {Protocol::Smtp, u"SMTP", u"eml"},
    {Protocol::Snpp, u"SNPP", u"snp"},
    {Protocol::Tap, u"TAP", u"tap"},
    {Protocol::Tone, u"TONE", u"ton"},
    {Protocol::Ucp, u"UCP", u"ucp"},
    {Protocol::Wctp, u"WCTP", u"wct"},
}};

const ProtocolNames& names_of(Protocol protocol)
{
    return protocol_names.at(static_cast<std::size_t>(protocol));
}

} // namespace

QString protocol_list_text(Protocol protocol)
{
    return QString::fromUtf16(names_of(protocol).list_text);
}

QStringList protocol_list()
{
    QStringList list;
    for (const ProtocolNames& names : protocol_names) {
        list.append(QString::fromUtf16(names.list_text));
    }
    return list;
}

QString dial_type_code(Protocol protocol)
{
    return QString::fromUtf16(names_of(protocol).code);
}

std::optional<Protocol> protocol_of_dial_type(const QString& dial_type)
{
    const QStringView code = QStringView(dial_type).left(3);
    for (const ProtocolNames& names : protocol_names) {
        if (code == QStringView(names.code)) {
            return names.protocol;
        }
    }
    return std::nullopt;
}

QString parity_list_text(Parity parity)
{
    return parity_list().at(static_cast<int>(parity));
}

QStringList parity_list()
{
    return {QStringLiteral("EVEN"), QStringLiteral("NONE"), QStringLiteral("ODD")};
}

namespace {

constexpr std::array<std::pair<AuthType, const char16_t*>, 9> auth_texts{{
    {AuthType::None, u"None"},
    {AuthType::Standard, u"Standard"},
    {AuthType::SenderOverride, u"Sender Override"},
    {AuthType::ForceCramMd5, u"Force CRAM-MD5"},
    {AuthType::ForcePlain, u"Force PLAIN"},
    {AuthType::ForceLogin, u"Force LOGIN"},
    {AuthType::ForceNtlm, u"Force NTLM"},
    {AuthType::MiscInfo, u"MiscInfo"},
    {AuthType::Recipient, u"Recipient"},
}};

} // namespace

QString auth_entry_text(AuthType auth)
{
    for (const auto& [type, text] : auth_texts) {
        if (type == auth) {
            return QString::fromUtf16(text);
        }
    }
    return {};
}

QList<AuthType> auth_list(Protocol protocol)
{
    switch (protocol) {
    case Protocol::Smtp:
        // Kept out of numeric order on purpose: operators know the list in this order.
        return {AuthType::None,       AuthType::Standard,  AuthType::ForceCramMd5,  AuthType::ForceLogin,
                AuthType::ForcePlain, AuthType::ForceNtlm, AuthType::SenderOverride};
    case Protocol::Wctp:
        return {AuthType::None, AuthType::Standard, AuthType::SenderOverride, AuthType::Recipient, AuthType::MiscInfo};
    case Protocol::Snpp:
    case Protocol::Tap:
    case Protocol::Ucp:
        return {AuthType::None, AuthType::Standard};
    case Protocol::Fax:
    case Protocol::FaxSrv:
    case Protocol::Gsmat:
    case Protocol::Tone:
        break;
    }
    return {};
}

QString send_method_text(WctpSendMethod method)
{
    return send_method_list().at(static_cast<int>(method));
}

QStringList send_method_list()
{
    return {QStringLiteral("Transient Client"), QStringLiteral("Enterprise Host")};
}

QStringList baud_list()
{
    return {QStringLiteral("300"),   QStringLiteral("1200"),  QStringLiteral("2400"),  QStringLiteral("4800"),
            QStringLiteral("9600"),  QStringLiteral("14400"), QStringLiteral("19200"), QStringLiteral("38400"),
            QStringLiteral("57600"), QStringLiteral("115200")};
}

QStringList data_bits_list()
{
    return {QStringLiteral("7"), QStringLiteral("8")};
}

QStringList stop_bits_list()
{
    return {QStringLiteral("1"), QStringLiteral("1.5"), QStringLiteral("2")};
}

QStringList fax_class_list()
{
    return {QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("2.0")};
}

QStringList snpp_port_list()
{
    return {QStringLiteral("444")};
}

QStringList wctp_port_list()
{
    return {QStringLiteral("80"), QStringLiteral("443")};
}

QStringList smtp_port_list()
{
    return {QStringLiteral("25"), QStringLiteral("25 STARTTLS"), QStringLiteral("465 SSL/TLS"),
            QStringLiteral("587 STARTTLS")};
}

QStringList fax_init_strings()
{
    return {
        QStringLiteral("(auto)"),
        QStringLiteral("AT&FE0V1&C1&D2S0=0"),
        QStringLiteral("AT&F1E0V1&C1&D2S0=0"),
        QStringLiteral("AT&F1&H3&I2&R2E0V1&C1&D2S0=0"),
        QStringLiteral("AT&FE0V1&C1&D2&K4S0=0"),
        QStringLiteral("AT&FE0V1&C1&D2&E5S0=0"),
        QStringLiteral("AT&FE0V1&C1&D2&E4&E11S0=0"),
        QStringLiteral("AT&FE0V1&C1&D2/Q1S0=0"),
        QStringLiteral("AT&FE0V1&K6&C1&D2S0=0"),
    };
}

// Duplicates are kept: operators pick entries by their place in the list.
QStringList modem_init_strings()
{
    return {
        QStringLiteral("(auto)"),
        QStringLiteral("AT&F0Q0V1X4&D2&B1&K0&M0&N2"),
        QStringLiteral("AT&FQ0V1X4&D2N0+MS=V22,0"),
        QStringLiteral("AT&FQ0V1X4&D2+MS=V22,0"),
        QStringLiteral("AT&FQ0V1X4&D2N0+MS=1,0"),
        QStringLiteral("AT&FQ0V1X4&D2+MS=1,0"),
        QStringLiteral("AT&FQ0V1X4&D2N0S37=5\\N0%C0"),
        QStringLiteral("AT&FQ0V1X4&D2S37=5\\N0%C0"),
        QStringLiteral("AT&FQ0V1X4&D2N0S37=3B16"),
        QStringLiteral("AT&FQ0V1X4&D2N0S37=5"),
        QStringLiteral("AT&FQ0V1X4&D2S37=5\\N0%C0"),
        QStringLiteral("AT&FQ0V1X4&D2N0S37=3B16"),
        QStringLiteral("AT&FQ0V1X4&D2N0S37=5"),
        QStringLiteral("AT&FQ0V1X4&D2S37=5"),
        QStringLiteral("AT&FQ0V1X4&D2"),
    };
}

CarrierFrame default_frame(Protocol protocol)
{
    switch (protocol) {
    case Protocol::Fax:
        return FaxFrame{};
    case Protocol::FaxSrv:
        return FaxSrvFrame{};
    case Protocol::Gsmat:
        return GsmatFrame{};
    case Protocol::Smtp:
        return SmtpFrame{};
    case Protocol::Snpp:
        return SnppFrame{};
    case Protocol::Tap:
        return TapFrame{};
    case Protocol::Tone:
        return ToneFrame{};
    case Protocol::Ucp:
        return UcpFrame{};
    case Protocol::Wctp:
        return WctpFrame{};
    }
    return SmtpFrame{}; // a new carrier starts on SMTP
}

QString frame_name(const CarrierFrame& frame)
{
    return std::visit([](const auto& fields) { return fields.name; }, frame);
}

QString frame_priority(const CarrierFrame& frame)
{
    return std::visit([](const auto& fields) { return fields.priority; }, frame);
}

void set_name_and_priority(CarrierFrame& frame, const QString& name, const QString& priority)
{
    std::visit(
        [&](auto& fields) {
            fields.name = name;
            fields.priority = priority;
        },
        frame);
}

} // namespace cvd::addressbook
