#include "console/frm_monitor.h"

#include "console/activity_log.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "console/geometry.h"
#include "core/app_state.h"

#include <QCloseEvent>
#include <QListWidget>
#include <QMouseEvent>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

constexpr SettingKey kScroll{u"display", u"connection_monitor_scroll"};
constexpr SettingKey kVisible{u"display", u"connection_monitor_visible"};
const QString kGeometryPrefix = u"connection_monitor_"_s;

// The size a monitor gets when the settings have never placed it, in twips.
constexpr int kFirstWidth = 4000;
constexpr int kFirstHeight = 5300;

} // namespace

frmMonitor::frmMonitor(ConsoleContext& context) : m_context(context)
{
    log_box = make_control<QListWidget>(this, "log_box");
    log_box->setUniformItemSizes(true);
    log_box->setSelectionMode(QAbstractItemView::SingleSelection);
    log_box->setContextMenuPolicy(Qt::NoContextMenu);
    log_box->viewport()->installEventFilter(this);
    log_box->setToolTip(u"Right-click to turn autoscroll on or off"_s);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(log_box);

    log_box->addItems(m_context.activity.lines());
    connect(&m_context.activity, &ActivityLog::line_added, this, &frmMonitor::add_line);

    SettingsStore& settings = m_context.state.settings;
    if (!restore_geometry(*this, settings, kGeometryPrefix)) {
        resize(twips_to_pixels(kFirstWidth, *this), twips_to_pixels(kFirstHeight, *this));
    }
    m_autoscroll = settings.get_setting_flag(kScroll) != 0;
    show_caption();
    if (m_autoscroll) {
        make_last_current();
    }
    publish_accessibility(*this);
}

void frmMonitor::add_line(const QString& line, qsizetype dropped)
{
    log_box->addItem(line);
    for (qsizetype i = 0; i < dropped && log_box->count() > 0; ++i) {
        delete log_box->takeItem(0);
    }
    if (m_autoscroll) {
        make_last_current();
    }
}

void frmMonitor::make_last_current()
{
    if (log_box->count() == 0) {
        return;
    }
    log_box->setCurrentRow(log_box->count() - 1);
    log_box->scrollToBottom();
}

void frmMonitor::toggle_autoscroll()
{
    m_autoscroll = !m_autoscroll;
    m_context.state.settings.put_setting(kScroll, m_autoscroll);
    show_caption();
    if (m_autoscroll) {
        make_last_current();
    }
}

void frmMonitor::show_caption()
{
    setWindowTitle(m_autoscroll ? u"Activity Monitor - autoscroll"_s : u"Activity Monitor"_s);
}

bool frmMonitor::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == log_box->viewport() && event->type() == QEvent::MouseButtonPress &&
        static_cast<QMouseEvent*>(event)->button() == Qt::RightButton) {
        toggle_autoscroll();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void frmMonitor::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (m_autoscroll) {
        make_last_current();
    }
}

void frmMonitor::store_closing()
{
    save_geometry(*this, m_context.state.settings, kGeometryPrefix);
    m_context.state.settings.put_setting(kVisible, false);
    if (m_context.send_form != nullptr) {
        m_context.send_form->monitor_closed();
    }
}

void frmMonitor::unload()
{
    store_closing();
    close();
}

void frmMonitor::closeEvent(QCloseEvent* event)
{
    // Only the operator's own close counts as putting the monitor away. When the program ends the windows are
    // closed in code, and the monitor must come back at the next start as it was.
    // Its place is kept either way while it is shown in its normal state (save_geometry checks the state).
    if (event->spontaneous()) {
        store_closing();
    } else if (isVisible()) {
        save_geometry(*this, m_context.state.settings, kGeometryPrefix);
    }
    QWidget::closeEvent(event);
}

} // namespace cvd::console
