#include "core/text.h"

#include <cmath>
#include <limits>

namespace cvd {

QString normalize_id(const QString& text)
{
    QString key;
    key.reserve(text.size());
    for (const QChar ch : text) {
        const char16_t code = ch.unicode();
        if ((code >= u'a' && code <= u'z') || (code >= u'0' && code <= u'9') || code == u'-' || code == u'_') {
            key.append(ch);
        } else if (code >= u'A' && code <= u'Z') {
            key.append(QChar(code + (u'a' - u'A')));
        } else if (code == u' ' || code == u'(' || code == u',' || code == u'.') {
            key.append(u'_');
        }
    }
    while (key.contains(u"--")) {
        key.replace(QStringLiteral("--"), QStringLiteral("-"));
    }
    while (key.contains(u"__")) {
        key.replace(QStringLiteral("__"), QStringLiteral("_"));
    }
    return key;
}

QString trim_blanks(const QString& text)
{
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && text.at(first) == u' ') {
        ++first;
    }
    while (last > first && text.at(last - 1) == u' ') {
        --last;
    }
    return text.mid(first, last - first);
}

QString cut_to(const QString& text, qsizetype count)
{
    qsizetype units = 0;
    for (qsizetype taken = 0; taken < count && units < text.size(); ++taken) {
        const bool pair =
            text.at(units).isHighSurrogate() && units + 1 < text.size() && text.at(units + 1).isLowSurrogate();
        units += pair ? 2 : 1;
    }
    return text.left(units);
}

QString pad_or_cut(const QString& text, int width)
{
    if (width <= 0) {
        return {};
    }
    if (text.size() >= width) {
        return text.left(width);
    }
    return QString(width - text.size(), u' ') + text;
}

namespace {

qsizetype find_separator(const QString& text, const QString& separator, bool from_end)
{
    if (separator.isEmpty()) {
        return -1;
    }
    return from_end ? text.lastIndexOf(separator) : text.indexOf(separator);
}

} // namespace

QString left_of(const QString& text, const QString& separator, bool from_end, const QString& fallback)
{
    const qsizetype at = find_separator(text, separator, from_end);
    return at < 0 ? fallback : text.left(at);
}

QString right_of(const QString& text, const QString& separator, bool from_end, const QString& fallback)
{
    const qsizetype at = find_separator(text, separator, from_end);
    return at < 0 ? fallback : text.mid(at + separator.size());
}

namespace {

bool is_skipped_blank(QChar ch)
{
    return ch == u' ' || ch == u'\t' || ch == u'\n' || ch == u'\r';
}

// Reads digits of the given base from `text` at `pos`, skipping blanks; returns the value.
double read_radix_digits(const QString& text, qsizetype& pos, int base)
{
    double value = 0;
    for (; pos < text.size(); ++pos) {
        const QChar ch = text.at(pos);
        if (is_skipped_blank(ch)) {
            continue;
        }
        const int digit = QStringView(&ch, 1).toInt(nullptr, 16);
        const bool is_digit = ch.isDigit() || (base == 16 && QStringLiteral("abcdefABCDEF").contains(ch));
        if (!is_digit || digit >= base) {
            break;
        }
        value = value * base + digit;
    }
    return value;
}

} // namespace

double numeric_prefix(const QString& text)
{
    qsizetype pos = 0;
    while (pos < text.size() && is_skipped_blank(text.at(pos))) {
        ++pos;
    }
    if (pos + 1 < text.size() && text.at(pos) == u'&') {
        const QChar radix = text.at(pos + 1).toUpper();
        if (radix == u'H' || radix == u'O') {
            pos += 2;
            return read_radix_digits(text, pos, radix == u'H' ? 16 : 8);
        }
    }
    // Collect sign, digits, point and exponent, dropping blanks, then let the locale-free parser read it.
    QString number;
    bool seen_point = false;
    bool seen_exponent = false;
    for (; pos < text.size(); ++pos) {
        const QChar ch = text.at(pos);
        if (is_skipped_blank(ch)) {
            continue;
        }
        const bool at_start = number.isEmpty() || number.endsWith(u'e');
        const bool sign = (ch == u'+' || ch == u'-') && at_start;
        if (sign || (ch.isDigit() && ch.unicode() < 128)) {
            number.append(ch);
        } else if (ch == u'.' && !seen_point && !seen_exponent) {
            seen_point = true;
            number.append(ch);
        } else if (QStringLiteral("eEdD").contains(ch) && !seen_exponent && !number.isEmpty()) {
            seen_exponent = true;
            number.append(u'e');
        } else {
            break;
        }
    }
    // Trim a dangling exponent or sign, which the parser would refuse.
    while (!number.isEmpty() && !number.back().isDigit() && number.back() != u'.') {
        number.chop(1);
    }
    bool ok = false;
    const double value = number.toDouble(&ok);
    return ok && std::isfinite(value) ? value : 0.0;
}

qint32 to_int32(double value)
{
    if (!std::isfinite(value)) {
        return 0;
    }
    const double rounded = std::nearbyint(value); // the default rounding mode is half to even
    if (rounded >= static_cast<double>(std::numeric_limits<qint32>::max())) {
        return std::numeric_limits<qint32>::max();
    }
    if (rounded <= static_cast<double>(std::numeric_limits<qint32>::min())) {
        return std::numeric_limits<qint32>::min();
    }
    return static_cast<qint32>(rounded);
}

QString unescape_setting_text(const QString& stored)
{
    QString text = stored;
    qsizetype from = 0;
    for (;;) {
        const qsizetype at = text.indexOf(u'\\', from);
        if (at < 0 || at + 3 >= text.size()) {
            break;
        }
        const double code = numeric_prefix(text.mid(at + 1, 3));
        const bool valid = code >= 0 && code <= 0x10FFFF;
        const char32_t code_point = valid ? static_cast<char32_t>(code) : 0;
        text.replace(at, 4, QString::fromUcs4(&code_point, 1));
        from = at + 1;
    }
    return text;
}

} // namespace cvd
