#pragma once

#include "addressbook/carrier_rules.h"
#include "addressbook/carrier_types.h"

#include <QString>
#include <functional>
#include <optional>

namespace cvd::addressbook {

// A message box with one OK button, the same kind the carrier dialog shows.

// One row of cv_recipients as this program writes and reads it. A null column reads as empty text, 0 or false.
struct RecipientRow
{
    QString name;      // cv_name, the key that messages and group rows refer to
    QString full_name; // cv_full_name
    QString id;        // cv_id: pager ID or PIN, phone number or e-mail address; empty for an ad hoc recipient
    QString carrier;   // cv_carrier, the cv_name of the carrier
    qint32 maxchars = 0;
    bool alpha = false;
    bool on_call = false;
    bool ad_hoc = false;
    bool drop_control = false;
    bool group = false;
    bool send_subject = false; // cv_SendSubject
    QString extra1;
    QString extra2;
    bool remove_from = false;
    qint32 priority = 0;

    bool operator==(const RecipientRow&) const = default;
};

enum class RecipientType { Normal, AdHoc };
QString recipient_type_text(RecipientType type); // "Normal", "Ad-Hoc"

// The four flags, by the column each is stored in.
enum class RecipientFlag { DropControl, SendSubject, RemoveFrom, Alpha };
inline constexpr RecipientFlag all_recipient_flags[] = {RecipientFlag::DropControl, RecipientFlag::SendSubject,
                                                        RecipientFlag::RemoveFrom, RecipientFlag::Alpha};

// "Strip non-printable characters", "Extract Subject", "Strip sender's name", "Alpha".
QString recipient_flag_caption(RecipientFlag flag);

struct RecipientFlags
{
    bool drop_control = false;
    bool send_subject = false;
    bool remove_from = false;
    bool alpha = false;

    bool value(RecipientFlag flag) const;
    void set(RecipientFlag flag, bool on);

    bool operator==(const RecipientFlags&) const = default;
};

// A flag a frame offers as a check box, named by its objectName; or, when `box` is empty, the value stored for
// it whatever the row held before.
struct FlagSlot
{
    QString box;
    bool constant = false;

    bool offered() const { return !box.isEmpty(); }
    bool operator==(const FlagSlot&) const = default;
};

// What the nine frames of the recipient dialog differ in: the identity box and the flags.
struct RecipientFrame
{
    Protocol protocol;
    QString identity_box;          // objectName, e.g. "txtFaxPhone"
    QString identity_label;        // "Phone #" or "ID / PIN"
    QString missing_identity_text; // shown under "Missing Data" when a normal recipient has no identity
    FlagSlot drop_control;
    FlagSlot send_subject;
    FlagSlot remove_from;
    FlagSlot alpha;

    const FlagSlot& slot(RecipientFlag flag) const;
};
const RecipientFrame& recipient_frame(Protocol protocol);

// The flags a recipient of that frame stores: the offered ones as `shown`, the others the frame's constants.
RecipientFlags stored_flags(Protocol protocol, const RecipientFlags& shown);

// What a frame shows when the dialog opens in Add mode. The flags a frame does not offer carry its constants.
struct RecipientDefaults
{
    QString max_chars;
    RecipientFlags flags;

    bool operator==(const RecipientDefaults&) const = default;
};
RecipientDefaults recipient_add_defaults(Protocol protocol);
QString recipient_default_priority(); // "100" in every frame

// Fixed captions of the Advanced frames. The priority label is spelt "Priorty" on purpose: operators' scripts
// and screen reader users find the box by it.
QString recipient_priority_label();
QString recipient_comment_label(int which); // "Comment1" or "Comment2"

// What a box does to its text when the operator leaves it. The window copies the result to the eight twins.
enum class RecipientBox {
    ShortName, // cut to 40 characters, then trimmed of blanks
    FullName,  // likewise
    Identity,  // likewise
    Comment,   // cut to 80 characters, then trimmed of blanks
    MaxChars,  // by the leading number: below 10 gives "10", above 6000 gives "6000", otherwise as typed
    Priority,  // by the leading number: below 1 gives "1", above 30000 gives "30000", otherwise as typed
};
QString on_leaving(RecipientBox box, const QString& text);

// The short name boxes after the Full Name box has been left with `full_name` (already through its rule):
// an empty short name is filled from the full name, any other stays.
QString short_name_after_full_name(const QString& short_name, const QString& full_name);

// A short name from a full name: small letters and digits kept, capitals made small, a blank, "(", "," and "."
// each turned into "_", "-" and "_" kept, everything else dropped; then "--" and "__" squeezed to one.
QString make_short_name(const QString& full_name);

// What the Max Chars boxes show after a carrier has been selected: its cv_maxchars in Add mode; nullopt in edit
// mode, where they stay as they are.
std::optional<QString> max_chars_on_carrier_selected(bool is_edit, qint32 carrier_maxchars);

// The characters Apply lets through, by character code: the short name takes 44 to 63, 65 to 90 and 95 to 122,
// the full name 32 to 126 except "(" and ")". Nothing beyond code 126 passes.
bool is_short_name_character(QChar ch);
bool is_full_name_character(QChar ch);

// A name after Apply has walked it: each double quote and apostrophe up to the first refused character is
// replaced by a grave accent, as the box then shows it; what follows a refused character stays as typed.
struct NameWalk
{
    QString text;
    bool accepted = false;
};
NameWalk walk_short_name(const QString& text);
NameWalk walk_full_name(const QString& text);

// The values of the dialog's current frame at Apply, as its boxes hold them.
struct RecipientEntry
{
    QString short_name;
    QString full_name;
    QString identity;
    RecipientType type = RecipientType::Normal;
    QString carrier;
    QString max_chars;
    QString priority;
    QString comment1;
    QString comment2;
    RecipientFlags flags; // the frame's check boxes; those it does not offer are ignored
};

// Apply's checks in their order. `names` are the name boxes after the quotes have been replaced, which the
// dialog shows whether the entry is refused or not. `name_exists` is asked only in Add mode, after every other
// check has passed, and must compare without regard to case and count groups too.
struct EntryCheck
{
    QString short_name;
    QString full_name;
    std::optional<Notice> refusal;
};
EntryCheck check_recipient_entry(Protocol protocol, const RecipientEntry& entry, bool is_edit,
                                 const std::function<bool(const QString&)>& name_exists);

// The row Apply stores for an entry that has passed the checks (the names as check_recipient_entry returned
// them). An ad hoc recipient stores no identity whatever the box held; Max Chars and Priority go through their
// box rules first, so a box never left still stores a number within the limits.
RecipientRow recipient_row(Protocol protocol, const RecipientEntry& entry);

// What edit mode loads into the boxes from a stored row.
RecipientEntry entry_of_row(const RecipientRow& row);

// The box shown after a stored Apply.
Notice recipient_stored_notice(bool is_edit);

// Delete refuses while unsent messages wait for the recipient; sent ones do not count.
std::optional<Notice> refuse_recipient_delete(bool has_unsent_messages);

// A carrier as the recipient dialog lists it: its name, the first three letters of its cv_dial_type (the
// hidden type list) and its cv_maxchars (the hidden Max Chars list).
struct RecipientCarrier
{
    QString name;
    QString type;
    qint32 maxchars = 0;

    bool operator==(const RecipientCarrier&) const = default;
};
RecipientCarrier recipient_carrier(const QString& name, const QString& dial_type, qint32 maxchars);

// No recipient can exist without a carrier: the dialog refuses to open while none is set up.
std::optional<Notice> refuse_recipient_window(bool any_carrier);

// A line of the recipient list: short name, tab, full name.
QString recipient_list_line(const QString& name, const QString& full_name);

} // namespace cvd::addressbook
