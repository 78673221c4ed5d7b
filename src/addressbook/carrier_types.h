#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <optional>
#include <variant>

namespace cvd::addressbook {

// One row of cv_carriers, column for column. No column of the table is required, so each may be null in a
// file written by an older version or by another program; nullopt stands for null.
struct CarrierRow
{
    std::optional<QString> name;           // cv_name, text 40
    std::optional<QString> phone_number;   // cv_phone_number, text 80: phone, host or mail domain
    std::optional<QString> modem_settings; // cv_modem_settings, text 15: line form, port or fax class code
    std::optional<qint32> maxchars;        // cv_maxchars
    std::optional<QString> init_string;    // cv_init_string, text 80
    std::optional<qint32> retries;         // cv_retries, the engine's count within one run
    std::optional<qint32> message_limit;   // cv_message_limit
    std::optional<QString> dial_type;      // cv_dial_type, text 40: the protocol code, see dial_type_code
    std::optional<qint32> auth_type;       // cv_auth_type, see AuthType
    std::optional<QString> auth_user;      // cv_auth_user, text 80
    std::optional<QString> auth_pass;      // cv_auth_pass, stored as typed
    std::optional<bool> relay_mail;        // cv_relay_mail
    std::optional<QString> relay_server;   // cv_relay_server, text 80
    std::optional<qint32> priority;        // cv_priority

    bool operator==(const CarrierRow&) const = default;
};

// The nine protocols in the order of the protocol lists, which is also the order of the dialog's main tabs.
enum class Protocol { Fax, FaxSrv, Gsmat, Smtp, Snpp, Tap, Tone, Ucp, Wctp };
inline constexpr int protocol_count = 9;

inline constexpr int main_tab(Protocol protocol)
{
    return static_cast<int>(protocol);
}
inline constexpr int advanced_tab(Protocol protocol)
{
    return static_cast<int>(protocol) + protocol_count;
}

// "FAX", "FAXSRV", ... as the protocol lists show them.
QString protocol_list_text(Protocol protocol);
QStringList protocol_list();

// What cv_dial_type starts with: "fax", "fxs", "gsm", "eml", "snp", "tap", "ton", "ucp", "wct".
QString dial_type_code(Protocol protocol);

// The protocol named by the first three letters of a stored cv_dial_type, compared exactly; nullopt for
// a code that names none of the nine.
std::optional<Protocol> protocol_of_dial_type(const QString& dial_type);

enum class Parity { Even, None, Odd }; // in list order
QString parity_list_text(Parity parity);
QStringList parity_list();

// The stored number is fixed by the entry, not by its place in a list.
enum class AuthType : qint32 {
    None = 0,
    Standard = 1,
    SenderOverride = 2,
    ForceCramMd5 = 3,
    ForcePlain = 4,
    ForceLogin = 5,
    ForceNtlm = 6,
    MiscInfo = 11,
    Recipient = 12,
};
QString auth_entry_text(AuthType auth);

// The entries of a protocol's auth list, in list order; empty for the protocols without one.
QList<AuthType> auth_list(Protocol protocol);

enum class WctpSendMethod { TransientClient = 0, EnterpriseHost = 1 };
QString send_method_text(WctpSendMethod method);
QStringList send_method_list();

// The offers of the dialog's lists, in their order, duplicates included.
QStringList baud_list();
QStringList data_bits_list();
QStringList stop_bits_list();
QStringList fax_class_list();
QStringList snpp_port_list();
QStringList wctp_port_list();
QStringList smtp_port_list();
QStringList fax_init_strings();
QStringList modem_init_strings(); // TAP, UCP, GSMAT and TONE

// The modem line of the serial protocols. Baud is the text of an editable box; data and stop bits are
// texts of selection-only lists.
struct LineSettings
{
    QString baud = QStringLiteral("1200");
    Parity parity = Parity::Even;
    QString data_bits = QStringLiteral("7");
    QString stop_bits = QStringLiteral("1");

    bool operator==(const LineSettings&) const = default;
};

// The frames hold their boxes' texts as they stand, so the number boxes are texts too: the rules of
// carrier_rules.h make them safe, and encode_carrier stores only what those rules let through.
// Default member values are what a new carrier starts with.

struct FaxFrame
{
    QString name;
    QString fax_class = QStringLiteral("1");
    QString init_string = QStringLiteral("(auto)");
    QString max_chars = QStringLiteral("5000");
    QString priority = QStringLiteral("100");

    bool operator==(const FaxFrame&) const = default;
};

struct FaxSrvFrame
{
    QString name;
    QString max_chars = QStringLiteral("5000");
    QString priority = QStringLiteral("100");

    bool operator==(const FaxSrvFrame&) const = default;
};

// A new GSM carrier deliberately starts with no init string selected, unlike FAX, TAP and UCP.
struct GsmatFrame
{
    QString name;
    LineSettings line{QStringLiteral("115200"), Parity::None, QStringLiteral("8"), QStringLiteral("1")};
    QString init_string;
    QString msg_limit = QStringLiteral("0");
    QString max_chars = QStringLiteral("160");
    QString priority = QStringLiteral("100");

    bool operator==(const GsmatFrame&) const = default;
};

struct SmtpFrame
{
    QString name;
    QString domain;
    QString port = QStringLiteral("25"); // carries the security words too: "587 STARTTLS"
    bool relay = false;                  // true: through the local/ISP mail server; false: directly
    QString relay_server;
    AuthType auth = AuthType::None;
    QString username;
    QString password;
    QString max_chars = QStringLiteral("160");
    QString priority = QStringLiteral("100");

    bool operator==(const SmtpFrame&) const = default;
};

struct SnppFrame
{
    QString name;
    QString host;
    QString port = QStringLiteral("444");
    AuthType auth = AuthType::None;
    QString password;
    QString msg_limit = QStringLiteral("0");
    QString max_chars = QStringLiteral("160");
    QString priority = QStringLiteral("100");

    bool operator==(const SnppFrame&) const = default;
};

// TAP and UCP have the same fields; the parameter only makes them two types.
template <Protocol P> struct DialUpFrame
{
    QString name;
    QString phone_number;
    LineSettings line;
    QString init_string = QStringLiteral("(auto)");
    AuthType auth = AuthType::None;
    QString password;
    QString msg_limit = QStringLiteral("0");
    QString max_chars = QStringLiteral("160");
    QString priority = QStringLiteral("100");

    bool operator==(const DialUpFrame&) const = default;
};
using TapFrame = DialUpFrame<Protocol::Tap>;
using UcpFrame = DialUpFrame<Protocol::Ucp>;

// Like GSMAT, a new tone carrier starts with no init string selected.
struct ToneFrame
{
    QString name;
    QString init_string;
    QString wait_string = QStringLiteral(",,@");
    QString max_chars = QStringLiteral("10");
    QString priority = QStringLiteral("100");

    bool operator==(const ToneFrame&) const = default;
};

struct WctpFrame
{
    QString name;
    QString host;
    WctpSendMethod send_method = WctpSendMethod::TransientClient;
    QString port = QStringLiteral("80");
    AuthType auth = AuthType::None;
    QString username;
    QString password;
    QString max_chars = QStringLiteral("160");
    QString priority = QStringLiteral("100");

    bool operator==(const WctpFrame&) const = default;
};

// One frame of the dialog; the alternatives stand in Protocol order, so index() is the protocol.
using CarrierFrame =
    std::variant<FaxFrame, FaxSrvFrame, GsmatFrame, SmtpFrame, SnppFrame, TapFrame, ToneFrame, UcpFrame, WctpFrame>;

inline Protocol protocol_of(const CarrierFrame& frame)
{
    return static_cast<Protocol>(frame.index());
}

// The frame of a new carrier of that protocol: empty name, priority "100", the rest as listed above.
CarrierFrame default_frame(Protocol protocol);

// Name and priority are shared by all nine frames.
QString frame_name(const CarrierFrame& frame);
QString frame_priority(const CarrierFrame& frame);
void set_name_and_priority(CarrierFrame& frame, const QString& name, const QString& priority);

} // namespace cvd::addressbook
