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

// A row as encode_carrier writes it, given by its columns in table order without cv_retries, which is always 0:
// name|phone|modem settings|maxchars|init string|message limit|dial type|auth type|user|password|relay|server|priority
CarrierRow row_of(const QString& columns)
{
    const QStringList c = columns.split(u'|');
    EXPECT_EQ(c.size(), 13) << columns.toStdString();
    return {c.value(0),         c.value(1),         c.value(2),
            c.value(3).toInt(), c.value(4),         0,
            c.value(5).toInt(), c.value(6),         c.value(7).toInt(),
            c.value(8),         c.value(9),         c.value(10) == u"-1"_s,
            c.value(11),        c.value(12).toInt()};
}

// Every field holds a value no other column of the row holds, so a field packed into the wrong column,
// or read back from the wrong one, shows up.
std::vector<std::pair<CarrierFrame, CarrierRow>> encoding_cases()
{
    return {
        {FaxFrame{.name = u"Fax-1"_s,
                  .fax_class = u"2.0"_s, // stored by its place in the list
                  .init_string = u"AT&FE0V1&C1&D2S0=0"_s,
                  .max_chars = u"4000"_s,
                  .priority = u"7"_s},
         row_of(u"Fax-1||3|4000|AT&FE0V1&C1&D2S0=0|0|fax|0|||0||7"_s)},
        {FaxSrvFrame{.name = u"FaxSrv_2"_s, .max_chars = u"3000"_s, .priority = u"8"_s},
         row_of(u"FaxSrv_2|||3000||0|fxs|0|||0||8"_s)},
        {GsmatFrame{.name = u"Gsm.3"_s,
                    .line = {u"9600"_s, Parity::Odd, u"7"_s, u"2"_s},
                    .init_string = u"AT&FQ0V1X4&D2"_s,
                    .msg_limit = u"3"_s,
                    .max_chars = u"150"_s,
                    .priority = u"9"_s},
         row_of(u"Gsm.3||9600,o,7,2|150|AT&FQ0V1X4&D2|3|gsm|0|||0||9"_s)},
        {SmtpFrame{.name = u"Mail"_s,
                   .domain = u"mail.example.org"_s,
                   .port = u"465 SSL/TLS"_s,
                   .relay = true,
                   .relay_server = u"relay.example.org"_s,
                   .auth = AuthType::ForceLogin,
                   .username = u"ops"_s,
                   .password = u"s3cret"_s,
                   .max_chars = u"900"_s,
                   .priority = u"10"_s},
         row_of(u"Mail|mail.example.org|465 SSL/TLS|900||0|eml|5|ops|s3cret|-1|relay.example.org|10"_s)},
        {SnppFrame{.name = u"Snpp"_s,
                   .host = u"snpp.example.net"_s,
                   .port = u"4444"_s,
                   .auth = AuthType::Standard,
                   .password = u"pin"_s,
                   .msg_limit = u"4"_s,
                   .max_chars = u"200"_s,
                   .priority = u"11"_s},
         row_of(u"Snpp|snpp.example.net|4444|200||4|snp|1||pin|0||11"_s)},
        {TapFrame{.name = u"Tap"_s,
                  .phone_number = u"18005550100"_s,
                  .line = {u"2400"_s, Parity::Odd, u"8"_s, u"1.5"_s},
                  .init_string = u"AT&F0Q0V1X4&D2&B1&K0&M0&N2"_s,
                  .auth = AuthType::Standard,
                  .password = u"tappw"_s,
                  .msg_limit = u"5"_s,
                  .max_chars = u"240"_s,
                  .priority = u"12"_s},
         row_of(u"Tap|18005550100|2400,o,8,1.5|240|AT&F0Q0V1X4&D2&B1&K0&M0&N2|5|tap|1||tappw|0||12"_s)},
        {ToneFrame{.name = u"Tone"_s,
                   .init_string = u"AT&FQ0V1X4&D2S37=5\\N0%C0"_s,
                   .wait_string = u",,,#"_s,
                   .max_chars = u"20"_s,
                   .priority = u"13"_s},
         row_of(u"Tone|||20|AT&FQ0V1X4&D2S37=5\\N0%C0|0|tone-,,,#|0|||0||13"_s)},
        {UcpFrame{.name = u"Ucp"_s,
                  .phone_number = u"0800123"_s,
                  .line = {u"4800"_s, Parity::None, u"8"_s, u"2"_s},
                  .init_string = u"(auto)"_s,
                  .auth = AuthType::None,
                  .password = u"ucppw"_s,
                  .msg_limit = u"6"_s,
                  .max_chars = u"161"_s,
                  .priority = u"14"_s},
         row_of(u"Ucp|0800123|4800,n,8,2|161|(auto)|6|ucp|0||ucppw|0||14"_s)},
        {WctpFrame{.name = u"Wctp"_s,
                   .host = u"wctp.example.com"_s,
                   .send_method = WctpSendMethod::EnterpriseHost,
                   .port = u"443"_s,
                   .auth = AuthType::Recipient,
                   .username = u"wuser"_s,
                   .password = u"wpass"_s,
                   .max_chars = u"500"_s,
                   .priority = u"15"_s},
         row_of(u"Wctp|wctp.example.com|443|500||0|wct-1|12|wuser|wpass|0||15"_s)},
    };
}

TEST(CarrierFormat, EachProtocolPacksEveryColumnAndReadsItBack)
{
    for (const auto& [frame, row] : encoding_cases()) {
        SCOPED_TRACE(protocol_list_text(protocol_of(frame)).toStdString());
        EXPECT_EQ(encode_carrier(frame), row);

        const DecodedCarrier decoded = decode_carrier(row);
        EXPECT_EQ(decoded.name, frame_name(frame));
        EXPECT_EQ(decoded.priority, frame_priority(frame));
        ASSERT_TRUE(decoded.frame.has_value());
        EXPECT_EQ(*decoded.frame, frame);
    }
}

TEST(CarrierFormat, NewCarriersStoreTheDefaultsAndReadThemBack)
{
    const std::pair<Protocol, QString> cases[] = {
        {Protocol::Fax, u"New||1|5000|(auto)|0|fax|0|||0||100"_s},
        {Protocol::FaxSrv, u"New|||5000||0|fxs|0|||0||100"_s},
        // GSMAT and TONE start with no init string selected, unlike FAX, TAP and UCP.
        {Protocol::Gsmat, u"New||115200,n,8,1|160||0|gsm|0|||0||100"_s},
        {Protocol::Smtp, u"New||25|160||0|eml|0|||0||100"_s}, // SMTP starts on direct delivery
        {Protocol::Snpp, u"New||444|160||0|snp|0|||0||100"_s},
        {Protocol::Tap, u"New||1200,e,7,1|160|(auto)|0|tap|0|||0||100"_s},
        {Protocol::Tone, u"New|||10||0|tone-,,@|0|||0||100"_s},
        {Protocol::Ucp, u"New||1200,e,7,1|160|(auto)|0|ucp|0|||0||100"_s},
        {Protocol::Wctp, u"New||80|160||0|wct-0|0|||0||100"_s},
    };
    for (const auto& [protocol, columns] : cases) {
        SCOPED_TRACE(protocol_list_text(protocol).toStdString());
        CarrierFrame frame = default_frame(protocol);
        ASSERT_EQ(protocol_of(frame), protocol);
        set_name_and_priority(frame, u"New"_s, frame_priority(frame));

        const CarrierRow row = encode_carrier(frame);
        EXPECT_EQ(row, row_of(columns));
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
}

TEST(CarrierFormat, LineFormReadsOnlyWhatTheListsHold)
{
    const LineSettings tap;
    const LineSettings gsm = std::get<GsmatFrame>(default_frame(Protocol::Gsmat)).line;
    const struct
    {
        const char* stored;
        LineSettings shown;
        LineSettings expected;
    } cases[] = {
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
    for (const auto& c : cases) {
        EXPECT_EQ(decode_line_settings(QString::fromUtf8(c.stored), c.shown), c.expected) << c.stored;
    }
    const LineSettings wide{u"115200"_s, Parity::Odd, u"8"_s, u"1.5"_s};
    EXPECT_EQ(encode_line_settings(wide), u"115200,o,8,1.5"_s);
    EXPECT_EQ(decode_line_settings(encode_line_settings(wide), tap), wide);
}

TEST(CarrierFormat, DialTypePicksTheFrameByItsFirstThreeLetters)
{
    const std::pair<std::optional<QString>, std::optional<Protocol>> cases[] = {
        {u"fax"_s, Protocol::Fax},    {u"fxs"_s, Protocol::FaxSrv}, {u"gsm"_s, Protocol::Gsmat},
        {u"eml"_s, Protocol::Smtp},   {u"snp"_s, Protocol::Snpp},   {u"tap"_s, Protocol::Tap},
        {u"tone-"_s, Protocol::Tone}, {u"ucp"_s, Protocol::Ucp},    {u"wct-0"_s, Protocol::Wctp},
        {u"tapx"_s, Protocol::Tap},   {u"TAP"_s, std::nullopt},     {u"ta"_s, std::nullopt},
        {u""_s, std::nullopt},        {std::nullopt, std::nullopt}, {u"pager"_s, std::nullopt},
    };
    for (const auto& [dial_type, protocol] : cases) {
        SCOPED_TRACE(dial_type.value_or(u"(null)"_s).toStdString());
        CarrierRow row;
        row.name = u"Known"_s;
        row.priority = 42;
        row.dial_type = dial_type;
        const DecodedCarrier decoded = decode_carrier(row);
        // Name and priority reach all frames even when no frame is filled.
        EXPECT_EQ(decoded.name, u"Known"_s);
        EXPECT_EQ(decoded.priority, u"42"_s);
        ASSERT_EQ(decoded.frame.has_value(), protocol.has_value());
        if (decoded.frame) {
            EXPECT_EQ(protocol_of(*decoded.frame), *protocol);
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
    const auto entries = [](Protocol protocol) {
        QStringList list;
        for (const AuthType auth : auth_list(protocol)) {
            list.append(u"%1=%2"_s.arg(auth_entry_text(auth)).arg(static_cast<qint32>(auth)));
        }
        return list;
    };
    EXPECT_EQ(entries(Protocol::Smtp),
              (QStringList{u"None=0"_s, u"Standard=1"_s, u"Force CRAM-MD5=3"_s, u"Force LOGIN=5"_s, u"Force PLAIN=4"_s,
                           u"Force NTLM=6"_s, u"Sender Override=2"_s}));
    EXPECT_EQ(entries(Protocol::Wctp),
              (QStringList{u"None=0"_s, u"Standard=1"_s, u"Sender Override=2"_s, u"Recipient=12"_s, u"MiscInfo=11"_s}));
    EXPECT_TRUE(entries(Protocol::Gsmat).isEmpty());
}

TEST(CarrierFormat, BoxesNeverLeftStillStoreNumbersWithinTheirLimits)
{
    TapFrame tap;
    tap.name = u"Raw"_s;
    tap.max_chars = u"abc"_s;
    tap.msg_limit = u"999"_s;
    tap.priority = u"12abc"_s;
    tap.line.baud = u" 9.6e3 "_s;
    EXPECT_EQ(encode_carrier(tap), row_of(u"Raw||9600,e,7,1|1|(auto)|255|tap|0|||0||12"_s));

    tap.line.baud = u"fast"_s;
    tap.max_chars = u""_s;
    tap.msg_limit = u"-4"_s;
    tap.priority = u""_s;
    EXPECT_EQ(encode_carrier(tap), row_of(u"Raw||1,e,7,1|1|(auto)|0|tap|0|||0||1"_s));

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
    SnppFrame empty;
    empty.port = empty.msg_limit = empty.max_chars = empty.priority = QString();
    EXPECT_EQ(*decoded.frame, CarrierFrame(empty));
    // Stored again as it was read, the empty numbers take their lower limits.
    EXPECT_EQ(encode_carrier(*decoded.frame), row_of(u"||1|1||0|snp|0|||0||1"_s));

    row.dial_type = u"eml"_s;
    EXPECT_FALSE(std::get<SmtpFrame>(*decode_carrier(row).frame).relay); // a null boolean is false
}

} // namespace
} // namespace cvd::addressbook
