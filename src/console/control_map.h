#pragma once

#include <QString>

class QWidget;

namespace cvd::console {

// For scripts that drive the console from outside (tests on a real X server, screen-reader checks): one
// line per visible named control of the window, "objectName x y width height caption", in screen pixels,
// for a list its first row as "objectName[0] ..." (a table's cells in view joined by " | "), and for a check box or
// other checkable button its state as "objectName[checked] x y width height 1" (or 0). `prefix` goes in front of every
// name.
QString control_map_text(const QWidget& window, const QString& prefix = {});
// The map of the main window, then of every other visible window of the program that has a name (a dialog
// over it), each line with the window's name in front: "frmModemScan/btnScan ...".
QString program_map_text(const QWidget& main_window);
// Writes the program's map, from that main window, to the file CVD_CONTROL_MAP names, now and every half second while
// the window lives; does nothing when the variable is unset.
void publish_control_map(QWidget& window);

} // namespace cvd::console
