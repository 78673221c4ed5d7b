#include "console/geometry.h"

#include "core/settings.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

constexpr int kTwipsPerInch = 1440;

int logical_dpi(const QWidget& widget)
{
    const int dpi = widget.logicalDpiX();
    return dpi > 0 ? dpi : 96;
}

QString key_name(const QString& prefix, const char* field)
{
    return prefix + QLatin1StringView(field);
}

QRect screen_of(const QWidget& widget)
{
    const QScreen* screen = widget.screen() != nullptr ? widget.screen() : QGuiApplication::primaryScreen();
    return screen != nullptr ? screen->availableGeometry() : QRect(0, 0, 1024, 768);
}

} // namespace

int pixels_to_twips(int pixels, const QWidget& widget)
{
    return pixels * kTwipsPerInch / logical_dpi(widget);
}

int twips_to_pixels(int twips, const QWidget& widget)
{
    return (twips * logical_dpi(widget) + kTwipsPerInch / 2) / kTwipsPerInch;
}

TwipsGeometry window_geometry_twips(const QWidget& window)
{
    const QRect frame = window.frameGeometry();
    return {pixels_to_twips(frame.top(), window), pixels_to_twips(frame.left(), window),
            pixels_to_twips(window.height(), window), pixels_to_twips(window.width(), window)};
}

void apply_geometry_twips(QWidget& window, const TwipsGeometry& geometry)
{
    window.resize(twips_to_pixels(geometry.width, window), twips_to_pixels(geometry.height, window));
    window.move(twips_to_pixels(geometry.left, window), twips_to_pixels(geometry.top, window));
}

bool restore_geometry(QWidget& window, SettingsStore& settings, const QString& prefix)
{
    const QString top = key_name(prefix, "top");
    const QString left = key_name(prefix, "left");
    const QString height = key_name(prefix, "height");
    const QString width = key_name(prefix, "width");
    const TwipsGeometry geometry{
        settings.get_setting_long({u"display", top}), settings.get_setting_long({u"display", left}),
        settings.get_setting_long({u"display", height}), settings.get_setting_long({u"display", width})};
    if (geometry.height == 0 || geometry.width == 0) {
        return false;
    }
    apply_geometry_twips(window, geometry);
    return true;
}

void save_geometry(const QWidget& window, SettingsStore& settings, const QString& prefix)
{
    if ((window.windowState() & (Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen)) != 0) {
        return;
    }
    const TwipsGeometry geometry = window_geometry_twips(window);
    const QString top = key_name(prefix, "top");
    const QString left = key_name(prefix, "left");
    const QString height = key_name(prefix, "height");
    const QString width = key_name(prefix, "width");
    settings.put_setting({u"display", top}, geometry.top);
    settings.put_setting({u"display", left}, geometry.left);
    settings.put_setting({u"display", height}, geometry.height);
    settings.put_setting({u"display", width}, geometry.width);
}

QPoint centred_over(const QRect& outer, const QSize& window_size, const QRect& screen)
{
    int x = outer.left() + (outer.width() - window_size.width()) / 2;
    int y = outer.top() + (outer.height() - window_size.height()) / 2;
    x = std::max(screen.left(), std::min(x, screen.right() + 1 - window_size.width()));
    y = std::max(screen.top(), std::min(y, screen.bottom() + 1 - window_size.height()));
    return {x, y};
}

QPoint centred_on_screen(const QRect& screen, const QSize& window_size)
{
    return {screen.left() + screen.width() / 2 - window_size.width() / 2,
            screen.top() + screen.height() * 95 / 200 - window_size.height() / 2};
}

void center_on_form(QWidget& child, const QWidget& parent)
{
    child.move(centred_over(parent.frameGeometry(), child.frameGeometry().size(), screen_of(parent)));
}

void center_on_screen(QWidget& window)
{
    window.move(centred_on_screen(screen_of(window), window.frameGeometry().size()));
}

} // namespace cvd::console
