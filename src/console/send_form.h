#pragma once

#include "addressbook/pickers.h"
#include "console/console_context.h"
#include "core/console_view.h"
#include "engine_link/supervision.h"
#include "queue/counters.h"
#include "queue/scheduler.h"

#include <QList>
#include <QMainWindow>
#include <QMap>
#include <array>
#include <memory>

class QAction;
class QLabel;
class QListWidget;
class QMenu;
class QPlainTextEdit;
class QPushButton;
class QSystemTrayIcon;
class QToolBar;

namespace cvd::dispatch {
class DispatchLoop;
}

namespace cvd::console {

// The main window: the composition area (both recipient lists, the message, SEND and the program buttons), the
// menu and toolbar as doors to every other window, the counters, and the dispatch loop that drives the
// program. It lives as long as the program; closing it ends the program.
class send_form : public QMainWindow, public SendFormPort, public ConsoleView
{
    Q_OBJECT

public:
    send_form(ConsoleContext& context, engine_link::EngineStarter starter);
    ~send_form() override;
    send_form(const send_form&) = delete;
    send_form& operator=(const send_form&) = delete;

    // The loading steps: geometry (first-run placement included), the dispatch loop on the local channel,
    // fonts, the message's length limit, what the settings hide, the layout, the program buttons and the
    // lists. False with a reason when the channel cannot be bound; the window must not be shown then.
    bool load(QString* error = nullptr);

    // SendFormPort.
    QWidget& window() override { return *this; }
    void show_users() override;
    void fill_unpicked(const QList<addressbook::PickerEntry>& entries) override;
    void use_preset(const addressbook::Preset& preset) override;
    void update_prog_captions() override;
    void monitor_closed() override;
    void update_counters() override;
    bool load_message(const QString& recipient, const QString& text) override;
    void apply_display_options() override;
    void note_counters_changed() override { counters().counters_changed = true; }

    // ConsoleView.
    void set_counter_panel(int panel, const QString& text) override;
    void set_engine_status(const QString& text) override;
    void add_activity_line(const QString& line) override;
    void show_failure_warning() override;
    void refresh_open_folders() override;
    void request_quit() override { close(); }

    // The press of SEND: rows for every picked entry, the button's animation, then the scheduler and the
    // counters at once.
    void press_send();
    // Asks, and deletes the due unsent messages that do not repeat.
    void cancel_all_messages();
    // Hides the window behind its notification-area icon (where the desktop has one).
    void go_to_systray();
    void restore_from_tray();

    // What the lists hold, in their order.
    const QList<addressbook::PickerEntry>& unpicked_entries() const { return m_unpicked_entries; }
    const QList<addressbook::PickerEntry>& picked_entries() const { return m_picked_entries; }
    dispatch::DispatchLoop* loop() const { return m_loop.get(); }

signals:
    // The window has unloaded: the loop is stopped and the geometry stored. The caller saves the settings.
    void unloaded();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    // send_form.cpp: the controls, the window's life.
    void build_controls();
    void lay_out();
    void apply_first_run_geometry();
    void apply_settings_hides();
    void unload();
    queue::CounterState& counters();
    bool label_after();

    // send_form_lists.cpp: both lists, the message and the program buttons.
    void fill_list(QListWidget& list, QList<addressbook::PickerEntry>& entries,
                   const QList<addressbook::PickerEntry>& source);
    void insert_entry(QListWidget& list, QList<addressbook::PickerEntry>& entries,
                      const addressbook::PickerEntry& entry);
    addressbook::PickerEntry take_entry(QListWidget& list, QList<addressbook::PickerEntry>& entries, int row);
    void move_entry(bool from_unpicked, int row);
    bool list_mouse_press(bool on_unpicked, QMouseEvent& event);
    void list_clicked(bool on_unpicked, int row);
    bool list_key_press(bool on_unpicked, QKeyEvent& event);
    void show_details(const QString& key, const QString& group_label);
    void upfocus();
    void upfocus2();
    void message_changed();
    bool program_button_press(int number, QMouseEvent& event);
    void use_preset_number(int number);

    // send_form_menu.cpp: menu, toolbars, status bar, keys, spell check.
    void build_menu();
    void build_main_toolbar();
    void build_status_bar();
    void refresh_doors();
    void run_menu_entry(const QString& entry);
    bool preview_key(QKeyEvent& event);
    void check_spell(bool from_menu);
    void toggle_monitor();
    void filter_recipients();
    void panel_clicked(int panel);

    ConsoleContext& m_context;
    engine_link::EngineStarter m_starter;
    std::unique_ptr<dispatch::DispatchLoop> m_loop;
    // Used while no loop runs (a window under test): the scheduler and counters state of a SEND.
    queue::SchedulerState m_scheduler;
    queue::CounterState m_counters;

    QWidget* m_central = nullptr;
    QLabel* Label2 = nullptr;
    QListWidget* unpicked = nullptr;
    QLabel* Label3 = nullptr;
    QListWidget* picked = nullptr;
    QToolBar* tbrClearRecipients = nullptr;
    QLabel* Label1 = nullptr;
    QPlainTextEdit* message = nullptr;
    QLabel* lblCC = nullptr;
    QLabel* cc = nullptr;
    QToolBar* tbrClearMessage = nullptr;
    QToolBar* tbrSchedule = nullptr;
    QPushButton* send = nullptr;
    std::array<QPushButton*, 5> m_prog_buttons{};
    QPushButton* btnProgMore = nullptr;
    QPushButton* upfocus_button = nullptr;
    QPushButton* upfocus2_button = nullptr;
    QToolBar* tbrMain = nullptr;
    QLabel* fDialerStatus = nullptr;
    std::array<QLabel*, 5> m_panels{};
    QSystemTrayIcon* m_tray = nullptr;

    QMap<QString, QAction*> m_actions; // menu entries by name
    QMap<QString, QMenu*> m_menus;
    QList<addressbook::PickerEntry> m_unpicked_entries;
    QList<addressbook::PickerEntry> m_picked_entries;

    bool m_mouse_used = false;
    bool m_shift = false;
    bool m_right_button = false;
    bool m_sending = false;
    bool m_unloading = false;
    bool m_hiding_monitor = false; // the monitor closes because this window minimises, not by the operator
    bool m_presets_hidden = false;
    int m_max_length = 0;
};

} // namespace cvd::console
