#include "addressbook/pickers.h"

#include "addressbook/groups.h"
#include "addressbook/recipients_store.h"
#include "core/app_state.h"
#include "core/error_path.h"
#include "core/text.h"
#include "store/database.h"
#include "store/tables.h"

#include <algorithm>
#include <array>

using namespace Qt::Literals::StringLiterals;

namespace cvd::addressbook {

namespace {

const QString kFilterProcedure = u"frmInfo btnFilter"_s;
const QString kListProcedure = u"Procedure: show_users"_s;
const QString kDetailsProcedure = u"frmInfo Form_Load"_s;

namespace recipients = store::tables::recipients;

// What a label is made of, in the order label_of reads it.
constexpr std::array kLabelColumns{recipients::name, recipients::full_name, recipients::group, recipients::ad_hoc};

const QString kAdHocAfter = u" (A)"_s;
const QString kAdHocBefore = u"(A) "_s;

constexpr qsizetype kPinLength = 40;
constexpr qsizetype kAdHocKeyLength = 41;

QString text_column(const store::Statement& statement, int column)
{
    return statement.text(column).value_or(QString());
}

QString label_of(const store::Statement& row, bool label_after)
{
    return recipient_label(text_column(row, 0), text_column(row, 1), row.flag(2), row.flag(3), label_after);
}

// The columns the filter may test, in the order of its boxes.
struct FilterBox
{
    const QString PickerFilter::*text;
    store::tables::Name column;
};

const FilterBox kFilterBoxes[] = {
    {&PickerFilter::full_name, recipients::full_name},
    {&PickerFilter::short_name, recipients::name},
    {&PickerFilter::extra1, recipients::extra1},
    {&PickerFilter::extra2, recipients::extra2},
};

// Every row of cv_recipients as the unpicked list shows it, in the list's order.
QList<PickerEntry> read_picker_entries(store::Database& db, bool label_after)
{
    store::Statement query = db.prepare(u"SELECT "_s % store::tables::column_list(kLabelColumns) % u", "_s %
                                        recipients::priority % u" FROM "_s % recipients::table);
    QList<PickerEntry> entries;
    while (query.step()) {
        const QString priority = query.is_null(4) ? QString() : trim_blanks(text_column(query, 4));
        entries.append({label_of(query, label_after), text_column(query, 0), priority});
    }
    sort_picker_entries(entries);
    return entries;
}

// The rows the filter lets through, in the list's order. The filter does not read the priority.
QList<PickerEntry> read_filtered_entries(store::Database& db, const PickerFilter& filter, bool label_after)
{
    const FilterCondition condition = filter_condition(filter);
    store::Statement query = db.prepare(u"SELECT "_s % store::tables::column_list(kLabelColumns) % u" FROM "_s %
                                        recipients::table % u" WHERE "_s % condition.sql);
    for (qsizetype i = 0; i < condition.values.size(); ++i) {
        query.bind(static_cast<int>(i + 1), condition.values.at(i));
    }
    QList<PickerEntry> entries;
    while (query.step()) {
        entries.append({label_of(query, label_after), text_column(query, 0), QString()});
    }
    sort_picker_entries(entries);
    return entries;
}

} // namespace

QString recipient_label(const QString& name, const QString& full_name, bool is_group, bool is_ad_hoc, bool label_after)
{
    QString label = trim_blanks(full_name);
    if (label.isEmpty()) {
        label = name;
    }
    if (is_group) {
        return group_mark_text(label, true, label_after);
    }
    if (is_ad_hoc) {
        return label_after ? label + kAdHocAfter : kAdHocBefore + label;
    }
    return label;
}

QString without_ad_hoc_mark(const QString& text, bool label_after)
{
    if (label_after && text.endsWith(kAdHocAfter)) {
        return text.chopped(kAdHocAfter.size());
    }
    if (!label_after && text.startsWith(kAdHocBefore)) {
        return text.mid(kAdHocBefore.size());
    }
    return text;
}

bool picker_entry_less(const PickerEntry& a, const PickerEntry& b)
{
    // The list orders its entries by their whole text: label, then key, then priority, each compared without
    // regard to case. A label that is a prefix of another sorts first.
    for (const auto part : {&PickerEntry::label, &PickerEntry::key, &PickerEntry::priority}) {
        const int order = QString::compare(a.*part, b.*part, Qt::CaseInsensitive);
        if (order != 0) {
            return order < 0;
        }
    }
    return false;
}

void sort_picker_entries(QList<PickerEntry>& entries)
{
    std::stable_sort(entries.begin(), entries.end(), picker_entry_less);
}

QString like_pattern(const QString& text)
{
    QString pattern = u"%"_s;
    for (const QChar ch : text) {
        if (ch == u'*') {
            pattern += u'%';
        } else if (ch == u'?') {
            pattern += u'_';
        } else if (ch == u'%' || ch == u'_' || ch == u'\\') {
            pattern += u'\\';
            pattern += ch;
        } else {
            pattern += ch;
        }
    }
    pattern += u'%';
    return pattern;
}

FilterCondition filter_condition(const PickerFilter& filter)
{
    FilterCondition condition{u"true"_s, {}};
    for (const FilterBox& box : kFilterBoxes) {
        const QString text = trim_blanks(filter.*box.text);
        if (text.isEmpty()) {
            continue;
        }
        condition.values.append(like_pattern(text));
        // SQLite's LIKE ignores case for ASCII letters, as the list's searches always have.
        condition.sql +=
            u" AND "_s + box.column + u" LIKE ?"_s + QString::number(condition.values.size()) + u" ESCAPE '\\'"_s;
    }
    return condition;
}

QList<PickerEntry> picker_entries(AppState& state, bool label_after)
{
    state.clear_error_counters();
    return with_retry(state, kListProcedure, [&] { return read_picker_entries(state.global_db, label_after); });
}

QList<PickerEntry> filter_recipients(AppState& state, const PickerFilter& filter, bool label_after)
{
    state.clear_error_counters();
    return with_retry(state, kFilterProcedure,
                      [&] { return read_filtered_entries(state.global_db, filter, label_after); });
}

RecipientDetails recipient_details(AppState& state, const QString& key)
{
    state.clear_error_counters();
    const std::optional<RecipientRow> row =
        with_retry(state, kDetailsProcedure, [&] { return read_recipient(state.global_db, key); });
    if (!row) {
        return {};
    }
    return {row->full_name, row->extra1, row->extra2};
}

QString adhoc_pin_on_apply(const QString& box)
{
    // No other check on purpose: blanks and letters are valid parts of some carriers' addresses.
    return cut_to(box, kPinLength);
}

std::optional<PickerEntry> adhoc_picked_entry(const PickerEntry& adhoc_entry, const QString& pin)
{
    if (pin.isEmpty()) {
        return std::nullopt;
    }
    // The new entry carries the mark in its key, which is how the send tells it from a picked recipient; it has
    // no priority of its own.
    return PickerEntry{trim_blanks(adhoc_entry.label) + u" | "_s + pin,
                       kAdHocBefore + adhoc_entry.key.left(kAdHocKeyLength), QString()};
}

} // namespace cvd::addressbook
