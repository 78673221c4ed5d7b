#pragma once

#include "core/console_view.h"

#include <QMap>
#include <QStringList>

namespace cvd::testing {

// A console view that keeps what it was told, for tests.
class RecordingView : public ConsoleView
{
public:
    void set_counter_panel(int panel, const QString& text) override { panels[panel] = text; }
    void set_engine_status(const QString& text) override { status = text; }
    void add_activity_line(const QString& line) override { activity.append(line); }
    void show_failure_warning() override { ++warnings; }
    void refresh_open_folders() override { ++refreshes; }
    void request_quit() override { ++quit_requests; }

    QMap<int, QString> panels;
    QString status;
    QStringList activity;
    int warnings = 0;
    int refreshes = 0;
    int quit_requests = 0;
};

} // namespace cvd::testing
