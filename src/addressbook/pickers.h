#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace cvd {

struct AppState;

namespace addressbook {

// The label of a recipient row in the pick lists and wherever recipients are picked by full name: the trimmed
// full name, or the short name when that is empty, with " (G)" / " (A)" behind it or "(G) " / "(A) " in front,
// as `group_label_after` says. A group is never marked as ad hoc.
QString recipient_label(const QString& name, const QString& full_name, bool is_group, bool is_ad_hoc, bool label_after);

// The ad hoc mark cut off where the setting puts it; other text comes back unchanged.
QString without_ad_hoc_mark(const QString& text, bool label_after);

// One entry of the unpicked list. The list keeps its entries in order of label, then key, then priority,
// without regard to case.
struct PickerEntry
{
    QString label;    // with its mark
    QString key;      // cv_name
    QString priority; // cv_priority as text; empty when the filter built the entry

    bool operator==(const PickerEntry&) const = default;
};

// True when `a` goes before `b` in the list's order.
bool picker_entry_less(const PickerEntry& a, const PickerEntry& b);
// The order the list keeps; stable, so equal entries stay in the order they were read.
void sort_picker_entries(QList<PickerEntry>& entries);

// Every row of cv_recipients as the unpicked list shows it, in the list's order, read from state.global_db
// ("Procedure: show_users"). A null flag reads as false, so every row is listed.
QList<PickerEntry> picker_entries(AppState& state, bool label_after);

// The four boxes of the filter window, as typed.
struct PickerFilter
{
    QString full_name;
    QString short_name;
    QString extra1;
    QString extra2;
};

// The condition the filter boxes make: SQL text with ?1.. placeholders and the values to bind to them in that
// order. Boxes blank after trimming add nothing, so all four blank give "true". A trimmed text is found
// anywhere inside its column without regard to case; the operator's "*" stands for any run of characters and
// "?" for any one character, every other character stands for itself.
struct FilterCondition
{
    QString sql;
    QStringList values;

    bool operator==(const FilterCondition&) const = default;
};
FilterCondition filter_condition(const PickerFilter& filter);

// The LIKE pattern of one box's trimmed text, with '\' as the escape character.
QString like_pattern(const QString& text);

// The rows the filter lets through, in the list's order, read from state.global_db with database failures
// taking the common error path ("frmInfo btnFilter"). The filter does not read the priority.
// An empty result means the window shows its notice and the whole list is rebuilt.
QList<PickerEntry> filter_recipients(AppState& state, const PickerFilter& filter, bool label_after);

// What the detail window shows of one recipient or group besides its key.
struct RecipientDetails
{
    QString full_name;
    QString extra1;
    QString extra2;

    bool operator==(const RecipientDetails&) const = default;
};

// The details of the row whose cv_name is `key`, read from state.global_db with database failures taking the
// common error path ("frmInfo Form_Load"). A key that finds no row gives empty texts, so a stale entry opens an
// empty window instead of failing.
RecipientDetails recipient_details(AppState& state, const QString& key);

// What the ad hoc dialog gives back when Apply is pressed: the box cut to 40 characters, blanks and letters
// kept as typed. Empty means the same as Close: nothing is picked.
QString adhoc_pin_on_apply(const QString& box);

// The entry the picked list gets when an ad hoc entry of the unpicked list is given a PIN: its label followed by
// " | " and the PIN, its key "(A) " and the first 41 characters of the ad hoc row's key, no priority. nullopt when the
// PIN is empty; the ad hoc entry itself stays in the unpicked list, so one ad hoc recipient can take several numbers in
// one message.
std::optional<PickerEntry> adhoc_picked_entry(const PickerEntry& adhoc_entry, const QString& pin);

} // namespace addressbook
} // namespace cvd
