#pragma once

#include <initializer_list>

class QDialog;
class QHBoxLayout;
class QPushButton;
class QWidget;

namespace cvd::console {

// The buttons of a settings dialog, side by side at its right.
QHBoxLayout* button_row(std::initializer_list<QPushButton*> buttons);

// A settings dialog once built: published for accessibility, sized to its contents and centred over the
// window that opened it.
void settle_over_parent(QDialog& dialog, QWidget* parent);

} // namespace cvd::console
