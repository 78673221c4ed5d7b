#pragma once

#include "addressbook/recipients.h"
#include "addressbook/recipients_store.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace cvd {

struct AppState;

namespace addressbook {

// A message box with one OK button, as the group windows show it.

// The boxes of the group dialogs as the operator leaves them.
enum class GroupBox {
    ShortName,   // cut to 40 characters, trimmed, small letters
    Description, // cut to 40 characters
    Comment,     // cut to 80 characters
};
QString on_leaving(GroupBox box, const QString& text);

// The short name after the description box has been left: an empty one is made from the description.
QString group_short_name_after_description(const QString& short_name, const QString& description);

// The boxes of add_group and edit_group at Apply.
struct GroupEntry
{
    QString short_name;
    QString description;
    QString extra1;
    QString extra2;
    bool on_call = false;

    bool operator==(const GroupEntry&) const = default;
};

// The row of cv_recipients that stands for a group: no carrier, 1024 characters, priority 100.
RecipientRow group_row(const GroupEntry& entry);

// The add window refuses to open while cv_recipients holds no row at all.
std::optional<Notice> refuse_add_group_window(bool any_recipient);
// The same asked of state.global_db ("Procedure: add_group load").
std::optional<Notice> add_group_window_refusal(AppState& state);

// Apply of add_group against state.global_db ("Procedure: add_group command1"). The short name comes back as
// the box shows it afterwards: quotes before the first refused character become grave accents.
struct GroupApplyOutcome
{
    QString short_name;
    Notice notice; // the refusal, or "Group record added"
    bool stored = false;
};
GroupApplyOutcome add_group(AppState& state, const GroupEntry& entry);

// What edit_group loads for a group ("Procedure: edit_group load"); nullopt when the row is gone.
std::optional<GroupEntry> load_group(AppState& state, const QString& name);

// Apply of edit_group ("Procedure: edit_group command11"). The short name is the one loaded and never changes.
// Taking the on-call flag away from a group that was on-call when loaded deletes its roster in the same
// transaction. nullopt when stored; a refusal closes the window without storing.
std::optional<Notice> edit_group(AppState& state, const QString& name, bool loaded_on_call, const GroupEntry& entry);

// The groups by full name, as list_groups shows them ("Procedure: list_groups activate").
QList<RecipientListEntry> list_groups(AppState& state);

enum class GroupListMode { Edit, Members, Delete };
struct GroupListCaptions
{
    QString window;
    QString button;

    bool operator==(const GroupListCaptions&) const = default;
};
GroupListCaptions group_list_captions(GroupListMode mode);

// Deletes the group and its own member rows in one transaction ("Procedure: list_groups load"), unless an
// unsent message waits for it. Rows naming it as a member of another group, and its roster, stay.
std::optional<Notice> delete_group(AppState& state, const QString& name);

// The text of a recipient in the member lists: a group carries " (G)" behind or "(G) " in front.
QString group_mark_text(const QString& full_name, bool is_group, bool label_after);
// The full name an entry stands for, with the group mark cut off where the setting puts it.
QString without_group_mark(const QString& text, bool label_after);

// The two lists of group_maint ("Procedure: group_maint load"): every recipient but ad hoc ones and the group
// itself, in table order.
struct MemberLists
{
    QStringList members;
    QStringList non_members;

    bool operator==(const MemberLists&) const = default;
};
MemberLists group_maint_lists(AppState& state, const QString& group, bool label_after);

// Apply of group_maint ("Procedure: group_maint command3"): the group's member rows are replaced, in one
// transaction, by the recipients the entries name. An entry is found by full name, the first row wins; an entry
// that names no recipient any more is left out.
void apply_group_members(AppState& state, const QString& group, const QStringList& member_entries, bool label_after);

// frmGroupMembers: the members' full names in row order; a member row without recipient is skipped
// ("Procedure: frmGroupMembers load").
QStringList group_member_names(AppState& state, const QString& group);
QString group_members_caption(const QString& group_text);

} // namespace addressbook
} // namespace cvd
