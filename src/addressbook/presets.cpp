#include "addressbook/presets.h"

#include "addressbook/pickers.h"
#include "core/app_state.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "core/setting_keys.h"
#include "core/text.h"
#include "store/database.h"
#include "store/tables.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace cvd::addressbook {

namespace {

const QString kLoadProcedure = u"Procedure: load_presets"_s;

namespace presets = store::tables::presets;

// In insertion order, so that "the first row" is the first one the table was given.
const QString kSelectPresets =
    u"SELECT "_s %
    store::tables::column_list({presets::index, presets::description, presets::recipient, presets::message}) %
    u" FROM "_s % presets::table % u" ORDER BY "_s % presets::id;

struct ReadResult
{
    PresetTable table;
    bool first_row_described = false;
};

// Reads every stored row over a copy of `base`. A row whose index is missing or outside 1 to 100 has no
// place in memory and is passed over.
ReadResult read_presets(store::Database& db, const PresetTable& base)
{
    ReadResult result{base, false};
    store::Statement select = db.prepare(kSelectPresets);
    bool first = true;
    while (select.step()) {
        const QString description = select.text(1).value_or(QString());
        if (first) {
            result.first_row_described = !description.isEmpty();
            first = false;
        }
        const std::optional<qint64> index = select.integer(0);
        if (!index || *index < 1 || *index > kPresetCount) {
            continue;
        }
        Preset& preset = result.table.at(static_cast<int>(*index));
        preset.index_text = QString::number(*index);
        preset.description = description;
        preset.message = select.text(2).value_or(QString());
        preset.recipient = select.text(3).value_or(QString());
    }
    return result;
}

void write_presets(store::Database& db, const PresetTable& table)
{
    store::Transaction transaction(db);
    store::Statement update =
        db.prepare(u"UPDATE "_s % presets::table % u" SET "_s %
                   store::tables::assignments({presets::description, presets::recipient, presets::message}) %
                   u" WHERE ("_s % presets::index % u" = ?4)"_s);
    for (int index = 1; index <= kPresetCount; ++index) {
        const Preset& preset = table.at(index);
        update.bind(1, preset.description).bind(2, preset.message).bind(3, preset.recipient).bind(4, index);
        update.exec();
        update.reset();
    }
    transaction.commit();
}

// Closes the user database when the preset work is over, also when it ends in an error.
class UserDatabaseSession
{
public:
    explicit UserDatabaseSession(AppState& state) : m_state(state) { open_user_database(m_state); }
    ~UserDatabaseSession() { close_user_database(m_state); }
    UserDatabaseSession(const UserDatabaseSession&) = delete;
    UserDatabaseSession& operator=(const UserDatabaseSession&) = delete;

private:
    AppState& m_state;
};

} // namespace

bool user_presets_on(AppState& state)
{
    return state.settings.get_setting_flag(setting_keys::level::user_presets) != 0;
}

void load_presets(AppState& state, PresetTable& table)
{
    const bool per_user = user_presets_on(state);
    if (per_user) {
        UserDatabaseSession session(state);
        ReadResult user = with_retry(state, kLoadProcedure, [&] { return read_presets(state.user_db, table); });
        if (user.first_row_described) {
            table = user.table;
            return;
        }
    }
    open_database(state);
    table = with_retry(state, kLoadProcedure, [&] { return read_presets(state.global_db, table); }).table;
    if (per_user) {
        // The user's table is still unused: it starts as a copy of the global presets.
        save_presets(state, table);
    }
}

void save_presets(AppState& state, const PresetTable& table, const QString& procedure)
{
    if (user_presets_on(state)) {
        UserDatabaseSession session(state);
        with_retry(state, procedure, [&] { write_presets(state.user_db, table); });
        return;
    }
    open_database(state);
    with_retry(state, procedure, [&] { write_presets(state.global_db, table); });
}

QString clean_preset_text(const QString& text)
{
    QString result = text;
    for (QChar& c : result) {
        if (c.unicode() < 32 || c.unicode() >= 127) {
            c = u' ';
        }
    }
    // Positions counted from 1, as operators and stored texts have always seen them. The loop bound is
    // the length before thinning; a pair is thinned only from position 2 on and while it lies inside the
    // shortened text, so a leading blank stays and a long run only halves.
    // Odd, but kept on purpose: stored presets were cleaned this way and must come out the same.
    const qsizetype start_length = result.size();
    for (qsizetype position = 1; position <= start_length - 1; ++position) {
        if (position >= 2 && position < result.size() && result.at(position - 1) == u' ' &&
            result.at(position) == u' ') {
            result.remove(position, 1);
        }
    }
    return result;
}

namespace {

struct OrderInfo
{
    PresetSortOrder order;
    const char16_t* name;
    PresetColumn column;
    bool ascending;
};

constexpr OrderInfo kOrders[] = {
    {PresetSortOrder::IndexAscending, u"SortByIndexAscending", PresetColumn::Number, true},
    {PresetSortOrder::IndexDescending, u"SortByIndexDescending", PresetColumn::Number, false},
    {PresetSortOrder::DescriptionAscending, u"SortByDescriptionAscending", PresetColumn::Description, true},
    {PresetSortOrder::DescriptionDescending, u"SortByDescriptionDescending", PresetColumn::Description, false},
    {PresetSortOrder::RecipientAscending, u"SortByRecipientAscending", PresetColumn::Recipient, true},
    {PresetSortOrder::RecipientDescending, u"SortByRecipientDescending", PresetColumn::Recipient, false},
    {PresetSortOrder::MessageAscending, u"SortByMessageAscending", PresetColumn::Message, true},
    {PresetSortOrder::MessageDescending, u"SortByMessageDescending", PresetColumn::Message, false},
};

const OrderInfo& info(PresetSortOrder order)
{
    const auto* found = std::find_if(std::begin(kOrders), std::end(kOrders),
                                     [order](const OrderInfo& entry) { return entry.order == order; });
    return found != std::end(kOrders) ? *found : kOrders[0];
}

const QString& column_text(const PresetListRow& row, PresetColumn column)
{
    switch (column) {
    case PresetColumn::Description:
        return row.description;
    case PresetColumn::Recipient:
        return row.recipient_label;
    case PresetColumn::Message:
    case PresetColumn::Number:
        break;
    }
    return row.message;
}

// Negative, zero or positive as `a` goes before, with or after `b` on the column, ascending.
int compare_column(const PresetListRow& a, const PresetListRow& b, PresetColumn column)
{
    if (column == PresetColumn::Number) {
        return a.number < b.number ? -1 : (a.number > b.number ? 1 : 0);
    }
    return QString::compare(column_text(a, column), column_text(b, column), Qt::CaseInsensitive);
}

} // namespace

QString sort_order_name(PresetSortOrder order)
{
    return QString::fromUtf16(info(order).name);
}

std::optional<PresetSortOrder> sort_order_from_name(const QString& name)
{
    for (const OrderInfo& entry : kOrders) {
        if (name == QString::fromUtf16(entry.name)) {
            return entry.order;
        }
    }
    return std::nullopt;
}

std::optional<PresetSortOrder> stored_sort_order(SettingsStore& settings)
{
    return sort_order_from_name(settings.get_setting_text(setting_keys::display::preset_sort_order));
}

void store_sort_order(SettingsStore& settings, PresetSortOrder order)
{
    settings.put_setting(setting_keys::display::preset_sort_order, sort_order_name(order));
}

PresetColumn sort_column(PresetSortOrder order)
{
    return info(order).column;
}

bool sort_ascending(PresetSortOrder order)
{
    return info(order).ascending;
}

PresetSortOrder order_after_column_click(std::optional<PresetSortOrder> current, PresetColumn column)
{
    const bool to_descending = current && sort_column(*current) == column && sort_ascending(*current);
    for (const OrderInfo& entry : kOrders) {
        if (entry.column == column && entry.ascending != to_descending) {
            return entry.order;
        }
    }
    return current.value_or(PresetSortOrder::IndexAscending);
}

bool preset_row_less(PresetSortOrder order, const PresetListRow& a, const PresetListRow& b)
{
    const OrderInfo& entry = info(order);
    const int primary = compare_column(a, b, entry.column);
    if (primary != 0) {
        return entry.ascending ? primary < 0 : primary > 0;
    }
    if (entry.column == PresetColumn::Number) {
        return false;
    }
    return compare_column(a, b, PresetColumn::Number) < 0;
}

void sort_preset_rows(PresetSortOrder order, QList<PresetListRow>& rows)
{
    std::stable_sort(rows.begin(), rows.end(),
                     [order](const PresetListRow& a, const PresetListRow& b) { return preset_row_less(order, a, b); });
}

namespace {

namespace recipients = store::tables::recipients;

bool label_after(AppState& state)
{
    return state.settings.get_setting_flag(setting_keys::display::group_label_after) != 0;
}

QString label_of(const store::Statement& row, bool after)
{
    return recipient_label(row.text(0).value_or(QString()), row.text(1).value_or(QString()), row.flag(2), row.flag(3),
                           after);
}

const QString kLabelColumns =
    store::tables::column_list({recipients::name, recipients::full_name, recipients::group, recipients::ad_hoc});

QList<PresetRecipientChoice> read_recipient_choices(store::Database& db, bool after)
{
    store::Statement select = db.prepare(u"SELECT "_s % kLabelColumns % u" FROM "_s % recipients::table %
                                         u" WHERE (COALESCE("_s % recipients::ad_hoc % u", 0) = 0)"_s);
    QList<PresetRecipientChoice> choices;
    while (select.step()) {
        choices.append({label_of(select, after), select.text(0).value_or(QString())});
    }
    std::stable_sort(choices.begin(), choices.end(), [](const auto& a, const auto& b) {
        return QString::compare(a.label, b.label, Qt::CaseInsensitive) < 0;
    });
    choices.prepend({u"(none)"_s, QString()});
    return choices;
}

// The label of the one recipient of that short name, or empty.
QString read_recipient_label(store::Database& db, const QString& name, bool after)
{
    store::Statement select = db.prepare(u"SELECT "_s % kLabelColumns % u" FROM "_s % recipients::table %
                                         u" WHERE ("_s % recipients::name % u" = ?1)"_s);
    select.bind(1, name);
    return select.step() ? label_of(select, after) : QString();
}

void store_entry(AppState& state, PresetTable& table, int number, const PresetEntry& entry, const QString& procedure)
{
    Preset& preset = table.at(number);
    preset.description = entry.description;
    preset.message = entry.message;
    preset.recipient = entry.recipient;
    save_presets(state, table, procedure);
}

} // namespace

QList<PresetRecipientChoice> preset_recipient_choices(AppState& state, const QString& procedure)
{
    open_database(state);
    state.clear_error_counters();
    const bool after = label_after(state);
    return with_retry(state, procedure, [&] { return read_recipient_choices(state.global_db, after); });
}

QString preset_recipient_label(AppState& state, const QString& name, const QString& procedure)
{
    if (name.isEmpty()) {
        return {};
    }
    open_database(state);
    state.clear_error_counters();
    const bool after = label_after(state);
    return with_retry(state, procedure, [&] { return read_recipient_label(state.global_db, name, after); });
}

QList<PresetListRow> preset_list_rows(AppState& state, const PresetTable& table, const QString& procedure)
{
    open_database(state);
    state.clear_error_counters();
    const bool after = label_after(state);
    return with_retry(state, procedure, [&] {
        QList<PresetListRow> rows;
        for (int number = 1; number <= kPresetCount; ++number) {
            const Preset& preset = table.at(number);
            const QString label =
                preset.recipient.isEmpty() ? QString() : read_recipient_label(state.global_db, preset.recipient, after);
            rows.append({number, preset.description, label, preset.message});
        }
        return rows;
    });
}

void apply_preset_form(AppState& state, PresetTable& table, int number, const PresetEntry& entry)
{
    PresetEntry cleaned = entry;
    cleaned.message = clean_preset_text(entry.message);
    store_entry(state, table, number, cleaned, u"Procedure: preset_form apply"_s);
}

void apply_preset_edit(AppState& state, PresetTable& table, int number, const PresetEntry& entry)
{
    store_entry(state, table, number, entry, u"Procedure: frmEditMorePresets btnAccept"_s);
}

QString quotes_to_apostrophes(const QString& text)
{
    QString result = text;
    return result.replace(u'"', u'\'');
}

} // namespace cvd::addressbook
