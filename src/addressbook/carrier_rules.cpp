#include "addressbook/carrier_rules.h"

#include "core/text.h"

#include <QRegularExpression>
#include <algorithm>
#include <cmath>

namespace cvd::addressbook {

namespace {

// The value a number box's text stands for; an unreadable strict text stands for nothing.
std::optional<double> read_number(BoxRule rule, const QString& trimmed)
{
    if (rule == BoxRule::Priority) {
        return leading_number(trimmed);
    }
    const std::optional<double> value = strict_number(trimmed);
    if (!value) {
        return std::nullopt;
    }
    return std::nearbyint(*value); // the default rounding mode rounds half to even
}

QString clamp_number_text(BoxRule rule, const QString& trimmed)
{
    const NumberLimits limits = *number_limits(rule);
    const std::optional<double> value = read_number(rule, trimmed);
    if (!value || *value < limits.low) {
        return QString::number(limits.low);
    }
    if (*value > limits.high) {
        return QString::number(limits.high);
    }
    return trimmed;
}

} // namespace

std::optional<NumberLimits> number_limits(BoxRule rule)
{
    switch (rule) {
    case BoxRule::Priority:
        return NumberLimits{1, 30000};
    case BoxRule::MaxChars:
        return NumberLimits{1, 6000};
    case BoxRule::MsgLimit:
        return NumberLimits{0, 255};
    case BoxRule::Baud:
        return NumberLimits{1, 230400};
    case BoxRule::NumericPort:
        return NumberLimits{1, 65535};
    case BoxRule::Name:
    case BoxRule::SmtpPort:
    case BoxRule::InitString:
    case BoxRule::Text:
    case BoxRule::WaitString:
        break;
    }
    return std::nullopt;
}

QString on_leaving(BoxRule rule, const QString& text)
{
    QString trimmed = trim_blanks(text);
    switch (rule) {
    case BoxRule::Name:
        return cut_to(trimmed, 40);
    case BoxRule::InitString:
    case BoxRule::Text:
        return cut_to(trimmed, 80);
    case BoxRule::WaitString:
        return cut_to(trimmed, 35);
    case BoxRule::SmtpPort:
        return trimmed;
    case BoxRule::Priority:
    case BoxRule::MaxChars:
    case BoxRule::MsgLimit:
    case BoxRule::Baud:
    case BoxRule::NumericPort:
        return clamp_number_text(rule, trimmed);
    }
    return trimmed;
}

qint32 box_number(BoxRule rule, const QString& text)
{
    const std::optional<NumberLimits> limits = number_limits(rule);
    if (!limits) {
        return 0;
    }
    const std::optional<double> value = read_number(rule, on_leaving(rule, text));
    const double rounded = std::nearbyint(value.value_or(limits->low));
    return static_cast<qint32>(
        std::clamp(rounded, static_cast<double>(limits->low), static_cast<double>(limits->high)));
}

double leading_number(const QString& text)
{
    return numeric_prefix(text);
}

std::optional<double> strict_number(const QString& text)
{
    static const QRegularExpression decimal(QStringLiteral("^([+-]?)([0-9]+\\.?[0-9]*|\\.[0-9]+)([eE][+-]?[0-9]+)?$"));
    QString trimmed = trim_blanks(text);
    const QRegularExpressionMatch match = decimal.match(trimmed);
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    // The parser gives an infinity of the right sign for too large a number and 0 for too small a one,
    // both reported as failures; either is the right value to clamp.
    return trimmed.toDouble();
}

AuthType smtp_auth_on_leaving_credentials(AuthType current, const QString& box_text)
{
    return current == AuthType::None && !box_text.isEmpty() ? AuthType::Standard : current;
}

bool is_carrier_name_character(QChar ch)
{
    const char16_t code = ch.unicode();
    return (code >= u'0' && code <= u'9') || (code >= u'a' && code <= u'z') || (code >= u'A' && code <= u'Z') ||
           code == u'.' || code == u'-' || code == u'_';
}

std::optional<Notice> refuse_carrier_name(const QString& name, bool is_edit,
                                          const std::function<bool(const QString&)>& carrier_exists)
{
    if (name.isEmpty()) {
        return Notice{QStringLiteral("A carrier name must be entered"), QStringLiteral("Invalid Entry")};
    }
    if (!std::all_of(name.cbegin(), name.cend(), is_carrier_name_character)) {
        return Notice{QStringLiteral("Illegal Character in the Carrier Name"), QStringLiteral("BAD CARRIER")};
    }
    // In edit mode the row found is the one being edited; the name boxes are locked there.
    if (!is_edit && carrier_exists(name)) {
        return Notice{QStringLiteral("A carrier with that name already exists"), QStringLiteral("Duplicate Carrier")};
    }
    return std::nullopt;
}

QString carrier_dialog_caption(bool is_edit, bool advanced)
{
    const QString caption = is_edit ? QStringLiteral("Edit Carrier") : QStringLiteral("Add Carrier");
    return advanced ? caption + QStringLiteral(" - Advanced") : caption;
}

CarrierListCaptions carrier_list_captions(bool edit_mode)
{
    if (edit_mode) {
        return {QStringLiteral("Edit Carrier"), QStringLiteral("&Edit")};
    }
    return {QStringLiteral("Delete Carrier"), QStringLiteral("&Delete")};
}

Notice apply_done_notice(bool is_edit)
{
    if (is_edit) {
        return {QStringLiteral("Carrier record updated"), QStringLiteral("Carrier Updated")};
    }
    return {QStringLiteral("Carrier record added"), QStringLiteral("Carrier Added")};
}

Notice edited_carrier_gone_notice()
{
    return {QStringLiteral("The carrier no longer exists; nothing was stored"), QStringLiteral("Unable to Update")};
}

std::optional<Notice> refuse_carrier_delete(bool used_by_recipients, bool has_unsent_messages)
{
    // The two titles are spelt differently, and the table's name stands in the second text; both are kept
    // as operators and their scripts know them.
    if (used_by_recipients) {
        return Notice{QStringLiteral("A carrier can not be deleted if there are recipients using it"),
                      QStringLiteral("Unalbe to Delete")};
    }
    if (has_unsent_messages) {
        return Notice{QStringLiteral("A carrier can not be deleted if there are cv_messages pending for it"),
                      QStringLiteral("Unable to Delete")};
    }
    return std::nullopt;
}

} // namespace cvd::addressbook
