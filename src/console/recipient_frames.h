#pragma once

#include "addressbook/recipients.h"

#include <QString>
#include <array>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QWidget;

namespace cvd::console {

// The controls of one protocol's pair of frames in the recipient dialog: the main frame (names, carrier,
// identity and the buttons) and its Advanced frame (type, comments, limits and the flags the protocol offers).
struct RecipientFrameControls
{
    addressbook::Protocol protocol = addressbook::Protocol::Fax;
    QWidget* main = nullptr;
    QWidget* advanced = nullptr;

    QLineEdit* full_name = nullptr;
    QLineEdit* short_name = nullptr;
    QComboBox* carrier = nullptr;
    QLineEdit* identity = nullptr;
    QPushButton* apply = nullptr;
    QPushButton* close = nullptr;
    QPushButton* to_advanced = nullptr;

    QComboBox* type = nullptr;
    QLineEdit* comment1 = nullptr;
    QLineEdit* comment2 = nullptr;
    QLineEdit* max_chars = nullptr;
    QLineEdit* priority = nullptr;
    // By addressbook::RecipientFlag; nullptr for a flag the frame does not offer.
    std::array<QCheckBox*, 4> flags{};
    QPushButton* back = nullptr;

    QCheckBox* flag(addressbook::RecipientFlag which) const { return flags.at(static_cast<std::size_t>(which)); }
};

// Builds both frames of the protocol as children of `parent`, named after the protocol ("fraTap", "fraTapAdv",
// "txtTapFullName", "chkTapAlpha" ...).
RecipientFrameControls build_recipient_frames(QWidget* parent, addressbook::Protocol protocol);

} // namespace cvd::console
