#include "desk/send_form_rules.h"

#include "core/settings.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace cvd::desk {

namespace {

// The layout's fixed measures, in twips.
constexpr int kMargin = 120;
constexpr int kGap = 60;
constexpr int kRowHeight = 330; // a heading row, as high as its one-button toolbars
constexpr int kToolButton = 330;
constexpr int kHeadingWidth = 1500;
constexpr int kCountWidth = 1500;
constexpr int kSendWidth = 1215;
constexpr int kProgramRow = 360;
constexpr int kTallMessage = 1575;
constexpr int kShortMessage = 1215;
constexpr int kMonitorWidth = 4000;
constexpr int kMonitorGap = 20;

struct GuardRow
{
    const char16_t* entry;
    int mode;
    const char16_t* prompt;
};

constexpr const char16_t* kSetupPrompt = u"A password is required for the setup screens";
constexpr const char16_t* kImportPrompt = u"A password is required to import data";

constexpr GuardRow kGuards[] = {
    {u"import_ostrel32", 0, kImportPrompt},
    {u"import_tollmast", 0, kImportPrompt},
    {u"import_text", 0, kImportPrompt},
    {u"export_text", 0, u"A password is required to export data"},
    {u"setup_general", 1, kSetupPrompt},
    {u"setup_modem", 1, kSetupPrompt},
    {u"setup_display", 1, kSetupPrompt},
    {u"setup_passwords", 1, kSetupPrompt},
    {u"setup_user_global", 1, kSetupPrompt},
    {u"carriers_add", 0, u"A password is required to add carriers"},
    {u"carriers_edit", 0, u"A password is required to edit carriers"},
    {u"carriers_delete", 0, u"A password is required to delete carriers"},
    {u"recipients_add", 0, u"A password is required to add recipients"},
    {u"recipients_edit", 0, u"A password is required to edit recipients"},
    {u"recipients_delete", 0, u"A password is required to delete recipients"},
    {u"groups_add", 0, u"A password is required to add groups"},
    {u"groups_edit", 0, u"A password is required to edit groups"},
    {u"groups_delete", 0, u"A password is required to delete groups"},
    {u"groups_members", 0, u"A password is required to edit groups"},
};

bool flag(SettingsStore& settings, SettingKey key)
{
    return settings.get_setting_flag(key) != 0;
}

} // namespace

HiddenControls hidden_controls(SettingsStore& settings)
{
    return {flag(settings, keys::remove_presets), flag(settings, keys::remove_options),
            flag(settings, keys::remove_logs), flag(settings, keys::remove_reports)};
}

std::optional<Notice> closing_question(const QString& pending_panel_text)
{
    // The whole text is compared on purpose: a panel not yet filled asks as well.
    if (pending_panel_text == u"Pend: 0"_s) {
        return std::nullopt;
    }
    return Notice{u"Messages are still pending.  Are you sure you want to quit?"_s, u"Quit While Sending?"_s,
                  BoxIcon::Question, BoxButtons::YesNo};
}

Notice not_programmed_notice()
{
    return {u"This Programmable button is empty.  To program it with text, right-click on this button, click on "
            u"the 'More' button, or choose 'Presets' from the 'Tools' menu."_s,
            u"Not Programmed"_s};
}

Notice spell_check_disabled_notice()
{
    return {u"Spell checking is not enabled.  To use spell checking, you must have a spelling dictionary installed "
            u"on this computer, and the spell checkig option must be enabled on the General Settings screen "
            u"(Tools -> Settings -> General -> Enable Spell Check)"_s,
            u"Spell Checking Not Enabled"_s};
}

Notice not_in_this_edition_notice(const QString& caption)
{
    return {u"\""_s + caption + u"\" is not part of this edition of Corvane Desk."_s, u"Not Available"_s};
}

const QStringList& send_caption_frames()
{
    static const QStringList frames{u"  SEN"_s,    u"    SE"_s,  u"      S"_s, u"D     S"_s,
                                    u"ND      "_s, u"END    "_s, u"SEND"_s};
    return frames;
}

std::optional<LevelGuard> menu_guard(const QString& entry)
{
    for (const GuardRow& row : kGuards) {
        if (entry == QStringView(row.entry)) {
            return LevelGuard{row.mode, QString::fromUtf16(row.prompt)};
        }
    }
    return std::nullopt;
}

int message_height(bool presets_hidden)
{
    return presets_hidden ? kTallMessage : kShortMessage;
}

SendFormLayout send_form_layout(int width, int height, bool presets_hidden)
{
    SendFormLayout layout;
    const int column = std::max((width - 3 * kMargin) / 2, 0);
    const int right_x = 2 * kMargin + column;
    const int message_h = message_height(presets_hidden);
    const int below_lists = kGap + kRowHeight + message_h + (presets_hidden ? 0 : kGap + kProgramRow) + kMargin;
    const int list_h = std::max(height - kMargin - kRowHeight - below_lists, 0);

    layout.recipients_heading = {kMargin, kMargin, column, kRowHeight};
    layout.picked_heading = {right_x, kMargin, std::max(column - kToolButton - kGap, 0), kRowHeight};
    layout.clear_recipients = {right_x + column - kToolButton, kMargin, kToolButton, kToolButton};
    layout.unpicked = {kMargin, kMargin + kRowHeight, column, list_h};
    layout.picked = {right_x, kMargin + kRowHeight, column, list_h};

    const int heading_y = layout.unpicked.bottom() + 1 + kGap;
    const int message_y = heading_y + kRowHeight;
    const int message_w = std::max(width - 2 * kMargin - kGap - kSendWidth, 0);
    layout.message_heading = {kMargin, heading_y, kHeadingWidth, kRowHeight};
    layout.clear_message = {kMargin + kHeadingWidth, heading_y, kToolButton, kToolButton};
    layout.schedule = {kMargin + kHeadingWidth + kToolButton + kGap, heading_y, kToolButton, kToolButton};
    layout.message = {kMargin, message_y, message_w, message_h};
    layout.count = {kMargin + message_w - kCountWidth, heading_y, kCountWidth, kRowHeight};
    layout.send = {width - kMargin - kSendWidth, message_y, kSendWidth, message_h};

    const int buttons_y = message_y + message_h + kGap;
    const int button_w = std::max((width - 2 * kMargin - 5 * kGap) / 6, 0);
    for (int i = 0; i < 6; ++i) {
        layout.program_buttons.at(static_cast<std::size_t>(i)) = {kMargin + i * (button_w + kGap), buttons_y, button_w,
                                                                  kProgramRow};
    }
    return layout;
}

void write_first_run_monitor_settings(SettingsStore& settings, int top, int left, int width, int height)
{
    const auto put = [&](const QString& name, const QVariant& value) {
        const QString key = kMonitorPrefix + name;
        settings.put_setting({u"display", key}, value);
    };
    put(u"top"_s, top);
    put(u"left"_s, left + width + kMonitorGap);
    put(u"height"_s, height);
    put(u"width"_s, kMonitorWidth);
    put(u"visible"_s, true);
    put(u"scroll"_s, true);
}

} // namespace cvd::desk
