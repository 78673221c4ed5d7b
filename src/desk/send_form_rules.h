#pragma once

#include "core/prompter.h"
#include "core/settings.h"

#include <QRect>
#include <QString>
#include <QStringList>
#include <array>
#include <optional>

namespace cvd {
class SettingsStore;
}

namespace cvd::desk {

// The display settings the send window reads and writes by name.
namespace keys {
inline constexpr SettingKey group_label_after{u"display", u"group_label_after"};
inline constexpr SettingKey small_font{u"display", u"small_font"};
inline constexpr SettingKey remove_presets{u"display", u"remove_presets"};
inline constexpr SettingKey remove_options{u"display", u"remove_options"};
inline constexpr SettingKey remove_logs{u"display", u"remove_logs"};
inline constexpr SettingKey remove_reports{u"display", u"remove_reports"};
inline constexpr SettingKey clear_on_send{u"display", u"clear_on_send"};
inline constexpr SettingKey spell_check{u"display", u"spell_check"};
inline constexpr SettingKey minimize_to_taskbar{u"display", u"minimize_to_taskbar"};
inline constexpr SettingKey max_msg_length{u"display", u"max_msg_length"};
inline constexpr SettingKey monitor_visible{u"display", u"connection_monitor_visible"};
} // namespace keys

// The geometry prefixes of the send window and the activity monitor.
inline const QString kSendFormPrefix = QStringLiteral("send_form_");
inline const QString kMonitorPrefix = QStringLiteral("connection_monitor_");

// What the display settings hide on the send window.
struct HiddenControls
{
    bool presets = false;  // the program buttons, More and the menu entry presets
    bool schedule = false; // tbrSchedule
    bool logs = false;     // the folder and log entries of the View menu
    bool reports = false;  // the Reports menu

    bool operator==(const HiddenControls&) const = default;
};
HiddenControls hidden_controls(SettingsStore& settings);

// The question before the window closes: asked unless the pending panel reads exactly "Pend: 0".
std::optional<Notice> closing_question(const QString& pending_panel_text);

// The boxes the send window shows itself.
Notice not_programmed_notice();
Notice spell_check_disabled_notice();
// The imports and export of other products' files, which this edition does not carry.
Notice not_in_this_edition_notice(const QString& caption);

// The captions SEND runs through to show that it was pressed, each held for kSendFramePauseMs, then "SEND".
inline constexpr int kSendFramePauseMs = 30;
const QStringList& send_caption_frames();

// A guarded menu entry: the level it needs (0 maintenance, 1 setup) and the prompt of the password box.
struct LevelGuard
{
    int mode = 0;
    QString prompt;
};
// The guard of a menu entry by its name, nullopt for an entry without one.
std::optional<LevelGuard> menu_guard(const QString& entry);

// Window arithmetic, all in twips.
inline constexpr int kMinimumWidth = 6800;
inline constexpr int kMinimumHeight = 6000;
inline constexpr int kFirstRunWidth = 6345;
inline constexpr int kFirstRunHeight = 5300;
inline constexpr int kFirstRunShiftLeft = 1200;

// The message box is taller when the program buttons are hidden: it takes their room.
int message_height(bool presets_hidden);

// Where each control of the composition area goes inside a client area of the given size (raised to the
// window's minimum first). Both lists share the free height; the program buttons share the width evenly.
struct SendFormLayout
{
    QRect recipients_heading; // Label2
    QRect unpicked;
    QRect picked_heading; // Label3
    QRect clear_recipients;
    QRect picked;
    QRect message_heading; // Label1
    QRect clear_message;
    QRect schedule;
    QRect count; // lblCC and cc, flush with the message's right edge
    QRect message;
    QRect send;
    std::array<QRect, 6> program_buttons; // btnProg1 to btnProg5, btnProgMore
};
SendFormLayout send_form_layout(int width, int height, bool presets_hidden);

// The monitor's place on the first run: beside the send window on its right, as high as it, 4000 wide,
// shown and scrolling. Written into the display settings.
void write_first_run_monitor_settings(SettingsStore& settings, int top, int left, int width, int height);

} // namespace cvd::desk
