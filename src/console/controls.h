#pragma once

#include <QString>
#include <QWidget>

class QFormLayout;

namespace cvd::console {

// Creates a control with its name from the window's design as objectName, so that tests, readers and
// assistive tools find it by that name.
template <typename Control, typename... Args>
Control* make_control(QWidget* parent, const char* object_name, Args&&... args)
{
    auto* control = new Control(std::forward<Args>(args)..., parent);
    control->setObjectName(QString::fromLatin1(object_name));
    return control;
}

// A row of a form: a label named `label_name` with the caption, standing for the box (its buddy), so that the
// box's accessible name is the label's caption.
void add_labelled_row(QFormLayout& form, QWidget* window, const char* label_name, const QString& caption, QWidget* box);

// Gives every control of the window the caption an operator sees for it as accessible name (a button's or
// label's text without its "&", a group's title, the label that names a box through its buddy, a tooltip
// for a control without text) and its objectName as accessible description. Names set by hand are kept.
// Called once a window's controls are built, and again when captions change.
void publish_accessibility(QWidget& window);

// The caption an operator sees, with the "&" of an accelerator dropped ("&&" stays one "&").
QString visible_caption(const QString& text);

} // namespace cvd::console
