#include "app/headless_view.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace cvd::app {

HeadlessView::HeadlessView(std::FILE* log) : m_log(log)
{
    m_panels = {{kSchedPanel, u"Sched:"_s}, {kPendPanel, u"Pend:"_s}, {kSentPanel, u"Sent:"_s}, {kBadPanel, u"Bad:"_s}};
}

void HeadlessView::set_counter_panel(int panel, const QString& text)
{
    m_panels[panel] = text;
}

void HeadlessView::set_engine_status(const QString& text)
{
    if (text == m_status) {
        return;
    }
    m_status = text;
    QString shown = text;
    shown.replace(u"\r\n"_s, u" / "_s);
    write_line(u"engine: "_s + shown);
}

void HeadlessView::add_activity_line(const QString& line)
{
    write_line(u"activity: "_s + line);
}

void HeadlessView::show_failure_warning()
{
    write_line(u"warning: One or more messages have failed"_s);
}

// Called once at the end of every count, so the four panels are logged together, and only when they changed.
void HeadlessView::refresh_open_folders()
{
    const QString counters = m_panels.values().join(u' ');
    if (counters != m_logged_counters) {
        m_logged_counters = counters;
        write_line(u"counters: "_s + counters);
    }
}

void HeadlessView::request_quit()
{
    QCoreApplication::quit();
}

void HeadlessView::write_line(const QString& line)
{
    std::fprintf(m_log, "%s\n", qUtf8Printable(line));
    std::fflush(m_log);
}

} // namespace cvd::app
