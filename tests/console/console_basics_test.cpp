// The pieces every window is built from: accessible names, geometry in twips, the busy lock, the owner.
#include "console/busy_lock.h"
#include "console/controls.h"
#include "console/geometry.h"
#include "console/window_owner.h"
#include "console_test.h"
#include "core/settings.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

using ConsoleBasics = ConsoleTest;

TEST_F(ConsoleBasics, ControlsPublishTheirCaptionAndObjectName)
{
    QWidget window;
    window.setWindowTitle(u"Ad-Hoc Entry Screen"_s);
    auto* label = console::make_control<QLabel>(&window, "lblPin", u"PIN/&ID"_s);
    auto* box = console::make_control<QLineEdit>(&window, "fpin");
    label->setBuddy(box);
    auto* apply = console::make_control<QPushButton>(&window, "btnApply", u"&Apply"_s);
    console::publish_accessibility(window);

    EXPECT_EQ(box->accessibleName(), u"PIN/ID"_s);
    EXPECT_EQ(box->accessibleDescription(), u"fpin"_s);
    EXPECT_EQ(apply->accessibleName(), u"Apply"_s);
    EXPECT_EQ(apply->accessibleDescription(), u"btnApply"_s);
    EXPECT_EQ(console::visible_caption(u"Fish && &Chips"_s), u"Fish & Chips"_s);
}

TEST_F(ConsoleBasics, GeometryRoundTripsInTwipsAndIsNotWrittenWhileMaximised)
{
    QWidget window;
    EXPECT_FALSE(console::restore_geometry(window, state->settings, u"test_form_"_s)); // never placed
    state->settings.put_setting({u"display", u"test_form_top"}, 1440);
    state->settings.put_setting({u"display", u"test_form_left"}, 2880);
    state->settings.put_setting({u"display", u"test_form_height"}, 4320);
    state->settings.put_setting({u"display", u"test_form_width"}, 7200);
    ASSERT_TRUE(console::restore_geometry(window, state->settings, u"test_form_"_s));
    const int dpi = window.logicalDpiX();
    EXPECT_EQ(window.width(), 5 * dpi);
    EXPECT_EQ(window.height(), 3 * dpi);

    window.resize(4 * dpi, 2 * dpi);
    console::save_geometry(window, state->settings, u"test_form_"_s);
    EXPECT_EQ(state->settings.get_setting_long({u"display", u"test_form_width"}), 5760);
    window.resize(6 * dpi, 6 * dpi);
    window.setWindowState(Qt::WindowMaximized);
    console::save_geometry(window, state->settings, u"test_form_"_s);
    EXPECT_EQ(state->settings.get_setting_long({u"display", u"test_form_width"}), 5760);

    // Centring keeps a window inside the screen.
    EXPECT_EQ(console::centred_over({0, 0, 100, 100}, {300, 200}, {0, 0, 1000, 800}), QPoint(0, 0));
    EXPECT_EQ(console::centred_over({400, 300, 200, 200}, {100, 100}, {0, 0, 1000, 800}), QPoint(450, 350));
}

TEST_F(ConsoleBasics, BusyLockRestoresOnlyWhatItDisabled)
{
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* enabled = new QPushButton(u"a"_s);
    auto* disabled = new QPushButton(u"b"_s);
    layout->addWidget(enabled);
    layout->addWidget(disabled);
    disabled->setEnabled(false);
    {
        console::BusyLock lock(window);
        EXPECT_FALSE(enabled->isEnabled());
    }
    EXPECT_TRUE(enabled->isEnabled());
    EXPECT_FALSE(disabled->isEnabled());
}

TEST_F(ConsoleBasics, OwnerGivesBackTheOpenWindowAndForgetsAClosedOne)
{
    QWidget& first = windows.open<QWidget>();
    EXPECT_EQ(&windows.open<QWidget>(), &first);
    first.close();
    QApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(windows.find<QWidget>(), nullptr);
}

} // namespace
} // namespace cvd::testing
