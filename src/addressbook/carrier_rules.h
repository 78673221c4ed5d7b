#pragma once

#include "addressbook/carrier_types.h"
#include "core/prompter.h"

#include <functional>
#include <optional>

namespace cvd::addressbook {

// What a box of the carrier dialog does to its text when the operator leaves it. Every rule first trims
// blanks at both ends.
enum class BoxRule {
    Name,        // cut to 40 characters
    Priority,    // by the leading number: below 1 gives "1", above 30000 gives "30000"
    MaxChars,    // strict number, 1 to 6000
    MsgLimit,    // strict number, 0 to 255
    Baud,        // strict number, 1 to 230400
    NumericPort, // SNPP and WCTP: strict number, 1 to 65535
    SmtpPort,    // trimmed only: the text carries the security words
    InitString,  // cut to 80 characters
    Text,        // phone, host, domain, relay server, username, password: cut to 80 characters
    WaitString,  // cut to 35 characters
};

// The box's text after it has been left. Never fails: a strict number box whose text is empty or no number
// at all shows its lower limit. Within the limits a number box keeps the text as typed (trimmed).
QString on_leaving(BoxRule rule, const QString& text);

struct NumberLimits
{
    qint32 low;
    qint32 high;
};

// The limits of Priority and of the strict number rules; nullopt for the text rules.
std::optional<NumberLimits> number_limits(BoxRule rule);

// The whole number that a number box stands for once its rule has been applied: what the row stores.
// Fractions round half to even. Only meaningful for the rules that have number_limits.
qint32 box_number(BoxRule rule, const QString& text);

// The leading number of a text, read leniently: blanks are skipped, a sign, digits, a fraction and an
// exponent are taken, "&H" and "&O" start hexadecimal and octal; reading stops at the first other
// character. No number gives 0. Priorities and stored codes are read this way.
double leading_number(const QString& text);

// The whole text, trimmed of blanks, read as one decimal number (sign, digits, fraction, exponent);
// nullopt when anything else is in it. Too large a number reads as an infinity of its sign.
std::optional<double> strict_number(const QString& text);

// Leaving the SMTP username or password box with text in it while the SMTP auth list stands on "None"
// moves the list to "Standard". `box_text` is the text after the box's rule. The other frames' credential
// boxes leave their auth lists alone.
AuthType smtp_auth_on_leaving_credentials(AuthType current, const QString& box_text);

// Digits, ASCII letters, ".", "-" and "_", compared by character code.
bool is_carrier_name_character(QChar ch);

// Apply's checks of the name, in their order: empty, illegal character, then (in add mode only) a carrier of
// that name already there. `carrier_exists` is asked only when the name has passed the first two checks;
// it must compare without regard to case, as the store does. nullopt when Apply may store the row.
std::optional<Notice> refuse_carrier_name(const QString& name, bool is_edit,
                                          const std::function<bool(const QString&)>& carrier_exists);

// The carrier dialog's caption: "Add Carrier" or "Edit Carrier", with " - Advanced" on an Advanced frame.
QString carrier_dialog_caption(bool is_edit, bool advanced);

// The carrier list's caption and the caption of its action button in its two modes.
struct CarrierListCaptions
{
    QString title;  // "Edit Carrier" or "Delete Carrier"
    QString action; // "&Edit" or "&Delete"

    bool operator==(const CarrierListCaptions&) const = default;
};
CarrierListCaptions carrier_list_captions(bool edit_mode);

// The box shown after a stored Apply.
Notice apply_done_notice(bool is_edit);

// The box of an edit whose row another console deleted while the dialog stood open: nothing is stored, and
// the dialog stays open for Close.
Notice edited_carrier_gone_notice();

// The delete checks, in their order: a recipient that uses the carrier refuses whatever the messages are;
// then an unsent message for it. Sent messages do not count. nullopt when the row may be deleted.
std::optional<Notice> refuse_carrier_delete(bool used_by_recipients, bool has_unsent_messages);

} // namespace cvd::addressbook
