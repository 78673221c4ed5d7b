#pragma once

#include <QByteArray>
#include <QStringView>
#include <optional>

namespace cvd::reports {

// The text in the Windows Latin code page that the standard PDF fonts are addressed in (WinAnsiEncoding);
// nothing when a character has no place there. Control characters become spaces, as a report cell shows them.
std::optional<QByteArray> to_win_ansi(QStringView text);

// The advance of WinAnsi text set in Helvetica (or Helvetica-Bold), in thousandths of the font size.
int helvetica_width(const QByteArray& win_ansi, bool bold);

// How far Helvetica reaches above and below its baseline, in thousandths of the font size.
inline constexpr int kHelveticaAscent = 718;
inline constexpr int kHelveticaDescent = 207;

} // namespace cvd::reports
