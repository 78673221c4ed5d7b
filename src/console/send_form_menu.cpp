// The send window's doors: the menu, the main toolbar, the counters, the keyboard, the spell check.
#include "console/busy_lock.h"
#include "console/controls.h"
#include "console/send_form.h"
#include "core/app_state.h"
#include "core/passwords.h"
#include "desk/help_texts.h"
#include "desk/send_form_rules.h"
#include "dispatch/dispatch_loop.h"

#include <QAction>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QStyle>
#include <QTimer>
#include <QToolBar>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

// One line of the menu: a submenu when it has entries under it, an entry otherwise. `parent` is empty for the
// menus of the bar.
struct MenuLine
{
    const char* name;
    const char16_t* caption;
    const char* parent;
    bool submenu = false;
    bool invisible = false;
};

constexpr MenuLine kMenu[] = {
    {"file", u"&File", "", true},
    {"import", u"&Import", "file", true},
    {"import_ostrel32", u"From Ostrel32", "import"},
    {"import_tollmast", u"From Tollmast", "import"},
    {"import_text", u"From Text File", "import"},
    {"export", u"&Export", "file", true},
    {"export_tollmast", u"To Tollmast", "export"},
    {"export_text", u"To Text File", "export"},
    {"exit", u"E&xit", "file"},
    {"tools", u"&Tools", "", true},
    {"setup", u"&Settings", "tools", true},
    {"setup_general", u"&General", "setup"},
    {"setup_modem", u"&Connection", "setup"},
    {"setup_display", u"&Display", "setup"},
    {"setup_passwords", u"&Passwords", "setup"},
    {"setup_user_global", u"&User/Global", "setup"},
    {"check_spell", u"&Check Spelling", "tools"},
    {"presets", u"&Preset Messages", "tools"},
    {"modem_scan", u"&Modem Scan", "tools"},
    {"port_scan", u"P&ort Scan", "tools"},
    {"mnu_wizards", u"&Wizards", "tools", true, true},
    {"wiz_setup", u"&Setup", "mnu_wizards"},
    {"wiz_modem", u"&Connection", "mnu_wizards"},
    {"wiz_carrier", u"C&arrier", "mnu_wizards"},
    {"wiz_recipient", u"&Recipient", "mnu_wizards"},
    {"carriers", u"&Carriers", "", true},
    {"carriers_add", u"&Add", "carriers"},
    {"carriers_edit", u"&Edit", "carriers"},
    {"carriers_delete", u"&Delete", "carriers"},
    {"carrier_wizard", u"&Wizard", "carriers", false, true},
    {"recipients", u"&Recipients", "", true},
    {"recipients_add", u"&Add", "recipients"},
    {"recipients_edit", u"&Edit", "recipients"},
    {"recipients_delete", u"&Delete", "recipients"},
    {"recipient_wizard", u"&Wizard", "recipients", false, true},
    {"groups", u"&Groups", "", true},
    {"groups_add", u"&Add", "groups"},
    {"groups_edit", u"&Edit", "groups"},
    {"groups_delete", u"&Delete", "groups"},
    {"groups_members", u"&Members", "groups"},
    {"view", u"&View", "", true},
    {"scheduled", u"&Scheduled", "view"},
    {"pending", u"&Pending", "view"},
    {"sent", u"&Sent", "view"},
    {"bad", u"&Bad", "view"},
    {"history", u"&History", "view"},
    {"log", u"&Activity Log", "view"},
    {"view_connection_monitor", u"Activity &Monitor", "view"},
    {"mnuReports", u"&Reports", "", true},
    {"mnuSentMessages", u"Sent Messages", "mnuReports", true},
    {"rptSentRecipient", u"by &Recipient", "mnuSentMessages"},
    {"rptSentDate", u"by &Date/Time", "mnuSentMessages"},
    {"rptSentCarrier", u"by &Carrier", "mnuSentMessages"},
    {"mnuScheduledMessages", u"Scheduled Messages", "mnuReports", true},
    {"mnuScheduledRecipient", u"by &Recipient", "mnuScheduledMessages"},
    {"rptScheduledDate", u"by &Date/Time", "mnuScheduledMessages"},
    {"rptScheduledCarrier", u"by &Carrier", "mnuScheduledMessages"},
    {"mnuStatistics", u"Statistics", "mnuReports", true},
    {"mnuStatisticsRecipient", u"by &Recipient", "mnuStatistics"},
    {"mnuStatisticsDate", u"by &Date/Time", "mnuStatistics"},
    {"mnuStatisticsCarrier", u"by &Carrier", "mnuStatistics"},
    {"mnuLists", u"Lists", "mnuReports", true},
    {"mnuListRecipients", u"&Recipients", "mnuLists"},
    {"mnuListGroups", u"&Groups", "mnuLists"},
    {"mnuListCarriers", u"&Carriers", "mnuLists"},
    {"help", u"&Help", "", true},
    {"Contents", u"&Contents", "help"},
    {"keyboard_shortcuts", u"&Keyboard Shorcuts", "help"},
    {"mouse_shortcuts", u"&Mouse Shortcuts", "help"},
    {"help_website", u"&Website", "help"},
    {"folders", u"&Folders", "help"},
    {"about", u"&About", "help"},
};

// Entries the window answers itself; they are always enabled.
const QStringList kOwnEntries{
    u"exit"_s,        u"import_ostrel32"_s,    u"import_tollmast"_s, u"export_tollmast"_s,
    u"check_spell"_s, u"keyboard_shortcuts"_s, u"mouse_shortcuts"_s, u"view_connection_monitor"_s};

// tbrMain's positions; an empty entry is a separator. Each button does what its menu entry does.
struct ToolbarButton
{
    const char16_t* entry;
    const char16_t* tooltip;
    QStyle::StandardPixmap icon;
};

constexpr ToolbarButton kToolbar[] = {
    {u"cancel_all", u"Cancel all pending messages", QStyle::SP_BrowserStop},
    {nullptr, nullptr, QStyle::SP_CustomBase},
    {u"scheduled", u"Scheduled messages", QStyle::SP_FileDialogContentsView},
    {u"pending", u"Pending messages", QStyle::SP_ArrowForward},
    {u"sent", u"Sent messages", QStyle::SP_DialogApplyButton},
    {u"bad", u"Bad messages", QStyle::SP_MessageBoxCritical},
    {nullptr, nullptr, QStyle::SP_CustomBase},
    {u"history", u"History", QStyle::SP_FileDialogDetailedView},
    {nullptr, nullptr, QStyle::SP_CustomBase},
    {u"log", u"Activity Log", QStyle::SP_FileIcon},
    {u"view_connection_monitor", u"Activity Monitor", QStyle::SP_ComputerIcon},
};

// The window of each counter panel, 2 to 5.
const QString kPanelWindows[] = {QString(), QString(), u"scheduled"_s, u"pending"_s, u"sent"_s, u"bad"_s};

} // namespace

void send_form::build_menu()
{
    for (const MenuLine& line : kMenu) {
        const QString name = QString::fromLatin1(line.name);
        const QString parent = QString::fromLatin1(line.parent);
        const QString caption = QString::fromUtf16(line.caption);
        if (line.submenu) {
            QMenu* menu = parent.isEmpty() ? menuBar()->addMenu(caption) : m_menus.value(parent)->addMenu(caption);
            menu->setObjectName(name);
            menu->menuAction()->setObjectName(name);
            menu->menuAction()->setVisible(!line.invisible);
            connect(menu, &QMenu::aboutToShow, this, [this] { refresh_doors(); });
            m_menus.insert(name, menu);
            continue;
        }
        QAction* action = m_menus.value(parent)->addAction(caption);
        action->setObjectName(name);
        action->setVisible(!line.invisible);
        connect(action, &QAction::triggered, this, [this, name] { run_menu_entry(name); });
        m_actions.insert(name, action);
    }
    m_actions.value(u"view_connection_monitor"_s)->setCheckable(true);
}

void send_form::build_main_toolbar()
{
    tbrMain = new QToolBar(this);
    tbrMain->setObjectName(u"tbrMain"_s);
    tbrMain->setAccessibleName(u"Main Toolbar"_s);
    tbrMain->setMovable(false);
    tbrMain->setToolButtonStyle(Qt::ToolButtonIconOnly);
    addToolBar(tbrMain);
    for (const ToolbarButton& button : kToolbar) {
        if (button.entry == nullptr) {
            tbrMain->addSeparator();
            continue;
        }
        const QString entry = QString::fromUtf16(button.entry);
        QAction* action = tbrMain->addAction(style()->standardIcon(button.icon), QString::fromUtf16(button.tooltip));
        action->setToolTip(QString::fromUtf16(button.tooltip));
        connect(action, &QAction::triggered, this, [this, entry] {
            if (entry == u"cancel_all"_s) {
                cancel_all_messages();
            } else if (QAction* menu_entry = m_actions.value(entry); menu_entry->isEnabled()) {
                menu_entry->trigger();
            }
        });
    }
    auto* spacer = new QWidget(tbrMain);
    spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    tbrMain->addWidget(spacer);
    fDialerStatus = new QLabel(tbrMain);
    fDialerStatus->setObjectName(u"fDialerStatus"_s);
    fDialerStatus->setAlignment(Qt::AlignCenter);
    fDialerStatus->setMinimumWidth(fDialerStatus->fontMetrics().horizontalAdvance(u"Delivery Engine"_s) + 16);
    tbrMain->addWidget(fDialerStatus);
}

void send_form::build_status_bar()
{
    QStatusBar* bar = statusBar();
    bar->setObjectName(u"sbrCounters"_s);
    bar->setSizeGripEnabled(true);
    for (std::size_t i = 0; i < m_panels.size(); ++i) {
        auto* panel = new QLabel(bar);
        panel->setObjectName(u"sbrCounters_panel"_s + QString::number(i + 1));
        panel->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        panel->setMinimumWidth(i == 0 ? 24 : 90);
        panel->installEventFilter(this);
        bar->addPermanentWidget(panel, i == 0 ? 0 : 1);
        m_panels.at(i) = panel;
    }
}

void send_form::refresh_doors()
{
    const WindowDoors& doors = m_context.doors;
    const QMap<QString, bool> by_door{
        {u"presets"_s, bool(doors.more_presets)},   {u"setup_passwords"_s, bool(doors.password_setup)},
        {u"folders"_s, bool(doors.folders)},        {u"about"_s, bool(doors.about)},
        {u"Contents"_s, bool(doors.help_contents)}, {u"help_website"_s, bool(doors.help_website)},
    };
    for (auto it = m_actions.cbegin(); it != m_actions.cend(); ++it) {
        const QString& name = it.key();
        bool enabled = kOwnEntries.contains(name) || name.startsWith(u"wiz_"_s) || name.endsWith(u"_wizard"_s);
        if (by_door.contains(name)) {
            enabled = by_door.value(name);
        } else if (!enabled) {
            enabled = doors.has_window && doors.has_window(name);
        }
        it.value()->setEnabled(enabled);
    }
    btnProgMore->setEnabled(bool(doors.more_presets));
    tbrSchedule->setEnabled(doors.has_window && doors.has_window(u"tbrSchedule"_s));
}

void send_form::run_menu_entry(const QString& entry)
{
    if (const std::optional<desk::LevelGuard> guard = desk::menu_guard(entry)) {
        if (!check_level(m_context.state, guard->mode, guard->prompt)) {
            return;
        }
    }
    const WindowDoors& doors = m_context.doors;
    const auto call = [](const std::function<void()>& door) {
        if (door) {
            door();
        }
    };
    if (entry == u"exit"_s) {
        close();
    } else if (entry == u"import_ostrel32"_s || entry == u"import_tollmast"_s || entry == u"export_tollmast"_s) {
        m_context.state.prompter.show_box(
            desk::not_in_this_edition_notice(visible_caption(m_actions.value(entry)->text())));
    } else if (entry == u"check_spell"_s) {
        check_spell(true);
    } else if (entry == u"view_connection_monitor"_s) {
        toggle_monitor();
    } else if (entry == u"keyboard_shortcuts"_s) {
        m_context.state.prompter.show_box(desk::keyboard_shortcuts_notice());
    } else if (entry == u"mouse_shortcuts"_s) {
        m_context.state.prompter.show_box(desk::mouse_shortcuts_notice());
    } else if (entry == u"presets"_s) {
        call(doors.more_presets);
    } else if (entry == u"setup_passwords"_s) {
        call(doors.password_setup);
    } else if (entry == u"folders"_s) {
        call(doors.folders);
    } else if (entry == u"about"_s) {
        call(doors.about);
    } else if (entry == u"Contents"_s) {
        call(doors.help_contents);
    } else if (entry == u"help_website"_s) {
        call(doors.help_website);
    } else if (doors.has_window && doors.has_window(entry) && doors.open_window) {
        doors.open_window(entry);
    }
}

void send_form::toggle_monitor()
{
    QAction* entry = m_actions.value(u"view_connection_monitor"_s);
    // A click on the menu entry has already flipped the check; the toolbar's trigger flips it the same way.
    const bool visible = entry->isChecked();
    m_context.state.settings.put_setting(desk::keys::monitor_visible, visible);
    if (m_context.doors.show_monitor) {
        m_context.doors.show_monitor(visible);
    }
}

void send_form::check_spell(bool from_menu)
{
    if (m_context.state.settings.get_setting_flag(desk::keys::spell_check) == 0) {
        if (from_menu) {
            m_context.state.prompter.show_box(desk::spell_check_disabled_notice());
        }
        return;
    }
    if (!m_context.doors.check_spelling) {
        return;
    }
    std::optional<QString> corrected;
    {
        BusyLock lock(*this);
        corrected = m_context.doors.check_spelling(message->toPlainText());
    }
    if (corrected) {
        message->setPlainText(*corrected);
    }
}

void send_form::panel_clicked(int panel)
{
    if (panel == kPendPanel && m_right_button) {
        cancel_all_messages();
        return;
    }
    if (panel >= kSchedPanel && panel <= kBadPanel) {
        run_menu_entry(kPanelWindows[panel]);
    }
}

bool send_form::preview_key(QKeyEvent& event)
{
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    const int key = event.key();
    if (modifiers == Qt::AltModifier && (key == Qt::Key_Return || key == Qt::Key_Enter)) {
        send->click();
        return true;
    }
    if (modifiers != Qt::ControlModifier) {
        return false;
    }
    if (key >= Qt::Key_1 && key <= Qt::Key_9) {
        use_preset_number(key - Qt::Key_0);
        return true;
    }
    switch (key) {
    case Qt::Key_S:
        send->click();
        return true;
    case Qt::Key_A:
        cancel_all_messages();
        counters().counters_changed = true;
        return true;
    case Qt::Key_E:
        show_users();
        message->clear();
        return true;
    case Qt::Key_R:
        unpicked->setFocus();
        return true;
    case Qt::Key_T:
        message->setFocus();
        return true;
    case Qt::Key_P:
        btnProgMore->click();
        return true;
    case Qt::Key_F:
        filter_recipients();
        return true;
    default:
        return false;
    }
}

bool send_form::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::KeyPress: {
        auto& key = *static_cast<QKeyEvent*>(event);
        if (preview_key(key)) {
            return true;
        }
        if (watched == unpicked || watched == picked) {
            return list_key_press(watched == unpicked, key);
        }
        break;
    }
    case QEvent::MouseButtonPress: {
        auto& mouse = *static_cast<QMouseEvent*>(event);
        if (watched == unpicked->viewport() || watched == picked->viewport()) {
            return list_mouse_press(watched == unpicked->viewport(), mouse);
        }
        for (std::size_t i = 0; i < m_prog_buttons.size(); ++i) {
            if (watched == m_prog_buttons.at(i)) {
                return program_button_press(static_cast<int>(i) + 1, mouse);
            }
        }
        if (const auto panel = std::find(m_panels.cbegin(), m_panels.cend(), watched); panel != m_panels.cend()) {
            m_right_button = mouse.button() == Qt::RightButton;
        }
        break;
    }
    case QEvent::MouseButtonRelease: {
        if (watched == Label2) {
            upfocus_button->click();
        } else if (watched == Label3) {
            upfocus2_button->click();
        } else if (const auto panel = std::find(m_panels.cbegin(), m_panels.cend(), watched);
                   panel != m_panels.cend()) {
            panel_clicked(static_cast<int>(panel - m_panels.cbegin()) + 1);
        }
        break;
    }
    case QEvent::MouseButtonDblClick:
        if (watched == message->viewport()) {
            check_spell(false);
        }
        break;
    case QEvent::Resize:
        if (watched == m_central) {
            lay_out();
        } else if (watched == this && !isMinimized()) {
            if (m_actions.value(u"view_connection_monitor"_s)->isChecked() && m_context.doors.show_monitor) {
                m_context.doors.show_monitor(true);
            }
            if (m_loop && m_loop->repeat_timer().isActive()) {
                m_loop->repeat_timer().start(dispatch::kFastTickMs); // the next poll comes at once
            }
        }
        break;
    default:
        break;
    }
    return QMainWindow::eventFilter(watched, event);
}

} // namespace cvd::console
