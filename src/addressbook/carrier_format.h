#pragma once

#include "addressbook/carrier_types.h"

#include <optional>

namespace cvd::addressbook {

// The way a frame is packed into a cv_carriers row is a format shared with the delivery engine, which
// reads the same rows. Other writers of the table (the importers) must produce the same encoding.

// The row an Apply on this frame writes. Every column is set, so a carrier switched to another protocol
// keeps nothing of the old one; cv_retries is always 0. Texts are stored as they stand in the frame, the name
// included (the caller validates it first, see refuse_carrier_name). Numbers go through their boxes' rules
// first, so a frame whose boxes were never left still stores numbers within the limits, never a failure.
CarrierRow encode_carrier(const CarrierFrame& frame);

// What the dialog shows for a stored row in edit mode. Name and priority go into all nine frames; the frame
// of the row's protocol starts from its defaults and takes the fields that row holds. A dial type that names
// none of the nine protocols fills no frame. Null columns read as empty text, 0 or false.
struct DecodedCarrier
{
    QString name;
    QString priority;
    std::optional<CarrierFrame> frame;

    bool operator==(const DecodedCarrier&) const = default;
};
DecodedCarrier decode_carrier(const CarrierRow& row);

// The line form of cv_modem_settings: baud, parity letter, data bits, stop bits, comma-separated and
// without blanks, such as "1200,e,7,1" or "9600,n,8,1.5".
QString encode_line_settings(const LineSettings& line);

// Reads a line form over `shown`, the settings the boxes stand on: the baud box takes the text before the
// first comma (the whole text when there is none), and parity, data bits and stop bits change only where
// the text gives a value their lists hold.
LineSettings decode_line_settings(const QString& stored, const LineSettings& shown);

// The FAX class code: the position of the text in the class list plus one ("2.0" gives "3"); text that is
// no list entry has no position and gives "0".
QString fax_class_code(const QString& fax_class);

// The class list entry for a stored code, or empty text when the code points at no entry.
QString fax_class_of_code(const QString& code);

// "wct-0" or "wct-1".
QString wctp_dial_type(WctpSendMethod method);

// The send method of a stored WCTP dial type: the number behind its fourth character; anything but 1
// reads as Transient Client.
WctpSendMethod wctp_send_method_of(const QString& dial_type);

// "tone-" followed by the wait string, and back: everything behind the first five characters.
QString tone_dial_type(const QString& wait_string);
QString tone_wait_string_of(const QString& dial_type);

// The auth entry of a stored value, when the protocol's list holds it; otherwise "None".
AuthType auth_of_value(Protocol protocol, std::optional<qint32> stored);

} // namespace cvd::addressbook
