#pragma once

#include "core/console_view.h"

#include <QMap>
#include <cstdio>

namespace cvd::app {

// The console view of the program without windows: every change becomes one log line on stdout
// ("counters: ...", "engine: ...", "activity: ...", "warning: ...").
class HeadlessView : public ConsoleView
{
public:
    explicit HeadlessView(std::FILE* log = stdout);

    void set_counter_panel(int panel, const QString& text) override;
    void set_engine_status(const QString& text) override;
    void add_activity_line(const QString& line) override;
    void show_failure_warning() override;
    void refresh_open_folders() override;
    void request_quit() override;

private:
    void write_line(const QString& line);

    std::FILE* m_log;
    QMap<int, QString> m_panels;
    QString m_logged_counters;
    QString m_status;
};

} // namespace cvd::app
