#pragma once

#include <functional>

class QPrinter;
class QWidget;

namespace cvd::console {

// The printer dialog, with a seam for tests: a chooser set here answers instead of the dialog, so that a
// test can print to a file or cancel without a dialog ever opening. True when the operator chose to print.
bool choose_printer(QPrinter& printer, QWidget* parent);

using PrinterChooser = std::function<bool(QPrinter& printer)>;
// Replaces the dialog until it is set back to an empty chooser.
void set_printer_chooser(PrinterChooser chooser);

} // namespace cvd::console
