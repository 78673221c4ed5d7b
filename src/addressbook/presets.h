#pragma once

#include <QList>
#include <QString>
#include <array>
#include <optional>

namespace cvd {
struct AppState;
class SettingsStore;
} // namespace cvd

namespace cvd::addressbook {

inline constexpr int kPresetCount = 100;
// The longest message text a preset takes; the windows cut a longer text as it is typed.
inline constexpr qsizetype kPresetTextLength = 200;

// One stored message. The message text and the recipient are kept in each other's column: the text in
// cv_recipient, the short name in cv_message. Existing databases hold their data so, and load and save
// both keep to it.
struct Preset
{
    QString index_text;  // the index as text, as read; empty for a row the table does not have
    QString description; // the button text
    QString message;     // column cv_recipient
    QString recipient;   // short name of a recipient, or empty; column cv_message

    friend bool operator==(const Preset&, const Preset&) = default;
};

// The presets 1 to 100, held in memory for the whole run.
class PresetTable
{
public:
    // index from 1 to kPresetCount; anything else throws std::out_of_range.
    Preset& at(int index) { return m_rows.at(static_cast<std::size_t>(index - 1)); }
    const Preset& at(int index) const { return m_rows.at(static_cast<std::size_t>(index - 1)); }

    friend bool operator==(const PresetTable&, const PresetTable&) = default;

private:
    std::array<Preset, kPresetCount> m_rows;
};

// True when the presets in force are the user's own (switch user_presets of category level).
bool user_presets_on(AppState& state);

// Fills `table` from the database in force. A user table whose first row has no description counts as
// unused: the global presets are read instead and copied into it. Rows the table does not have keep
// their values in memory. Database failures take the common error path.
void load_presets(AppState& state, PresetTable& table);

// Writes presets 1 to 100 into the database in force, all in one transaction, so a failure leaves the
// stored rows as they were. `procedure` names the caller in the halting box.
void save_presets(AppState& state, const PresetTable& table,
                  const QString& procedure = QStringLiteral("Procedure: save_presets"));

// The clean-up of a typed preset text before it is stored: every character below code 32 or from 127 up
// becomes a blank, then runs of blanks are thinned (see the definition for the exact rule).
QString clean_preset_text(const QString& text);

// The sort orders of the preset list, in the order of their stored names.
enum class PresetSortOrder {
    IndexAscending = 1,
    IndexDescending,
    DescriptionAscending,
    DescriptionDescending,
    RecipientAscending,
    RecipientDescending,
    MessageAscending,
    MessageDescending,
};

enum class PresetColumn { Number, Description, Recipient, Message };

// One row of the preset list: the index, the description, the recipient's label and the message text.
struct PresetListRow
{
    int number = 0;
    QString description;
    QString recipient_label;
    QString message;
};

// The name kept in display/preset_sort_order ("SortByIndexAscending" ...), and back; nullopt for a name
// that is none of the eight.
QString sort_order_name(PresetSortOrder order);
std::optional<PresetSortOrder> sort_order_from_name(const QString& name);

// The order stored in display/preset_sort_order; nullopt while none of the eight is stored.
std::optional<PresetSortOrder> stored_sort_order(SettingsStore& settings);
void store_sort_order(SettingsStore& settings, PresetSortOrder order);

// The order a click on a column head chooses: descending when that column's ascending order is in force,
// ascending otherwise (also while no order is in force).
PresetSortOrder order_after_column_click(std::optional<PresetSortOrder> current, PresetColumn column);
// The column and direction an order sorts on, for the list's sort indicator.
PresetColumn sort_column(PresetSortOrder order);
bool sort_ascending(PresetSortOrder order);

// True when `a` goes before `b` in `order`. The Number column compares as a number, the others as text
// without regard to case; every order but the two by number breaks ties by Number, ascending.
bool preset_row_less(PresetSortOrder order, const PresetListRow& a, const PresetListRow& b);

// Sorts the rows in place; rows equal in both columns keep their order.
void sort_preset_rows(PresetSortOrder order, QList<PresetListRow>& rows);

// One entry of the recipient list of the preset windows: the label with its mark, and the short name.
struct PresetRecipientChoice
{
    QString label;
    QString name;

    friend bool operator==(const PresetRecipientChoice&, const PresetRecipientChoice&) = default;
};

// The recipient list of the preset windows: "(none)" with an empty short name first, then every recipient
// that is not ad hoc (a null flag counts as not ad hoc), by label without regard to case. Read from
// state.global_db; database failures take the common error path under `procedure`.
QList<PresetRecipientChoice> preset_recipient_choices(AppState& state, const QString& procedure);

// The label a preset's recipient shows in the preset list: its marked full name, or empty when the preset has
// no recipient or the recipient is gone.
QString preset_recipient_label(AppState& state, const QString& name, const QString& procedure);

// The preset list: one row for each of the presets 1 to 100, by number.
QList<PresetListRow> preset_list_rows(AppState& state, const PresetTable& table, const QString& procedure);

// What an operator gave a preset in one of the preset windows.
struct PresetEntry
{
    QString description;
    QString message;
    QString recipient; // short name, or empty
};

// Apply of the program button's preset window: the message cleaned as clean_preset_text does, the three fields
// stored in memory, and the presets saved ("Procedure: preset_form apply").
void apply_preset_form(AppState& state, PresetTable& table, int number, const PresetEntry& entry);
// Apply of the preset list's edit window: the three fields stored as given, and the presets saved.
void apply_preset_edit(AppState& state, PresetTable& table, int number, const PresetEntry& entry);

// The edit window turns every double quote of a box into an apostrophe when the box is left.
QString quotes_to_apostrophes(const QString& text);

} // namespace cvd::addressbook
