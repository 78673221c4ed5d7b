#pragma once

#include "addressbook/pickers.h"
#include "addressbook/presets.h"
#include "console/window_catalog.h"
#include "queue/schedule_selection.h"

#include <QList>
#include <QString>
#include <functional>
#include <optional>

class QPrinter;
class QWidget;

namespace cvd {
struct AppState;
class Prompter;
} // namespace cvd

namespace cvd::console {

class ActivityLog;
class WindowOwner;

// The choices one window leaves for another, kept here instead of in widgets.
struct ConsoleState
{
    // frmInfo: filter role instead of details; the entry's key; a group's label without its mark.
    bool info_filter = false;
    QString info_key;
    QString info_group_label;

    // The preset in work, and the presets 1 to 100 held for the whole run.
    int preset_number = 0;
    addressbook::PresetTable presets;

    queue::ScheduleSelection schedule;

    // The name chosen in one window for the next (list_groups, the group and roster windows, the pickers).
    QString selected_name;
    // The roster window was opened from add_group (true) or edit_group (false).
    bool oncall_from_add = false;
    // frmMessageDetail: the window that asked (1 sched_form, 2 pending_form, 3 sent_form, 4 bad_form, 5 log_form)
    // and the cv_message_id of the row it showed selected.
    int detail_source = 0;
    qint64 detail_message_id = 0;
    // frmFind: the log it searches, 1 modem_log_form, 2 log_form.
    int find_target = 0;
    // The report a menu entry asked for (1 to 23 frmReports, 31 to 33 frmRecipientList).
    int report_type = 0;
    // The printer dialog of the reports: sets up the printer and says whether to go on. Left empty, the
    // console shows its print dialog; tests put their own answer here.
    std::function<bool(QPrinter& printer, QWidget* parent)> choose_printer;
};

// What the other windows ask of the send window, without including it.
class SendFormPort
{
public:
    virtual ~SendFormPort() = default;

    // The window itself: owner of modal dialogs and the one they centre on.
    virtual QWidget& window() = 0;
    // Rebuilds both pick lists from the recipients table, so that nothing stays chosen.
    virtual void show_users() = 0;
    // The filter's result replaces the unpicked list.
    virtual void fill_unpicked(const QList<addressbook::PickerEntry>& entries) = 0;
    // A preset used as a left click on its program button does: its recipient picked, its text into the message.
    virtual void use_preset(const addressbook::Preset& preset) = 0;
    // The captions of the five program buttons from presets 1 to 5.
    virtual void update_prog_captions() = 0;
    // The activity monitor was closed by the operator: the menu's check mark goes.
    virtual void monitor_closed() = 0;
    // The counters again, now, as the closing of the failure warning asks.
    virtual void update_counters() = 0;
    // A stored message loaded for sending anew (Copy and Edit of the folders and the history): the lists are
    // rebuilt, every unpicked entry whose name is `recipient` is picked, and `text` becomes the message. False,
    // with the message left alone, when the rebuilt unpicked list is empty.
    virtual bool load_message(const QString& recipient, const QString& text) = 0;
    // The display settings again, at once: the message's length limit, the lists' font and what the settings
    // hide. The lists themselves are rebuilt by show_users.
    virtual void apply_display_options() = 0;
    // The operator has just changed the counts (a cancel in the pending folder): the next count raises no
    // failure warning for it.
    virtual void note_counters_changed() = 0;
};

// The send window's doors to the other windows. The session fills them in, so that no window includes
// another's header; a door left empty keeps its menu entry disabled.
struct WindowDoors
{
    std::function<void()> info_details;                 // frmInfo, detail role (shared.info_* set)
    std::function<void()> info_filter;                  // frmInfo, filter role
    std::function<QString()> ask_adhoc_pin;             // frmAdhoc; empty text when cancelled
    std::function<void(int preset_number)> edit_preset; // preset_form for a program button
    std::function<void()> more_presets;                 // frmMorePresets
    std::function<void(bool visible)> show_monitor;     // frmMonitor shown or closed
    std::function<void()> failure_warning;              // frmFailureWarning, modal
    std::function<void()> password_setup;               // frmPasswordSetup
    std::function<void()> folders;                      // frmFolders
    std::function<void()> about;                        // about_form
    // The spell check of a message text: the corrected text, or nullopt when it was cancelled or is not
    // available (the box has then been shown).
    std::function<std::optional<QString>(const QString& text)> check_spelling;
    std::function<void()> help_contents;
    std::function<void()> help_website;
    // Windows of later issues, by menu entry name ("carriers_add", "scheduled", "rptSentDate" ...).
    std::function<bool(const QString& entry)> has_window;
    std::function<void(const QString& entry)> open_window;
    // The open queue folders reload what changed (every count, so every tick).
    std::function<void()> refresh_folders;
    // frmSchedule unloads if it is open (SEND has used the schedule selection).
    std::function<void()> unload_schedule;
};

// Everything a console window needs from the program, handed to each window when it is made.
struct ConsoleContext
{
    AppState& state;
    ConsoleState& shared;
    WindowOwner& windows;
    ActivityLog& activity;
    SendFormPort* send_form = nullptr; // set once the send window exists
    WindowDoors doors;
    // The windows of the menu and of other windows' buttons, by entry name.
    WindowCatalog catalog;
};

} // namespace cvd::console
