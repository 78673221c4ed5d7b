#pragma once

#include <QString>

class QWidget;

namespace cvd::console {

// For scripts that drive the console from outside (tests on a real X server, screen-reader checks): one
// line per visible named control of the window, "objectName x y width height caption", in screen pixels,
// and for a list its first row as "objectName[0] ...". Written when CVD_CONTROL_MAP names a file.
QString control_map_text(const QWidget& window);
// Writes the map of the window to the file CVD_CONTROL_MAP names, now and every half second while the window
// lives; does nothing when the variable is unset.
void publish_control_map(QWidget& window);

} // namespace cvd::console
