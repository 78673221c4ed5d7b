#include "core/conversions.h"

#include "core/app_state.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "core/file_ops.h"
#include "core/prompter.h"
#include "core/record_format.h"
#include "core/setting_keys.h"
#include "core/text.h"
#include "platform/files.h"
#include "store/maintenance.h"

#include <functional>

using namespace Qt::StringLiterals;

namespace cvd {

namespace {

constexpr int kOldestConvertible = 300;
constexpr int kOldPresetLimit = 100;

// The conversions that have a box of their own end the program with it; the two small ones go through the
// common error path instead.
bool run_with_box(AppState& state, const QString& name, const std::function<void()>& conversion)
{
    try {
        conversion();
        return true;
    } catch (const store::Error& error) {
        state.prompter.show_box({u"Error #"_s + QString::number(error.code()) + u"  "_s + error.message(),
                                 u"CVD Fatal Error - "_s + name, BoxIcon::Critical});
        return false;
    }
}

void run_with_retry(AppState& state, const QString& name, const std::function<void()>& conversion)
{
    with_retry(state, u"Procedure: "_s + name, conversion);
}

QString yes_no_text(const std::optional<QString>& value)
{
    return value.value_or(QString()).trimmed().toLower() == u"true" ? u"-1"_s : u"0"_s;
}

QString field_text(const Record& record, qsizetype index)
{
    if (index >= record.size() || record.at(index).kind == Field::Kind::Hashed) {
        return {};
    }
    return record.at(index).text;
}

} // namespace

QString conversion_backup_path(const QString& database_path, int version)
{
    return database_path + u".v"_s + QString::number(version) + u".bak"_s;
}

void ConversionBackup::ensure(AppState& state, int version)
{
    if (!m_path.isEmpty()) {
        return;
    }
    const QString target = conversion_backup_path(global_db_path(state), version);
    const QString part = target + u".part"_s;
    with_retry(state, u"Procedure: main"_s, [&] {
        platform::remove_file(part);
        store::backup_to(state.global_db, part);
        const platform::FileResult moved = platform::rename_file(part, target);
        if (!moved.ok) {
            throw FileError(moved.error);
        }
    });
    m_path = target;
}

ConversionStatus upgrade_old_layout(AppState& state, ConversionBackup& backup)
{
    const QString procedure = u"Procedure: main"_s;
    if (!with_retry(state, procedure, [&] { return store::has_version_column(state.global_db); })) {
        return ConversionStatus::Done;
    }
    const int version =
        with_retry(state, procedure, [&] { return store::version_column_value(state.global_db).value_or(0); });
    if (version < kOldestConvertible) {
        state.prompter.show_box(
            {u"The existing database is too old to upgrade."_s, u"Can't Upgrade Database"_s, BoxIcon::Critical});
        return ConversionStatus::Refused;
    }
    store::Database& db = state.global_db;
    if (version < 500) {
        backup.ensure(state, version);
    }
    if (version < 301) {
        run_with_retry(state, u"convert300to301"_s, [&] { store::convert300to301(db); });
    }
    if (version < 302) {
        run_with_retry(state, u"convert301to302"_s, [&] { store::convert301to302(db); });
    }
    if (version < 500) {
        const store::LegacyInputs inputs = read_legacy_inputs(state);
        if (!run_with_box(state, u"convert302to500"_s, [&] { store::convert302to500(db, inputs); })) {
            return ConversionStatus::Failed;
        }
    }
    // A file that still keeps its version in a column was not one the conversions know.
    if (with_retry(state, procedure, [&] { return store::has_version_column(db); })) {
        return ConversionStatus::Refused;
    }
    // Now of the layouts this program shares with other processes.
    with_retry(state, procedure, [&] { db.enable_wal(); });
    return ConversionStatus::Done;
}

ConversionStatus upgrade_to_current(AppState& state, ConversionBackup& backup)
{
    backup.ensure(state, state.settings.get_setting_long(setting_keys::database::version));
    if (!run_with_box(state, u"convert500to501"_s, [&] { store::convert500to501(state.global_db); })) {
        return ConversionStatus::Failed;
    }
    state.settings.put_setting(setting_keys::database::version, u"501"_s);
    save_settings(state);
    return ConversionStatus::Done;
}

store::LegacyInputs read_legacy_inputs(AppState& state)
{
    const QString key = QLatin1StringView(kProgramKey);
    const QString window_key = key + u"\\Window"_s;
    const platform::Registry& registry = state.registry;
    const bool machine_wide = yes_no_text(registry.read_text(platform::Hive::CurrentUser, key, u"Here"_s)) == u"-1"_s;
    const platform::Hive hive = machine_wide ? platform::Hive::LocalMachine : platform::Hive::CurrentUser;
    const auto text = [&](const QString& from_key, const QString& name) {
        return registry.read_text(hive, from_key, name);
    };

    store::LegacyInputs inputs;
    inputs.sender = text(key, u"Sender"_s).value_or(QString());
    const std::pair<const char*, const char*> switches[] = {
        {"spell_check", "SpellCheck"},
        {"clear_on_send", "ClearOnSend"},
        {"warning_popup", "WarningPopup"},
        {"small_font", "SmallFont"},
        {"max_msg_length", "MaxMsgLength"},
        {"remove_presets", "RemovePresets"},
        {"remove_options", "RemoveOptions"},
        {"remove_logs", "RemoveLogs"},
        {"remove_reports", "RemoveReports"},
        {"group_label_after", "GroupLabelAfter"},
        {"minimize_to_taskbar", "MinimizeToTaskBar"},
    };
    for (const auto& [setting, value_name] : switches) {
        const std::optional<QString> value = text(key, QString::fromLatin1(value_name));
        const bool is_number = qstrcmp(setting, "max_msg_length") == 0;
        inputs.display.append(
            {QString::fromLatin1(setting),
             is_number ? QString::number(to_int32(numeric_prefix(value.value_or(QString())))) : yes_no_text(value)});
    }
    inputs.display.append({u"connection_monitor_visible"_s, yes_no_text(text(window_key, u"CMVisible"_s))});
    inputs.debug_log_present = isfile(state.program_folder + u"modem.dbg"_s);
    const QString preset_file = text(window_key, u"PresetFile"_s).value_or(QString()).trimmed();
    if (isfile(preset_file)) {
        inputs.presets = read_old_preset_file(preset_file);
    }
    return inputs;
}

std::optional<QList<store::OldPreset>> read_old_preset_file(const QString& path)
{
    const std::optional<QByteArray> bytes = platform::read_file_bytes(path);
    if (!bytes) {
        return std::nullopt;
    }
    const ParsedFile parsed = parse_records(platform::text_from_bytes(*bytes));
    QList<store::OldPreset> presets;
    for (const Record& record : parsed.records) {
        if (presets.size() == kOldPresetLimit) {
            break;
        }
        presets.append({field_text(record, 0), field_text(record, 1), field_text(record, 2)});
    }
    return presets;
}

} // namespace cvd
