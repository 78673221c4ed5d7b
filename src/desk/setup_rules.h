#pragma once

#include "core/prompter.h"
#include "core/settings.h"

#include <QString>
#include <QStringList>
#include <array>
#include <limits>
#include <optional>

namespace cvd {
struct AppState;
}

namespace cvd::addressbook {
class PresetTable;
}

// What the setup dialogs show and store: the clamps a box gets when it is left, and each Apply's writes in
// their order. The dialogs only move values between their controls and these functions.
namespace cvd::desk {

// The range a number box is kept inside when it is left.
struct NumberRange
{
    qint32 low = 0;
    qint32 high = std::numeric_limits<qint32>::max();
};

// Texts cut when their box is left.
inline constexpr qsizetype kSenderLength = 80;
inline constexpr qsizetype kDialPrefixLength = 40;
inline constexpr qsizetype kCommentLabelLength = 20;

// The number boxes. The log length and the purge days have no upper limit of their own; they stop at the
// largest whole number a setting holds.
inline constexpr NumberRange kLogLengthRange{0, std::numeric_limits<qint32>::max()};
inline constexpr NumberRange kPurgeAfterRange{1, std::numeric_limits<qint32>::max()};
inline constexpr NumberRange kRetriesRange{0, 32000};
inline constexpr NumberRange kRetryIntervalRange{1, 32000};
inline constexpr NumberRange kMaxMessageRange{10, 6000};

// A number box as it reads when left: the trimmed text as a whole number kept inside the range. Text that is
// not a whole number (empty, letters, a fraction, too large to hold) reads as 0 before the range applies.
qint32 clamp_number(const QString& text, NumberRange range);
QString clamp_number_text(const QString& text, NumberRange range);
// A text box as it reads when left: cut to `limit` characters, optionally trimmed of blanks first.
QString cut_box_text(const QString& text, qsizetype limit, bool trimmed);

// "General Setup".
struct GeneralSetup
{
    QString sender;
    QString sender_email;
    bool spell_check = false;
    QString log_length;
    bool archive_logs = false;
    int log_level = 0; // 0 "Summary", 1 "Detail", 2 "Debug"
    QString purge_after;

    bool operator==(const GeneralSetup&) const = default;
};
const QStringList& log_level_names();
GeneralSetup read_general_setup(SettingsStore& settings);
// Puts sender, sender_email, spell_check, length, archive, level and purge_after, in that order, each as its
// box reads when left (the texts also trimmed).
void store_general_setup(SettingsStore& settings, const GeneralSetup& values);

// "Connection Settings", with the endpoints the port scan tries.
inline constexpr int kModemPortCount = 17; // the list "0" to "16"
struct ModemSetup
{
    int port = 0;
    QString dial_prefix;
    QString retries;
    QString retry_interval;
    QString scan_smtp_host;
    QString scan_wctp_host;
    QString scan_snpp_host;

    bool operator==(const ModemSetup&) const = default;
};
ModemSetup read_modem_setup(SettingsStore& settings);
// The refusal when an endpoint is neither empty, "host" nor "host:port" with a port from 1 to 65535; nothing
// is stored then.
std::optional<Notice> modem_setup_refusal(const ModemSetup& values);
// Puts port, dial_prefix, retries, retry_interval, in that order, then the three endpoints (trimmed).
void store_modem_setup(SettingsStore& settings, const ModemSetup& values);

// "Display Setup".
struct DisplayOptions
{
    QString max_msg_length;
    bool clear_on_send = false;
    bool warning_popup = false;
    bool remove_presets = false;
    bool remove_options = false;
    bool remove_logs = false;
    bool remove_reports = false;
    bool group_label_after = false;
    bool minimize_to_taskbar = false;
    bool small_font = false;
    QString extra1_label;
    QString extra2_label;

    bool operator==(const DisplayOptions&) const = default;
};
DisplayOptions read_display_options(SettingsStore& settings);
// Puts max_msg_length, clear_on_send, warning_popup, the four remove switches, group_label_after,
// minimize_to_taskbar, then small_font, then both comment labels: the order in which the send window takes
// them up.
void store_display_options(SettingsStore& settings, const DisplayOptions& values);

// "User/Global Settings": the settings that may be kept per user, in their order on the screen.
struct LevelSwitchRow
{
    const char16_t* label;
    const char* user_option;
    const char* global_option;
    SettingKey key;
};
inline constexpr std::size_t kLevelSwitchCount = 13;
const std::array<LevelSwitchRow, kLevelSwitchCount>& level_switch_rows();
using LevelSwitches = std::array<bool, kLevelSwitchCount>; // true: kept per user

LevelSwitches read_level_switches(SettingsStore& settings);
// Writes the presets switch first, and only when it changed, then loads the presets again from the database
// now in force; then the twelve other switches in screen order. Nothing is saved here. True when the presets
// were loaded again.
bool store_level_switches(AppState& state, addressbook::PresetTable& presets, const LevelSwitches& values);

// "Program Settings": opened from "General Setup" by S (either case) with Ctrl and Alt held.
bool opens_program_settings(int key, bool control, bool alt);
// A category or name as it reads while typed or when left.
QString setting_name_text(const QString& text);

} // namespace cvd::desk
