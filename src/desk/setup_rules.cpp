#include "desk/setup_rules.h"

#include "addressbook/presets.h"
#include "core/app_state.h"
#include "core/setting_keys.h"
#include "core/text.h"
#include "desk/send_form_rules.h"

#include <QRegularExpression>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace cvd::desk {

namespace {

// The settings of the setup dialogs that no other part of the console reads by name.
namespace setup_keys {
constexpr SettingKey sender{u"connector", u"sender"};
constexpr SettingKey sender_email{u"connector", u"sender_email"};
constexpr SettingKey log_length{u"logging", u"length"};
constexpr SettingKey log_archive{u"logging", u"archive"};
constexpr SettingKey log_level{u"logging", u"level"};
constexpr SettingKey port{u"connector", u"port"};
constexpr SettingKey dial_prefix{u"connector", u"dial_prefix"};
constexpr SettingKey retries{u"connector", u"retries"};
constexpr SettingKey extra1_label{u"display", u"extra1_label"};
constexpr SettingKey extra2_label{u"display", u"extra2_label"};
} // namespace setup_keys

constexpr std::array<LevelSwitchRow, kLevelSwitchCount> kLevelRows{{
    {u"Sender", "optSenderUser", "optSenderGlobal", {u"level", u"user_sender"}},
    {u"Sender email", "optSenderEmailUser", "optSenderEmailGlobal", {u"level", u"user_sender_email"}},
    {u"Presets", "optPresetsUser", "optPresetsGlobal", {u"level", u"user_presets"}},
    {u"Spell check", "optSpellCheckUser", "optSpellCheckGlobal", {u"level", u"user_spell_check"}},
    {u"Clear on send", "optClearOnSendUser", "optClearOnSendGlobal", {u"level", u"user_clear_on_send"}},
    {u"Warning popup", "optWarningPopupUser", "optWarningPopupGlobal", {u"level", u"user_warning_popup"}},
    {u"Small font", "optSmallFontUser", "optSmallFontGlobal", {u"level", u"user_small_font"}},
    {u"Group label after", "optGroupLabelAfterUser", "optGroupLabelAfterGlobal", {u"level", u"user_group_label_after"}},
    {u"Minimize to taskbar",
     "optMinimizeToTaskbarUser",
     "optMinimizeToTaskbarGlobal",
     {u"level", u"user_minimize_to_taskbar"}},
    {u"Remove presets", "optRemovePresetsUser", "optRemovePresetsGlobal", {u"level", u"user_remove_presets"}},
    {u"Remove options", "optRemoveOptionsUser", "optRemoveOptionsGlobal", {u"level", u"user_remove_options"}},
    {u"Remove logs", "optRemoveLogsUser", "optRemoveLogsGlobal", {u"level", u"user_remove_logs"}},
    {u"Remove reports", "optRemoveReportsUser", "optRemoveReportsGlobal", {u"level", u"user_remove_reports"}},
}};

constexpr std::size_t kPresetsRow = 2;

bool flag(SettingsStore& settings, SettingKey key)
{
    return settings.get_setting_flag(key) != 0;
}

bool valid_port(const QString& text)
{
    static const QRegularExpression digits(u"^[0-9]{1,5}$"_s);
    return digits.match(text).hasMatch() && text.toInt() >= 1 && text.toInt() <= 65535;
}

bool valid_host(const QString& host)
{
    static const QRegularExpression name(u"^[A-Za-z0-9._-]+$"_s);
    return name.match(host).hasMatch();
}

// Empty, "host", "host:port", a bare IPv6 address, or "[IPv6]" with an optional ":port".
bool valid_endpoint(const QString& text)
{
    const QString endpoint = text.trimmed();
    if (endpoint.isEmpty()) {
        return true;
    }
    if (endpoint.startsWith(u'[')) {
        static const QRegularExpression bracketed(u"^\\[([0-9A-Fa-f:.]+)\\](?::([^:]*))?$"_s);
        const QRegularExpressionMatch match = bracketed.match(endpoint);
        return match.hasMatch() && (!match.hasCaptured(2) || valid_port(match.captured(2)));
    }
    if (endpoint.count(u':') > 1) {
        static const QRegularExpression address(u"^[0-9A-Fa-f:.]+$"_s);
        return address.match(endpoint).hasMatch();
    }
    const qsizetype colon = endpoint.indexOf(u':');
    if (colon < 0) {
        return valid_host(endpoint);
    }
    return valid_host(endpoint.left(colon)) && valid_port(endpoint.mid(colon + 1));
}

} // namespace

qint32 clamp_number(const QString& text, NumberRange range)
{
    static const QRegularExpression whole(u"^[+-]?[0-9]+$"_s);
    const QString trimmed = text.trimmed();
    qint64 value = 0;
    if (whole.match(trimmed).hasMatch()) {
        bool ok = false;
        value = trimmed.toLongLong(&ok);
        if (!ok) { // more digits than any setting holds: the nearer limit
            value = trimmed.startsWith(u'-') ? range.low : range.high;
        }
    }
    return static_cast<qint32>(std::clamp<qint64>(value, range.low, range.high));
}

QString clamp_number_text(const QString& text, NumberRange range)
{
    return QString::number(clamp_number(text, range));
}

QString cut_box_text(const QString& text, qsizetype limit, bool trimmed)
{
    return cut_to(trimmed ? trim_blanks(text) : text, limit);
}

const QStringList& log_level_names()
{
    static const QStringList names{u"Summary"_s, u"Detail"_s, u"Debug"_s};
    return names;
}

GeneralSetup read_general_setup(SettingsStore& settings)
{
    GeneralSetup values;
    values.sender = settings.get_setting_text(setup_keys::sender);
    values.sender_email = settings.get_setting_text(setup_keys::sender_email);
    values.spell_check = flag(settings, keys::spell_check);
    values.log_length = settings.get_setting_text(setup_keys::log_length);
    values.archive_logs = flag(settings, setup_keys::log_archive);
    values.log_level =
        std::clamp(settings.get_setting_long(setup_keys::log_level), 0, static_cast<int>(log_level_names().size()) - 1);
    values.purge_after = settings.get_setting_text(setting_keys::database::purge_after);
    return values;
}

void store_general_setup(SettingsStore& settings, const GeneralSetup& values)
{
    // The box as it reads when left, then trimmed.
    settings.put_setting(setup_keys::sender, trim_blanks(cut_box_text(values.sender, kSenderLength, false)));
    settings.put_setting(setup_keys::sender_email,
                         trim_blanks(cut_box_text(values.sender_email, kSenderLength, false)));
    settings.put_setting(keys::spell_check, values.spell_check);
    settings.put_setting(setup_keys::log_length, clamp_number(values.log_length, kLogLengthRange));
    settings.put_setting(setup_keys::log_archive, values.archive_logs);
    settings.put_setting(setup_keys::log_level,
                         std::clamp(values.log_level, 0, static_cast<int>(log_level_names().size()) - 1));
    settings.put_setting(setting_keys::database::purge_after, clamp_number(values.purge_after, kPurgeAfterRange));
}

ModemSetup read_modem_setup(SettingsStore& settings)
{
    ModemSetup values;
    const qint32 port = settings.get_setting_long(setup_keys::port);
    values.port = port >= 0 && port < kModemPortCount ? port : 0;
    values.dial_prefix = settings.get_setting_text(setup_keys::dial_prefix);
    values.retries = settings.get_setting_text(setup_keys::retries);
    values.retry_interval = settings.get_setting_text(setting_keys::connector::retry_interval);
    values.scan_smtp_host = settings.get_setting_text(setting_keys::connector::scan_smtp_host);
    values.scan_wctp_host = settings.get_setting_text(setting_keys::connector::scan_wctp_host);
    values.scan_snpp_host = settings.get_setting_text(setting_keys::connector::scan_snpp_host);
    return values;
}

std::optional<Notice> modem_setup_refusal(const ModemSetup& values)
{
    const std::pair<const char16_t*, const QString*> endpoints[] = {
        {u"SMTP", &values.scan_smtp_host}, {u"WCTP", &values.scan_wctp_host}, {u"SNPP", &values.scan_snpp_host}};
    for (const auto& [protocol, text] : endpoints) {
        if (!valid_endpoint(*text)) {
            return Notice{u"The %1 endpoint \"%2\" is not a host name or host:port (port 1 to 65535)."_s.arg(
                              QString::fromUtf16(protocol), text->trimmed()),
                          u"Connection Settings"_s, BoxIcon::Warning};
        }
    }
    return std::nullopt;
}

void store_modem_setup(SettingsStore& settings, const ModemSetup& values)
{
    settings.put_setting(setup_keys::port, QString::number(std::clamp(values.port, 0, kModemPortCount - 1)));
    settings.put_setting(setup_keys::dial_prefix, cut_box_text(values.dial_prefix, kDialPrefixLength, false));
    settings.put_setting(setup_keys::retries, clamp_number(values.retries, kRetriesRange));
    settings.put_setting(setting_keys::connector::retry_interval,
                         clamp_number(values.retry_interval, kRetryIntervalRange));
    settings.put_setting(setting_keys::connector::scan_smtp_host, values.scan_smtp_host.trimmed());
    settings.put_setting(setting_keys::connector::scan_wctp_host, values.scan_wctp_host.trimmed());
    settings.put_setting(setting_keys::connector::scan_snpp_host, values.scan_snpp_host.trimmed());
}

DisplayOptions read_display_options(SettingsStore& settings)
{
    DisplayOptions values;
    values.max_msg_length = settings.get_setting_text(keys::max_msg_length);
    values.clear_on_send = flag(settings, keys::clear_on_send);
    values.warning_popup = flag(settings, setting_keys::display::warning_popup);
    values.remove_presets = flag(settings, keys::remove_presets);
    values.remove_options = flag(settings, keys::remove_options);
    values.remove_logs = flag(settings, keys::remove_logs);
    values.remove_reports = flag(settings, keys::remove_reports);
    values.group_label_after = flag(settings, keys::group_label_after);
    values.minimize_to_taskbar = flag(settings, keys::minimize_to_taskbar);
    values.small_font = flag(settings, keys::small_font);
    values.extra1_label = settings.get_setting_text(setup_keys::extra1_label);
    values.extra2_label = settings.get_setting_text(setup_keys::extra2_label);
    return values;
}

void store_display_options(SettingsStore& settings, const DisplayOptions& values)
{
    settings.put_setting(keys::max_msg_length, clamp_number(values.max_msg_length, kMaxMessageRange));
    settings.put_setting(keys::clear_on_send, values.clear_on_send);
    settings.put_setting(setting_keys::display::warning_popup, values.warning_popup);
    settings.put_setting(keys::remove_presets, values.remove_presets);
    settings.put_setting(keys::remove_options, values.remove_options);
    settings.put_setting(keys::remove_logs, values.remove_logs);
    settings.put_setting(keys::remove_reports, values.remove_reports);
    settings.put_setting(keys::group_label_after, values.group_label_after);
    settings.put_setting(keys::minimize_to_taskbar, values.minimize_to_taskbar);
    settings.put_setting(keys::small_font, values.small_font);
    settings.put_setting(setup_keys::extra1_label, cut_box_text(values.extra1_label, kCommentLabelLength, true));
    settings.put_setting(setup_keys::extra2_label, cut_box_text(values.extra2_label, kCommentLabelLength, true));
}

const std::array<LevelSwitchRow, kLevelSwitchCount>& level_switch_rows()
{
    return kLevelRows;
}

LevelSwitches read_level_switches(SettingsStore& settings)
{
    LevelSwitches values{};
    for (std::size_t i = 0; i < kLevelSwitchCount; ++i) {
        values.at(i) = flag(settings, kLevelRows.at(i).key);
    }
    return values;
}

bool store_level_switches(AppState& state, addressbook::PresetTable& presets, const LevelSwitches& values)
{
    SettingsStore& settings = state.settings;
    const bool presets_changed = values.at(kPresetsRow) != flag(settings, kLevelRows.at(kPresetsRow).key);
    if (presets_changed) {
        settings.put_setting(kLevelRows.at(kPresetsRow).key, values.at(kPresetsRow));
        addressbook::load_presets(state, presets);
    }
    for (std::size_t i = 0; i < kLevelSwitchCount; ++i) {
        if (i != kPresetsRow) {
            settings.put_setting(kLevelRows.at(i).key, values.at(i));
        }
    }
    return presets_changed;
}

bool opens_program_settings(int key, bool control, bool alt)
{
    return control && alt && key == Qt::Key_S;
}

QString setting_name_text(const QString& text)
{
    return trim_blanks(text).toLower();
}

} // namespace cvd::desk
