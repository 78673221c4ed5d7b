#include "devices/comm_settings.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace cvd::devices {

namespace {

std::optional<qint32> parse_baud(const QString& text, bool abbreviations)
{
    bool ok = false;
    const qint32 value = text.toInt(&ok);
    if (!ok || value <= 0) {
        return std::nullopt;
    }
    if (abbreviations) {
        // The short form took the first two digits of the old rates.
        static const std::pair<qint32, qint32> kAbbreviated[] = {
            {11, 110}, {15, 150}, {30, 300}, {60, 600}, {12, 1200}, {24, 2400}, {48, 4800}, {96, 9600}, {19, 19200}};
        for (const auto& [short_rate, rate] : kAbbreviated) {
            if (value == short_rate) {
                return rate;
            }
        }
    }
    return value;
}

std::optional<CommParity> parse_parity(const QString& text)
{
    if (text.size() != 1) {
        return std::nullopt;
    }
    switch (text.at(0).toLower().unicode()) {
    case u'n':
        return CommParity::None;
    case u'e':
        return CommParity::Even;
    case u'o':
        return CommParity::Odd;
    case u'm':
        return CommParity::Mark;
    case u's':
        return CommParity::Space;
    default:
        return std::nullopt;
    }
}

std::optional<int> parse_data_bits(const QString& text)
{
    bool ok = false;
    const int value = text.toInt(&ok);
    if (!ok || value < 5 || value > 8) {
        return std::nullopt;
    }
    return value;
}

std::optional<CommStopBits> parse_stop_bits(const QString& text)
{
    if (text == u"1"_s) {
        return CommStopBits::One;
    }
    if (text == u"1.5"_s) {
        return CommStopBits::OneAndHalf;
    }
    if (text == u"2"_s) {
        return CommStopBits::Two;
    }
    return std::nullopt;
}

std::optional<bool> parse_switch(const QString& text)
{
    if (text.compare(u"on"_s, Qt::CaseInsensitive) == 0) {
        return true;
    }
    if (text.compare(u"off"_s, Qt::CaseInsensitive) == 0) {
        return false;
    }
    return std::nullopt;
}

// Sets `field` from `value` through `parse`; false when the value does not parse.
template <typename Field, typename Parse> bool take(std::optional<Field>& field, const QString& value, Parse parse)
{
    const auto parsed = parse(value);
    if (!parsed) {
        return false;
    }
    field = *parsed;
    return true;
}

bool take_keyword(CommSettings& settings, const QString& key, const QString& value)
{
    if (key == u"baud"_s) {
        return take(settings.baud, value, [](const QString& text) { return parse_baud(text, false); });
    }
    if (key == u"parity"_s) {
        return take(settings.parity, value, parse_parity);
    }
    if (key == u"data"_s) {
        return take(settings.data_bits, value, parse_data_bits);
    }
    if (key == u"stop"_s) {
        return take(settings.stop_bits, value, parse_stop_bits);
    }
    if (key == u"dtr"_s) {
        // "hs" (handshake) leaves the line to the driver: nothing to set.
        return value.compare(u"hs"_s, Qt::CaseInsensitive) == 0 || take(settings.dtr, value, parse_switch);
    }
    if (key == u"rts"_s) {
        if (value.compare(u"hs"_s, Qt::CaseInsensitive) == 0) {
            settings.hardware_flow = true;
            return true;
        }
        return value.compare(u"tg"_s, Qt::CaseInsensitive) == 0 || take(settings.rts, value, parse_switch);
    }
    if (key == u"xon"_s) {
        return take(settings.software_flow, value, parse_switch);
    }
    if (key == u"octs"_s) {
        return take(settings.hardware_flow, value, parse_switch);
    }
    // Timeout and handshake inputs the port layer has no use for are accepted and left alone.
    if (key == u"to"_s || key == u"odsr"_s || key == u"idsr"_s) {
        return parse_switch(value).has_value();
    }
    return false;
}

std::optional<CommSettings> parse_keywords(const QString& text)
{
    CommSettings settings;
    const QStringList words = text.split(u' ', Qt::SkipEmptyParts);
    for (const QString& word : words) {
        const qsizetype equals = word.indexOf(u'=');
        if (equals <= 0) {
            return std::nullopt;
        }
        if (!take_keyword(settings, word.left(equals).toLower(), word.mid(equals + 1))) {
            return std::nullopt;
        }
    }
    return settings;
}

bool take_trailing_flow(CommSettings& settings, const QString& flag)
{
    const QString lower = flag.toLower();
    if (lower == u"x"_s) {
        settings.software_flow = true;
        return true;
    }
    if (lower == u"p"_s) {
        settings.hardware_flow = true;
        return true;
    }
    return false;
}

std::optional<CommSettings> parse_positions(QString text)
{
    // "COM1: 1200,n,8,1": the port's name in front is the device's, not a setting.
    if (const qsizetype colon = text.indexOf(u':'); colon >= 0) {
        text = text.mid(colon + 1);
    }
    const QStringList parts = text.split(u',');
    if (parts.size() > 5) {
        return std::nullopt;
    }
    CommSettings settings;
    const auto value = [&parts](int index) { return index < parts.size() ? parts.at(index).trimmed() : QString(); };
    const bool ok = take(settings.baud, value(0), [](const QString& baud) { return parse_baud(baud, true); }) &&
                    (value(1).isEmpty() || take(settings.parity, value(1), parse_parity)) &&
                    (value(2).isEmpty() || take(settings.data_bits, value(2), parse_data_bits)) &&
                    (value(3).isEmpty() || take(settings.stop_bits, value(3), parse_stop_bits)) &&
                    (value(4).isEmpty() || take_trailing_flow(settings, value(4)));
    if (!ok) {
        return std::nullopt;
    }
    return settings;
}

} // namespace

std::optional<CommSettings> parse_comm_settings(const QString& text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty()) {
        return std::nullopt;
    }
    if (trimmed.contains(u'=')) {
        return parse_keywords(trimmed);
    }
    return parse_positions(trimmed);
}

} // namespace cvd::devices
