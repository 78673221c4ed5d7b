#pragma once

#include <QString>

namespace cvd {

// A key made out of a name for comparison and storage: letters lower-cased, digits, "-" and "_" kept,
// blank, "(", "," and "." turned into "_", everything else dropped; runs of "--" and "__" squeezed.
QString normalize_id(const QString& text);

// Takes blanks off both ends, and only blanks: tabs and line ends stay, as the intake paths have always had it.
QString trim_blanks(const QString& text);

// The first `count` characters, counting a character outside the basic plane as one and never cutting it in two.
QString cut_to(const QString& text, qsizetype count);

// Cuts on the right, or pads with leading blanks, to exactly `width` characters.
QString pad_or_cut(const QString& text, int width);

// The part before (left_of) or after (right_of) the first separator, or the last one when from_end is set;
// `fallback` when the separator does not occur.
QString left_of(const QString& text, const QString& separator, bool from_end, const QString& fallback);
QString right_of(const QString& text, const QString& separator, bool from_end, const QString& fallback);

// The numeric prefix of a text, read the lenient way settings have always been read: leading blanks and
// blanks between digits are skipped, a sign, digits, a fraction and an exponent are taken, "&H" and "&O"
// introduce hexadecimal and octal; reading stops at the first other character. No number gives 0.
double numeric_prefix(const QString& text);

// Rounds half to even and clamps into the 32-bit range, as whole-number settings are stored.
qint32 to_int32(double value);

// The escape rule of setting texts: each backslash with at least three characters behind it is replaced,
// together with those three, by the character whose code is their numeric prefix (three non-digits give
// code 0). The search goes on behind the replacement. A backslash among the last three characters stays.
QString unescape_setting_text(const QString& stored);

} // namespace cvd
