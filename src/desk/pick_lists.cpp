#include "desk/pick_lists.h"

#include "core/app_state.h"
#include "core/error_path.h"
#include "core/text.h"
#include "store/database.h"
#include "store/tables.h"

using namespace Qt::StringLiterals;

namespace cvd::desk {

namespace {

namespace recipients = store::tables::recipients;

const QString kGroupBefore = u"(G) "_s;
const QString kGroupAfter = u" (G)"_s;
const QString kAdHocBefore = u"(A) "_s;
const QString kAdHocAfter = u" (A)"_s;
constexpr qsizetype kMarkLength = 4;
constexpr qsizetype kTagWindow = 100;
constexpr qsizetype kKeyWidth = 50;
constexpr qsizetype kPresetLabelLength = 50;

// What the click handlers look at: the trimmed front of the entry.
QString tag_window(const addressbook::PickerEntry& entry)
{
    return trim_blanks(entry.label.left(kTagWindow));
}

ListClick details_of(const addressbook::PickerEntry& entry, bool label_after)
{
    const QString label = tag_window(entry);
    ListClick click{ClickAction::Details, detail_key(entry), QString()};
    if (label.startsWith(kGroupBefore) || label.endsWith(kGroupAfter)) {
        // The side the setting names is cut, whichever side carries the mark.
        click.group_label = label_after ? label.chopped(kMarkLength) : label.mid(kMarkLength);
    }
    return click;
}

} // namespace

QString detail_key(const addressbook::PickerEntry& entry)
{
    if (entry.priority.isEmpty()) {
        return trim_blanks(entry.key);
    }
    return trim_blanks(entry.key.leftJustified(kKeyWidth, u' ', true) + entry.priority);
}

ListClick unpicked_click(const addressbook::PickerEntry& entry, bool shift, bool label_after)
{
    if (shift) {
        return details_of(entry, label_after);
    }
    const QString label = tag_window(entry);
    if (label.startsWith(kAdHocBefore) || label.endsWith(kAdHocAfter)) {
        return {ClickAction::AskAdhocPin, {}, {}};
    }
    return {};
}

ListClick picked_click(const addressbook::PickerEntry& entry, bool shift, bool label_after)
{
    if (shift) {
        return details_of(entry, label_after);
    }
    // The picked list tests the untrimmed entry, whose end is always blank: only a mark in front counts.
    if (entry.label.startsWith(kAdHocBefore)) {
        return {ClickAction::Drop, {}, {}};
    }
    return {};
}

QString insert_preset_text(const MessageEdit& edit, const QString& preset_text)
{
    QString text = edit.text;
    if (edit.selection_length > 0) {
        return text.replace(edit.selection_start, edit.selection_length, preset_text);
    }
    if (edit.caret <= 0 || edit.caret >= text.size()) {
        return text + preset_text;
    }
    return text.insert(edit.caret, preset_text);
}

std::optional<QString> preset_recipient_label(AppState& state, const QString& name, bool label_after)
{
    state.clear_error_counters();
    return with_retry(state, u"Procedure: send_form use_preset"_s, [&]() -> std::optional<QString> {
        store::Statement query =
            state.global_db.prepare(u"SELECT "_s % recipients::full_name % u", "_s % recipients::group % u" FROM "_s %
                                    recipients::table % u" WHERE "_s % recipients::name % u" = ?1"_s);
        query.bind(1, name);
        if (!query.step()) {
            return std::nullopt;
        }
        // The query reads no ad hoc flag, so a label is never marked as ad hoc here.
        return addressbook::recipient_label(name, query.text(0).value_or(QString()), query.flag(1), false, label_after);
    });
}

QList<qsizetype> entries_with_label(const QList<addressbook::PickerEntry>& unpicked, const QString& label)
{
    QList<qsizetype> positions;
    for (qsizetype i = 0; i < unpicked.size(); ++i) {
        if (trim_blanks(unpicked.at(i).label.left(kPresetLabelLength)) == label) {
            positions.append(i);
        }
    }
    return positions;
}

} // namespace cvd::desk
