#pragma once

#include <QRect>
#include <QString>

class QWidget;

namespace cvd {
class SettingsStore;
}

namespace cvd::console {

// Window geometry is kept in twips, 1440 to the inch, as the settings have always stored it.
int pixels_to_twips(int pixels, const QWidget& widget);
int twips_to_pixels(int twips, const QWidget& widget);

// A window's place in twips: the outer top-left corner and the size of its inside.
struct TwipsGeometry
{
    int top = 0;
    int left = 0;
    int height = 0;
    int width = 0;

    bool operator==(const TwipsGeometry&) const = default;
};

// Reads the display settings prefix + "top", "left", "height", "width" ("send_form_" gives
// send_form_top ...). Height or width 0 means the window was never placed: nothing is applied and the result
// is false, so the caller does its first-use placement.
bool restore_geometry(QWidget& window, SettingsStore& settings, const QString& prefix);
// Writes the four settings, but only while the window is in its normal state (neither minimised nor
// maximised), so that a window closed while maximised comes back at its normal size.
void save_geometry(const QWidget& window, SettingsStore& settings, const QString& prefix);

TwipsGeometry window_geometry_twips(const QWidget& window);
void apply_geometry_twips(QWidget& window, const TwipsGeometry& geometry);

// Centres the child over the parent, kept inside the parent's screen.
void center_on_form(QWidget& child, const QWidget& parent);
// Half the screen's width and half of 95 % of its height, less half the window's own size.
void center_on_screen(QWidget& window);
// The pure arithmetic of both, for tests: the window's new top-left corner.
QPoint centred_over(const QRect& outer, const QSize& window_size, const QRect& screen);
QPoint centred_on_screen(const QRect& screen, const QSize& window_size);

} // namespace cvd::console
