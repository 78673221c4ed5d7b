#pragma once

#include "addressbook/pickers.h"

#include <QList>
#include <QString>
#include <optional>

namespace cvd {
struct AppState;
}

namespace cvd::desk {

// What a mouse click on an entry of one of the two pick lists does.
enum class ClickAction {
    Move,        // the entry goes over to the other list
    Details,     // Shift was held: the entry stays and its details are shown
    AskAdhocPin, // an ad hoc recipient in the unpicked list: a number is asked, a new picked entry made
    Drop,        // an ad hoc entry of the picked list: it goes, and nothing goes back
};

struct ListClick
{
    ClickAction action = ClickAction::Move;
    // For Details: the key the detail window reads, and a group's label without its mark (empty for a
    // recipient).
    QString detail_key;
    QString group_label;

    bool operator==(const ListClick&) const = default;
};

// A click on an entry of the unpicked list, with or without Shift.
ListClick unpicked_click(const addressbook::PickerEntry& entry, bool shift, bool label_after);

// A click on an entry of the picked list. The ad hoc test here looks only at the front of the label, so
// with the mark behind the name an ad hoc entry goes back to the unpicked list as it stands; kept on purpose.
ListClick picked_click(const addressbook::PickerEntry& entry, bool shift, bool label_after);

// The key the detail window gets: the entry's key and its priority as the list entry holds them side by side,
// trimmed. An entry with a priority therefore names no row; the detail window shows it empty.
QString detail_key(const addressbook::PickerEntry& entry);

// A preset's text put into the message as the program buttons do: a selection is replaced, otherwise the text
// goes in at the caret, except that a caret at the very start appends it behind the whole text.
struct MessageEdit
{
    QString text;
    int selection_start = 0;
    int selection_length = 0;
    int caret = 0;
};
QString insert_preset_text(const MessageEdit& edit, const QString& preset_text);

// The label the lists show for the recipient a preset names, or nullopt when there is no such row (the
// recipient is then ignored). Database failures take the common error path.
std::optional<QString> preset_recipient_label(AppState& state, const QString& name, bool label_after);

// The positions, in the unpicked list, of the entries a preset's recipient picks: those whose label, cut to
// 50 characters and trimmed, equals `label`.
QList<qsizetype> entries_with_label(const QList<addressbook::PickerEntry>& unpicked, const QString& label);

} // namespace cvd::desk
