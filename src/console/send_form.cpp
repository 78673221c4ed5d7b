#include "console/send_form.h"

#include "console/activity_log.h"
#include "console/busy_lock.h"
#include "console/controls.h"
#include "console/geometry.h"
#include "console/program_icon.h"
#include "console/window_owner.h"
#include "core/app_state.h"
#include "desk/send_form_rules.h"
#include "dispatch/dispatch_loop.h"
#include "platform/runtime.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QIcon>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStyle>
#include <QSystemTrayIcon>
#include <QThread>
#include <QToolBar>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

const QString kCaption = u"Corvane Desk"_s;

QToolBar* one_button_toolbar(QWidget* parent, const char* name, const QString& caption, QStyle::StandardPixmap icon)
{
    auto* bar = make_control<QToolBar>(parent, name);
    bar->setToolTip(caption);
    bar->setIconSize({16, 16});
    QAction* action = bar->addAction(parent->style()->standardIcon(icon), caption);
    action->setToolTip(caption);
    return bar;
}

QFont list_font(bool small)
{
    QFont font(small ? u"Small Fonts"_s : u"MS Sans Serif"_s);
    font.setStyleHint(QFont::SansSerif);
    font.setPointSizeF(small ? 6.75 : 8.25);
    return font;
}

QRect to_pixels(const QRect& twips, const QWidget& widget)
{
    return {twips_to_pixels(twips.x(), widget), twips_to_pixels(twips.y(), widget),
            twips_to_pixels(twips.width(), widget), twips_to_pixels(twips.height(), widget)};
}

} // namespace

send_form::send_form(ConsoleContext& context, engine_link::EngineStarter starter)
    : m_context(context), m_starter(std::move(starter))
{
    setObjectName(u"send_form"_s);
    setWindowTitle(kCaption);
    setWindowIcon(program_icon());
    build_controls();
    build_menu();
    build_main_toolbar();
    build_status_bar();
    if (QSystemTrayIcon::isSystemTrayAvailable()) {
        m_tray = new QSystemTrayIcon(windowIcon(), this);
        m_tray->setToolTip(kCaption);
        connect(m_tray, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
            if (reason == QSystemTrayIcon::Trigger) {
                restore_from_tray();
            }
        });
    }
    // The window sees every key first, whichever control has the focus.
    installEventFilter(this);
    for (QWidget* child : findChildren<QWidget*>()) {
        if (qobject_cast<QMenu*>(child) == nullptr) {
            child->installEventFilter(this);
        }
    }
    setMinimumSize(twips_to_pixels(desk::kMinimumWidth, *this), twips_to_pixels(desk::kMinimumHeight, *this));
    refresh_doors();
    lay_out();
    publish_accessibility(*this);
}

send_form::~send_form()
{
    if (m_loop) {
        m_loop->stop();
    }
}

void send_form::build_controls()
{
    m_central = new QWidget(this);
    setCentralWidget(m_central);
    Label2 = make_control<QLabel>(m_central, "Label2", u"Recipients"_s);
    unpicked = make_control<QListWidget>(m_central, "unpicked");
    Label2->setBuddy(unpicked);
    Label3 = make_control<QLabel>(m_central, "Label3", u"Selected Recipients"_s);
    picked = make_control<QListWidget>(m_central, "picked");
    Label3->setBuddy(picked);
    for (QListWidget* list : {unpicked, picked}) {
        list->setFont(list_font(false));
        list->setUniformItemSizes(true);
        list->viewport()->installEventFilter(this);
    }
    connect(unpicked, &QListWidget::itemClicked, this,
            [this](QListWidgetItem* item) { list_clicked(true, unpicked->row(item)); });
    connect(picked, &QListWidget::itemClicked, this,
            [this](QListWidgetItem* item) { list_clicked(false, picked->row(item)); });
    tbrClearRecipients = one_button_toolbar(m_central, "tbrClearRecipients", u"Clear Selected Recipients"_s,
                                            QStyle::SP_DialogResetButton);
    connect(tbrClearRecipients->actions().constFirst(), &QAction::triggered, this, [this] { show_users(); });

    Label1 = make_control<QLabel>(m_central, "Label1", u"Message Text"_s);
    message = make_control<QPlainTextEdit>(m_central, "message");
    Label1->setBuddy(message);
    QFont message_font(u"Arial"_s);
    message_font.setStyleHint(QFont::SansSerif);
    message->setFont(message_font);
    message->viewport()->installEventFilter(this);
    connect(message, &QPlainTextEdit::textChanged, this, [this] { message_changed(); });
    lblCC = make_control<QLabel>(m_central, "lblCC", u"Characters"_s);
    cc = make_control<QLabel>(m_central, "cc", u"0"_s);
    for (QLabel* label : {lblCC, cc}) {
        label->setFont(list_font(true));
    }
    lblCC->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    cc->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    tbrClearMessage =
        one_button_toolbar(m_central, "tbrClearMessage", u"Clear Message Text"_s, QStyle::SP_LineEditClearButton);
    connect(tbrClearMessage->actions().constFirst(), &QAction::triggered, message, &QPlainTextEdit::clear);
    tbrSchedule =
        one_button_toolbar(m_central, "tbrSchedule", u"Schedule This Message"_s, QStyle::SP_FileDialogDetailedView);
    connect(tbrSchedule->actions().constFirst(), &QAction::triggered, this,
            [this] { run_menu_entry(u"tbrSchedule"_s); });

    send = make_control<QPushButton>(m_central, "send", u"SEND"_s);
    QFont send_font = send->font();
    send_font.setBold(true);
    send->setFont(send_font);
    connect(send, &QPushButton::clicked, this, [this] { press_send(); });
    for (int i = 0; i < 5; ++i) {
        const QByteArray name = "btnProg" + QByteArray::number(i + 1);
        auto* button = make_control<QPushButton>(m_central, name.constData(), u"Prog "_s + QString::number(i + 1));
        button->installEventFilter(this);
        connect(button, &QPushButton::clicked, this, [this, i] { use_preset_number(i + 1); });
        m_prog_buttons.at(static_cast<std::size_t>(i)) = button;
    }
    btnProgMore = make_control<QPushButton>(m_central, "btnProgMore", u"More"_s);
    connect(btnProgMore, &QPushButton::clicked, this, [this] { run_menu_entry(u"presets"_s); });
    upfocus_button = make_control<QPushButton>(m_central, "upfocus");
    upfocus2_button = make_control<QPushButton>(m_central, "upfocus2");
    for (QPushButton* helper : {upfocus_button, upfocus2_button}) {
        helper->setFocusPolicy(Qt::NoFocus);
        helper->hide();
    }
    connect(upfocus_button, &QPushButton::clicked, this, [this] { upfocus(); });
    connect(upfocus2_button, &QPushButton::clicked, this, [this] { upfocus2(); });
    for (QLabel* heading : {Label2, Label3}) {
        heading->installEventFilter(this);
    }
}

void send_form::lay_out()
{
    const desk::SendFormLayout layout = desk::send_form_layout(
        pixels_to_twips(m_central->width(), *this), pixels_to_twips(m_central->height(), *this), m_presets_hidden);
    const auto place = [this](QWidget* control, const QRect& twips) { control->setGeometry(to_pixels(twips, *this)); };
    place(Label2, layout.recipients_heading);
    place(unpicked, layout.unpicked);
    place(Label3, layout.picked_heading);
    place(tbrClearRecipients, layout.clear_recipients);
    place(picked, layout.picked);
    place(Label1, layout.message_heading);
    place(tbrClearMessage, layout.clear_message);
    place(tbrSchedule, layout.schedule);
    place(message, layout.message);
    place(send, layout.send);
    // The count stays flush with the message's right edge, its caption just left of it.
    const QRect count = to_pixels(layout.count, *this);
    const int count_width = cc->fontMetrics().horizontalAdvance(cc->text()) + 4;
    cc->setGeometry(count.right() - count_width + 1, count.y(), count_width, count.height());
    lblCC->setGeometry(count.x(), count.y(), count.width() - count_width - 4, count.height());
    for (std::size_t i = 0; i < 5; ++i) {
        place(m_prog_buttons.at(i), layout.program_buttons.at(i));
    }
    place(btnProgMore, layout.program_buttons.at(5));
}

bool send_form::load(QString* error)
{
    SettingsStore& settings = m_context.state.settings;
    if (restore_geometry(*this, settings, desk::kSendFormPrefix)) {
        m_actions.value(u"view_connection_monitor"_s)
            ->setChecked(settings.get_setting_flag(desk::keys::monitor_visible) != 0);
    } else {
        apply_first_run_geometry();
    }
    m_loop = std::make_unique<dispatch::DispatchLoop>(m_context.state, *this, m_starter);
    if (!m_loop->start(m_context.state.runtime_dir + u'/' + QLatin1StringView(platform::kSocketName), error)) {
        m_loop.reset();
        return false;
    }
    m_mouse_used = false;
    apply_display_options();
    update_prog_captions();
    show_users();
    return true;
}

void send_form::apply_display_options()
{
    SettingsStore& settings = m_context.state.settings;
    const bool small = settings.get_setting_flag(desk::keys::small_font) != 0;
    unpicked->setFont(list_font(small));
    picked->setFont(list_font(small));
    m_max_length = settings.get_setting_long(desk::keys::max_msg_length);
    apply_settings_hides();
    lay_out();
}

void send_form::apply_first_run_geometry()
{
    resize(twips_to_pixels(desk::kFirstRunWidth, *this), twips_to_pixels(desk::kFirstRunHeight, *this));
    center_on_screen(*this);
    move(x() - twips_to_pixels(desk::kFirstRunShiftLeft, *this), y());
    const TwipsGeometry placed = window_geometry_twips(*this);
    desk::write_first_run_monitor_settings(m_context.state.settings, placed.top, placed.left, placed.width,
                                           placed.height);
    m_actions.value(u"view_connection_monitor"_s)->setChecked(true);
}

void send_form::apply_settings_hides()
{
    const desk::HiddenControls hidden = desk::hidden_controls(m_context.state.settings);
    m_presets_hidden = hidden.presets;
    for (QPushButton* button : m_prog_buttons) {
        button->setVisible(!hidden.presets);
    }
    btnProgMore->setVisible(!hidden.presets);
    m_actions.value(u"presets"_s)->setVisible(!hidden.presets);
    tbrSchedule->setVisible(!hidden.schedule);
    for (const QString& entry : {u"pending"_s, u"bad"_s, u"sent"_s, u"scheduled"_s, u"history"_s, u"log"_s}) {
        m_actions.value(entry)->setVisible(!hidden.logs);
    }
    m_menus.value(u"mnuReports"_s)->menuAction()->setVisible(!hidden.reports);
}

queue::CounterState& send_form::counters()
{
    return m_loop ? m_loop->dispatcher().counters() : m_counters;
}

bool send_form::label_after()
{
    return m_context.state.settings.get_setting_flag(desk::keys::group_label_after) != 0;
}

void send_form::update_counters()
{
    queue::CounterState& state = counters();
    state.counters_changed = true;
    queue::update_counters(m_context.state, *this, state);
    state.counters_changed = false;
}

void send_form::set_counter_panel(int panel, const QString& text)
{
    if (panel >= 1 && panel <= static_cast<int>(m_panels.size())) {
        m_panels.at(static_cast<std::size_t>(panel - 1))->setText(text);
    }
}

void send_form::set_engine_status(const QString& text)
{
    fDialerStatus->setText(QString(text).replace(u"\r\n"_s, u"\n"_s));
}

void send_form::add_activity_line(const QString& line)
{
    m_context.activity.add(line);
}

void send_form::show_failure_warning()
{
    const bool in_tray = m_tray != nullptr && m_tray->isVisible();
    if (in_tray) {
        m_tray->showMessage(kCaption, u"A message could not be delivered."_s, QSystemTrayIcon::Warning);
        restore_from_tray();
    } else {
        showNormal();
        raise();
        activateWindow();
    }
    if (m_context.doors.failure_warning) {
        m_context.doors.failure_warning();
    }
}

void send_form::refresh_open_folders()
{
    if (m_context.doors.refresh_folders) {
        m_context.doors.refresh_folders();
    }
}

void send_form::go_to_systray()
{
    if (m_tray == nullptr) {
        return; // no tray on this desktop: the window stays minimised in the task bar
    }
    m_tray->show();
    hide();
}

void send_form::restore_from_tray()
{
    showNormal();
    raise();
    activateWindow();
    if (m_tray != nullptr) {
        m_tray->hide();
    }
}

void send_form::monitor_closed()
{
    // A monitor closed by minimising or by the program's end stays wanted for the next time.
    if (m_hiding_monitor || m_unloading) {
        return;
    }
    m_actions.value(u"view_connection_monitor"_s)->setChecked(false);
    m_context.state.settings.put_setting(desk::keys::monitor_visible, false);
}

bool send_form::event(QEvent* event)
{
    if (event->type() == QEvent::WindowActivate) {
        if (m_context.state.start_minimized) {
            m_context.state.start_minimized = false;
            QMetaObject::invokeMethod(this, &QWidget::showMinimized, Qt::QueuedConnection);
        } else if (!isMinimized() && m_context.doors.show_monitor) {
            m_context.doors.show_monitor(m_context.state.settings.get_setting_flag(desk::keys::monitor_visible) != 0);
        }
    }
    return QMainWindow::event(event);
}

void send_form::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::WindowStateChange || !isMinimized()) {
        return;
    }
    if (m_context.state.settings.get_setting_flag(desk::keys::minimize_to_taskbar) == 0) {
        QMetaObject::invokeMethod(this, &send_form::go_to_systray, Qt::QueuedConnection);
    }
    if (m_context.doors.show_monitor) {
        m_hiding_monitor = true;
        m_context.doors.show_monitor(false);
        m_hiding_monitor = false;
    }
}

void send_form::closeEvent(QCloseEvent* event)
{
    if (!m_unloading) {
        if (const std::optional<Notice> question = desk::closing_question(m_panels.at(2)->text())) {
            if (m_context.state.prompter.show_box(*question) != BoxAnswer::Yes) {
                event->ignore();
                return;
            }
        }
        unload();
    }
    event->accept();
}

void send_form::unload()
{
    m_unloading = true;
    {
        BusyLock lock(*this);
        if (m_loop) {
            m_loop->stop();
        }
        if (m_tray != nullptr) {
            m_tray->hide();
        }
        save_geometry(*this, m_context.state.settings, desk::kSendFormPrefix);
        // Every other window stores its own place as it closes, the monitor included.
        m_context.windows.close_all();
    }
    emit unloaded();
    if (QThread::currentThread()->loopLevel() > 0) {
        QCoreApplication::quit();
    }
}

} // namespace cvd::console
