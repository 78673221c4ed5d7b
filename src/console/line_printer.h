#pragma once

#include <QStringList>

class QFont;
class QPrinter;

namespace cvd::console {

// Prints lines of text in a fixed-pitch font, page after page, within margins given in twips. A line longer
// than the page is wide goes on in the next printed line when `wrap` is set and is cut at the edge otherwise.
void print_lines(QPrinter& printer, const QStringList& lines, const QFont& font, int margin_twips, bool wrap);

} // namespace cvd::console
