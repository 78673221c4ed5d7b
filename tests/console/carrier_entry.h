#pragma once

#include "addressbook/carrier_types.h"

#include <QList>
#include <QString>
#include <utility>

class QComboBox;
class QLineEdit;
class QWidget;

namespace cvd::console {
struct ConsoleContext;
}

namespace cvd::testing {

// The carrier dialog driven as an operator drives it, for the window tests and for the round trips that
// add carriers before they move them.

// The text box of that name, or the edit line of the list of that name that takes typed text.
QLineEdit& carrier_box(QWidget& dialog, const QString& name);
QComboBox& carrier_list(QWidget& dialog, const QString& name);

// Brings up the frame (main or Advanced) that holds the control, with its Advanced or Back button.
void reach(QWidget& dialog, QWidget& control);

// Replaces the box's text by typing and leaves the box, so that its rule runs.
void type_and_leave(QWidget& dialog, const QString& box, const QString& text);
// Picks the entry of a list by its text.
void choose(QWidget& dialog, const QString& list, const QString& entry);
// Picks the protocol in the protocol list of the frame in view.
void choose_protocol(QWidget& dialog, addressbook::Protocol protocol);
// Presses Apply of the frame in view.
void press_apply(QWidget& dialog);

struct CarrierEntry
{
    addressbook::Protocol protocol;
    QString name;
    QList<std::pair<QString, QString>> typed;  // box, text
    QList<std::pair<QString, QString>> chosen; // list, entry
};

// Opens frmAddCarrier in add mode, enters the carrier and presses Apply. True when the dialog stored it
// and closed.
bool add_carrier_through_window(console::ConsoleContext& context, QWidget* owner, const CarrierEntry& entry);

} // namespace cvd::testing
