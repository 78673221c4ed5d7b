#include "addressbook/carrier_format.h"

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace cvd::addressbook {

// Readable failures: the row column by column.
void PrintTo(const CarrierRow& row, std::ostream* out)
{
    const auto text = [](const std::optional<QString>& v) { return v ? "'" + v->toStdString() + "'" : "null"; };
    const auto number = [](const auto& v) { return v ? std::to_string(*v) : std::string("null"); };
    *out << "{name " << text(row.name) << ", phone " << text(row.phone_number) << ", modem " << text(row.modem_settings)
         << ", maxchars " << number(row.maxchars) << ", init " << text(row.init_string) << ", retries "
         << number(row.retries) << ", limit " << number(row.message_limit) << ", dial " << text(row.dial_type)
         << ", auth " << number(row.auth_type) << ", user " << text(row.auth_user) << ", pass " << text(row.auth_pass)
         << ", relay " << number(row.relay_mail) << ", server " << text(row.relay_server) << ", priority "
         << number(row.priority) << "}";
}

void PrintTo(const LineSettings& line, std::ostream* out)
{
    *out << "{" << line.baud.toStdString() << ", " << parity_list_text(line.parity).toStdString() << ", "
         << line.data_bits.toStdString() << ", " << line.stop_bits.toStdString() << "}";
}

namespace {

// Every field holds a value no other column of the row holds, so a field packed into the wrong column,
// or read back from the wrong one, shows up.
struct EncodingCase
{
    const char* label;
    CarrierFrame frame;
    CarrierRow row;
};

std::vector<EncodingCase> encoding_cases()
{
    return {
        {"FAX",
         FaxFrame{.name = u"Fax-1"_s,
                  .fax_class = u"2"_s,
                  .init_string = u"AT&FE0V1&C1&D2S0=0"_s,
                  .max_chars = u"4000"_s,
                  .priority = u"7"_s},
         CarrierRow{.name = u"Fax-1"_s,
                    .phone_number = u""_s,
                    .modem_settings = u"2"_s,
                    .maxchars = 4000,
                    .init_string = u"AT&FE0V1&C1&D2S0=0"_s,
                    .retries = 0,
                    .message_limit = 0,
                    .dial_type = u"fax"_s,
                    .auth_type = 0,
                    .auth_user = u""_s,
                    .auth_pass = u""_s,
                    .relay_mail = false,
                    .relay_server = u""_s,
                    .priority = 7}},
        {"FAXSRV", FaxSrvFrame{.name = u"FaxSrv_2"_s, .max_chars = u"3000"_s, .priority = u"8"_s},
         CarrierRow{.name = u"FaxSrv_2"_s,
                    .phone_number = u""_s,
                    .modem_settings = u""_s,
                    .maxchars = 3000,
                    .init_string = u""_s,
                    .retries = 0,
                    .message_limit = 0,
                    .dial_type = u"fxs"_s,
                    .auth_type = 0,
                    .auth_user = u""_s,
                    .auth_pass = u""_s,
                    .relay_mail = false,
                    .relay_server = u""_s,
                    .priority = 8}},
        {"GSMAT",
         GsmatFrame{.name = u"Gsm.3"_s,
                    .line = {u"9600"_s, Parity::Odd, u"7"_s, u"2"_s},
                    .init_string = u"AT&FQ0V1X4&D2"_s,
                    .msg_limit = u"3"_s,
                    .max_chars = u"150"_s,
                    .priority = u"9"_s},
         CarrierRow{.name = u"Gsm.3"_s,
                    .phone_number = u""_s,
                    .modem_settings = u"9600,o,7,2"_s,
                    .maxchars = 150,
                    .init_string = u"AT&FQ0V1X4&D2"_s,
                    .retries = 0,
                    .message_limit = 3,
                    .dial_type = u"gsm"_s,
                    .auth_type = 0,
                    .auth_user = u""_s,
                    .auth_pass = u""_s,
                    .relay_mail = false,
                    .relay_server = u""_s,
                    .priority = 9}},
        {"SMTP",
         SmtpFrame{.name = u"Mail"_s,
                   .domain = u"mail.example.org"_s,
                   .port = u"465 SSL/TLS"_s,
                   .relay = true,
                   .relay_server = u"relay.example.org"_s,
                   .auth = AuthType::ForceLogin,
                   .username = u"ops"_s,
                   .password = u"s3cret"_s,
                   .max_chars = u"900"_s,
                   .priority = u"10"_s},
         CarrierRow{.name = u"Mail"_s,
                    .phone_number = u"mail.example.org"_s,
                    .modem_settings = u"465 SSL/TLS"_s,
                    .maxchars = 900,
                    .init_string = u""_s,
                    .retries = 0,
                    .message_limit = 0,
                    .dial_type = u"eml"_s,
                    .auth_type = 5,
                    .auth_user = u"ops"_s,
                    .auth_pass = u"s3cret"_s,
                    .relay_mail = true,
                    .relay_server = u"relay.example.org"_s,
                    .priority = 10}},
        {"SNPP",
         SnppFrame{.name = u"Snpp"_s,
                   .host = u"snpp.example.net"_s,
                   .port = u"4444"_s,
                   .auth = AuthType::Standard,
                   .password = u"pin"_s,
                   .msg_limit = u"4"_s,
                   .max_chars = u"200"_s,
                   .priority = u"11"_s},
         CarrierRow{.name = u"Snpp"_s,
                    .phone_number = u"snpp.example.net"_s,
                    .modem_settings = u"4444"_s,
                    .maxchars = 200,
                    .init_string = u""_s,
                    .retries = 0,
                    .message_limit = 4,
                    .dial_type = u"snp"_s,
                    .auth_type = 1,
                    .auth_user = u""_s,
                    .auth_pass = u"pin"_s,
                    .relay_mail = false,
                    .relay_server = u""_s,
                    .priority = 11}},
        {"TAP",
         TapFrame{.name = u"Tap"_s,
                  .phone_number = u"18005550100"_s,
                  .line = {u"2400"_s, Parity::Odd, u"8"_s, u"1.5"_s},
                  .init_string = u"AT&F0Q0V1X4&D2&B1&K0&M0&N2"_s,
                  .auth = AuthType::Standard,
                  .password = u"tappw"_s,
                  .msg_limit = u"5"_s,
                  .max_chars = u"240"_s,
                  .priority = u"12"_s},
         CarrierRow{.name = u"Tap"_s,
                    .phone_number = u"18005550100"_s,
                    .modem_settings = u"2400,o,8,1.5"_s,
                    .maxchars = 240,
                    .init_string = u"AT&F0Q0V1X4&D2&B1&K0&M0&N2"_s,
                    .retries = 0,
                    .message_limit = 5,
                    .dial_type = u"tap"_s,
                    .auth_type = 1,
                    .auth_user = u""_s,
                    .auth_pass = u"tappw"_s,
                    .relay_mail = false,
                    .relay_server = u""_s,
                    .priority = 12}},
        {"TONE",
         ToneFrame{.name = u"Tone"_s,
                   .init_string = u"AT&FQ0V1X4&D2S37=5\\N0%C0"_s,
                   .wait_string = u",,,#"_s,
                   .max_chars = u"20"_s,
                   .priority = u"13"_s},
         CarrierRow{.name = u"Tone"_s,
                    .phone_number = u""_s,
                    .modem_settings = u""_s,
                    .maxchars = 20,
                    .init_string = u"AT&FQ0V1X4&D2S37=5\\N0%C0"_s,
                    .retries = 0,
                    .message_limit = 0,
                    .dial_type = u"tone-,,,#"_s,
                    .auth_type = 0,
                    .auth_user = u""_s,
                    .auth_pass = u""_s,
                    .relay_mail = false,
                    .relay_server = u""_s,
                    .priority = 13}},
        {"UCP",
         UcpFrame{.name = u"Ucp"_s,
                  .phone_number = u"0800123"_s,
                  .line = {u"4800"_s, Parity::None, u"8"_s, u"2"_s},
                  .init_string = u"(auto)"_s,
                  .auth = AuthType::None,
                  .password = u"ucppw"_s,
                  .msg_limit = u"6"_s,
                  .max_chars = u"161"_s,
                  .priority = u"14"_s},
         CarrierRow{.name = u"Ucp"_s,
                    .phone_number = u"0800123"_s,
                    .modem_settings = u"4800,n,8,2"_s,
                    .maxchars = 161,
                    .init_string = u"(auto)"_s,
                    .retries = 0,
                    .message_limit = 6,
                    .dial_type = u"ucp"_s,
                    .auth_type = 0,
                    .auth_user = u""_s,
                    .auth_pass = u"ucppw"_s,
                    .relay_mail = false,
                    .relay_server = u""_s,
                    .priority = 14}},
        {"WCTP",
         WctpFrame{.name = u"Wctp"_s,
                   .host = u"wctp.example.com"_s,
                   .send_method = WctpSendMethod::EnterpriseHost,
                   .port = u"443"_s,
                   .auth = AuthType::Recipient,
                   .username = u"wuser"_s,
                   .password = u"wpass"_s,
                   .max_chars = u"500"_s,
                   .priority = u"15"_s},
         CarrierRow{.name = u"Wctp"_s,
                    .phone_number = u"wctp.example.com"_s,
                    .modem_settings = u"443"_s,
                    .maxchars = 500,
                    .init_string = u""_s,
                    .retries = 0,
                    .message_limit = 0,
                    .dial_type = u"wct-1"_s,
                    .auth_type = 12,
                    .auth_user = u"wuser"_s,
                    .auth_pass = u"wpass"_s,
                    .relay_mail = false,
                    .relay_server = u""_s,
                    .priority = 15}},
    };
}

TEST(CarrierFormat, EachProtocolPacksEveryColumnAndReadsItBack)
{
    for (const EncodingCase& c : encoding_cases()) {
        SCOPED_TRACE(c.label);
        EXPECT_EQ(encode_carrier(c.frame), c.row);

        const DecodedCarrier decoded = decode_carrier(c.row);
        EXPECT_EQ(decoded.name, frame_name(c.frame));
        EXPECT_EQ(decoded.priority, frame_priority(c.frame));
        ASSERT_TRUE(decoded.frame.has_value());
        EXPECT_EQ(*decoded.frame, c.frame);
    }
}

struct DefaultCase
{
    Protocol protocol;
    const char* modem_settings;
    const char* init_string;
    qint32 maxchars;
    const char* dial_type;
};

TEST(CarrierFormat, NewCarriersStoreTheDefaultsAndReadThemBack)
{
    const DefaultCase cases[] = {
        {Protocol::Fax, "1", "(auto)", 5000, "fax"},
        {Protocol::FaxSrv, "", "", 5000, "fxs"},
        // GSMAT and TONE start with no init string selected, unlike FAX, TAP and UCP.
        {Protocol::Gsmat, "115200,n,8,1", "", 160, "gsm"},
        {Protocol::Smtp, "25", "", 160, "eml"},
        {Protocol::Snpp, "444", "", 160, "snp"},
        {Protocol::Tap, "1200,e,7,1", "(auto)", 160, "tap"},
        {Protocol::Tone, "", "", 10, "tone-,,@"},
        {Protocol::Ucp, "1200,e,7,1", "(auto)", 160, "ucp"},
        {Protocol::Wctp, "80", "", 160, "wct-0"},
    };
    for (const DefaultCase& c : cases) {
        SCOPED_TRACE(protocol_list_text(c.protocol).toStdString());
        CarrierFrame frame = default_frame(c.protocol);
        ASSERT_EQ(protocol_of(frame), c.protocol);
        set_name_and_priority(frame, u"New"_s, frame_priority(frame));

        const CarrierRow row = encode_carrier(frame);
        EXPECT_EQ(row.modem_settings, QString::fromUtf8(c.modem_settings));
        EXPECT_EQ(row.init_string, QString::fromUtf8(c.init_string));
        EXPECT_EQ(row.maxchars, c.maxchars);
        EXPECT_EQ(row.dial_type, QString::fromUtf8(c.dial_type));
        EXPECT_EQ(row.message_limit, 0);
        EXPECT_EQ(row.auth_type, 0);
        EXPECT_EQ(row.relay_mail, false); // SMTP starts on direct delivery
        EXPECT_EQ(row.priority, 100);
        EXPECT_EQ(row.retries, 0);

        // A row bound as null would read differently in the engine: texts are stored as empty, never null.
        for (const std::optional<QString>* text : {&row.name, &row.phone_number, &row.modem_settings, &row.init_string,
                                                   &row.dial_type, &row.auth_user, &row.auth_pass, &row.relay_server}) {
            ASSERT_TRUE(text->has_value());
            EXPECT_FALSE((*text)->isNull());
        }

        EXPECT_EQ(decode_carrier(row).frame, frame);
    }
}

TEST(CarrierFormat, FaxClassIsStoredByListPosition)
{
    const std::pair<const char*, const char*> to_code[] = {
        {"1", "1"}, {"2", "2"}, {"2.0", "3"}, {"3", "0"}, {"2.00", "0"}, {"", "0"},
    };
    for (const auto& [text, code] : to_code) {
        EXPECT_EQ(fax_class_code(QString::fromUtf8(text)), QString::fromUtf8(code)) << text;
    }
    const std::pair<const char*, const char*> from_code[] = {
        {"1", "1"}, {"2", "2"}, {"3", "2.0"}, {" 3", "2.0"}, {"0", ""}, {"4", ""}, {"-1", ""}, {"abc", ""}, {"", ""},
    };
    for (const auto& [code, text] : from_code) {
        EXPECT_EQ(fax_class_of_code(QString::fromUtf8(code)), QString::fromUtf8(text)) << code;
    }

    FaxFrame fax;
    fax.name = u"Fax20"_s;
    fax.fax_class = u"2.0"_s;
    const CarrierRow row = encode_carrier(fax);
    EXPECT_EQ(row.modem_settings, u"3"_s);
    EXPECT_EQ(std::get<FaxFrame>(*decode_carrier(row).frame).fax_class, u"2.0"_s);
}

struct LineCase
{
    const char* stored;
    LineSettings shown;
    LineSettings expected;
};

TEST(CarrierFormat, LineFormReadsOnlyWhatTheListsHold)
{
    const LineSettings tap;
    const LineSettings gsm = std::get<GsmatFrame>(default_frame(Protocol::Gsmat)).line;
    const LineCase cases[] = {
        {"1200,e,7,1", gsm, {u"1200"_s, Parity::Even, u"7"_s, u"1"_s}},
        {"19200,o,8,1.5", tap, {u"19200"_s, Parity::Odd, u"8"_s, u"1.5"_s}},
        {"57600,n,8,2", tap, {u"57600"_s, Parity::None, u"8"_s, u"2"_s}},
        // Letters and digits that no list holds leave the selection as it was.
        {"9600,x,9,3", tap, {u"9600"_s, Parity::Even, u"7"_s, u"1"_s}},
        {"9600,N,8,1", tap, {u"9600"_s, Parity::Even, u"8"_s, u"1"_s}},
        // A short or empty text fills what it has and leaves the rest.
        {"2400,n", tap, {u"2400"_s, Parity::None, u"7"_s, u"1"_s}},
        {"300", gsm, {u"300"_s, Parity::None, u"8"_s, u"1"_s}},
        {"", tap, {u""_s, Parity::Even, u"7"_s, u"1"_s}},
    };
    for (const LineCase& c : cases) {
        EXPECT_EQ(decode_line_settings(QString::fromUtf8(c.stored), c.shown), c.expected) << c.stored;
    }
    const LineSettings wide{u"115200"_s, Parity::Odd, u"8"_s, u"1.5"_s};
    EXPECT_EQ(encode_line_settings(wide), u"115200,o,8,1.5"_s);
    EXPECT_EQ(decode_line_settings(encode_line_settings(wide), tap), wide);
}

TEST(CarrierFormat, DialTypePicksTheFrameByItsFirstThreeLetters)
{
    struct Case
    {
        std::optional<QString> dial_type;
        std::optional<Protocol> protocol;
    };
    const Case cases[] = {
        {u"fax"_s, Protocol::Fax},    {u"fxs"_s, Protocol::FaxSrv}, {u"gsm"_s, Protocol::Gsmat},
        {u"eml"_s, Protocol::Smtp},   {u"snp"_s, Protocol::Snpp},   {u"tap"_s, Protocol::Tap},
        {u"tone-"_s, Protocol::Tone}, {u"ucp"_s, Protocol::Ucp},    {u"wct-0"_s, Protocol::Wctp},
        {u"tapx"_s, Protocol::Tap},   {u"TAP"_s, std::nullopt},     {u"ta"_s, std::nullopt},
        {u""_s, std::nullopt},        {std::nullopt, std::nullopt}, {u"pager"_s, std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.dial_type.value_or(u"(null)"_s).toStdString());
        CarrierRow row;
        row.name = u"Known"_s;
        row.priority = 42;
        row.dial_type = c.dial_type;
        const DecodedCarrier decoded = decode_carrier(row);
        // Name and priority reach all frames even when no frame is filled.
        EXPECT_EQ(decoded.name, u"Known"_s);
        EXPECT_EQ(decoded.priority, u"42"_s);
        ASSERT_EQ(decoded.frame.has_value(), c.protocol.has_value());
        if (decoded.frame) {
            EXPECT_EQ(protocol_of(*decoded.frame), *c.protocol);
            EXPECT_EQ(frame_name(*decoded.frame), u"Known"_s);
            EXPECT_EQ(frame_priority(*decoded.frame), u"42"_s);
        }
    }
}

TEST(CarrierFormat, WctpSendMethodAndToneWaitStringRideInTheDialType)
{
    const std::pair<const char*, WctpSendMethod> methods[] = {
        {"wct-1", WctpSendMethod::EnterpriseHost},  {"wct-0", WctpSendMethod::TransientClient},
        {"wct-2", WctpSendMethod::TransientClient}, {"wct", WctpSendMethod::TransientClient},
        {"wct-", WctpSendMethod::TransientClient},  {"wctx1", WctpSendMethod::EnterpriseHost},
    };
    for (const auto& [dial_type, method] : methods) {
        EXPECT_EQ(wctp_send_method_of(QString::fromUtf8(dial_type)), method) << dial_type;
    }
    EXPECT_EQ(wctp_dial_type(WctpSendMethod::TransientClient), u"wct-0"_s);
    EXPECT_EQ(wctp_dial_type(WctpSendMethod::EnterpriseHost), u"wct-1"_s);

    EXPECT_EQ(tone_dial_type(u",,@"_s), u"tone-,,@"_s);
    EXPECT_EQ(tone_wait_string_of(u"tone-,,@"_s), u",,@"_s);
    EXPECT_EQ(tone_wait_string_of(u"tonex,,@"_s), u",,@"_s); // the five characters are not checked
    EXPECT_EQ(tone_wait_string_of(u"tone"_s), u""_s);
}

TEST(CarrierFormat, AuthIsReadByEntryNotByListPlace)
{
    struct Case
    {
        Protocol protocol;
        std::optional<qint32> stored;
        AuthType expected;
    };
    const Case cases[] = {
        {Protocol::Smtp, 3, AuthType::ForceCramMd5},   {Protocol::Smtp, 4, AuthType::ForcePlain},
        {Protocol::Smtp, 5, AuthType::ForceLogin},     {Protocol::Smtp, 6, AuthType::ForceNtlm},
        {Protocol::Smtp, 2, AuthType::SenderOverride}, {Protocol::Smtp, 12, AuthType::None},
        {Protocol::Wctp, 11, AuthType::MiscInfo},      {Protocol::Wctp, 12, AuthType::Recipient},
        {Protocol::Wctp, 3, AuthType::None},           {Protocol::Snpp, 1, AuthType::Standard},
        {Protocol::Snpp, 2, AuthType::None},           {Protocol::Tap, 11, AuthType::None},
        {Protocol::Ucp, std::nullopt, AuthType::None},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(auth_of_value(c.protocol, c.stored), c.expected)
            << protocol_list_text(c.protocol).toStdString() << " " << c.stored.value_or(-1);
    }

    // The SMTP list runs out of numeric order; its entries still store their own numbers.
    QStringList texts;
    QList<qint32> values;
    for (const AuthType auth : auth_list(Protocol::Smtp)) {
        texts.append(auth_entry_text(auth));
        values.append(static_cast<qint32>(auth));
    }
    EXPECT_EQ(texts, (QStringList{u"None"_s, u"Standard"_s, u"Force CRAM-MD5"_s, u"Force LOGIN"_s, u"Force PLAIN"_s,
                                  u"Force NTLM"_s, u"Sender Override"_s}));
    EXPECT_EQ(values, (QList<qint32>{0, 1, 3, 5, 4, 6, 2}));

    texts.clear();
    values.clear();
    for (const AuthType auth : auth_list(Protocol::Wctp)) {
        texts.append(auth_entry_text(auth));
        values.append(static_cast<qint32>(auth));
    }
    EXPECT_EQ(texts, (QStringList{u"None"_s, u"Standard"_s, u"Sender Override"_s, u"Recipient"_s, u"MiscInfo"_s}));
    EXPECT_EQ(values, (QList<qint32>{0, 1, 2, 12, 11}));
    EXPECT_TRUE(auth_list(Protocol::Gsmat).isEmpty());
}

TEST(CarrierFormat, BoxesNeverLeftStillStoreNumbersWithinTheirLimits)
{
    TapFrame tap;
    tap.name = u"Raw"_s;
    tap.max_chars = u"abc"_s;
    tap.msg_limit = u"999"_s;
    tap.priority = u"12abc"_s;
    tap.line.baud = u" 9.6e3 "_s;
    CarrierRow row = encode_carrier(tap);
    EXPECT_EQ(row.maxchars, 1);
    EXPECT_EQ(row.message_limit, 255);
    EXPECT_EQ(row.priority, 12);
    EXPECT_EQ(row.modem_settings, u"9600,e,7,1"_s);

    tap.line.baud = u"fast"_s;
    tap.max_chars = u""_s;
    tap.msg_limit = u"-4"_s;
    tap.priority = u""_s;
    row = encode_carrier(tap);
    EXPECT_EQ(row.modem_settings, u"1,e,7,1"_s);
    EXPECT_EQ(row.maxchars, 1);
    EXPECT_EQ(row.message_limit, 0);
    EXPECT_EQ(row.priority, 1);

    WctpFrame wctp;
    wctp.port = u"99999"_s;
    EXPECT_EQ(encode_carrier(wctp).modem_settings, u"65535"_s);
    SnppFrame snpp;
    snpp.port = u" 8e1 "_s;
    EXPECT_EQ(encode_carrier(snpp).modem_settings, u"80"_s);
    snpp.port = u""_s;
    EXPECT_EQ(encode_carrier(snpp).modem_settings, u"1"_s);

    // The SMTP port is text with words in it and stays exactly as it stands.
    SmtpFrame smtp;
    smtp.port = u"587 STARTTLS"_s;
    EXPECT_EQ(encode_carrier(smtp).modem_settings, u"587 STARTTLS"_s);
}

TEST(CarrierFormat, NullColumnsReadAsEmptyAndStoreSafely)
{
    CarrierRow row;
    row.dial_type = u"snp"_s;
    const DecodedCarrier decoded = decode_carrier(row);
    ASSERT_TRUE(decoded.frame.has_value());
    const SnppFrame& snpp = std::get<SnppFrame>(*decoded.frame);
    EXPECT_EQ(snpp.host, u""_s);
    EXPECT_EQ(snpp.port, u""_s);
    EXPECT_EQ(snpp.max_chars, u""_s);
    EXPECT_EQ(snpp.msg_limit, u""_s);
    EXPECT_EQ(snpp.auth, AuthType::None);

    // Stored again as it was read, the empty numbers take their lower limits.
    const CarrierRow again = encode_carrier(*decoded.frame);
    EXPECT_EQ(again.maxchars, 1);
    EXPECT_EQ(again.message_limit, 0);
    EXPECT_EQ(again.priority, 1);
    EXPECT_EQ(again.modem_settings, u"1"_s);

    CarrierRow smtp;
    smtp.dial_type = u"eml"_s;
    EXPECT_FALSE(std::get<SmtpFrame>(*decode_carrier(smtp).frame).relay); // a null boolean is false
}

} // namespace
} // namespace cvd::addressbook
