#include "console/printer_choice.h"

#include <QPrintDialog>
#include <QPrinter>

namespace cvd::console {

namespace {

PrinterChooser& chooser()
{
    static PrinterChooser instance;
    return instance;
}

} // namespace

bool choose_printer(QPrinter& printer, QWidget* parent)
{
    if (chooser()) {
        return chooser()(printer);
    }
    QPrintDialog dialog(&printer, parent);
    return dialog.exec() == QDialog::Accepted;
}

void set_printer_chooser(PrinterChooser replacement)
{
    chooser() = std::move(replacement);
}

} // namespace cvd::console
