#pragma once

#include "queue/console_view.h"

#include <QMap>
#include <QStringList>

namespace cvd::testing {

// A console view that keeps what it was told, for tests.
class RecordingView : public queue::ConsoleView
{
public:
    RecordingView()
    {
        panels = {{queue::kSchedPanel, QStringLiteral("Sched:")},
                  {queue::kPendPanel, QStringLiteral("Pend:")},
                  {queue::kSentPanel, QStringLiteral("Sent:")},
                  {queue::kBadPanel, QStringLiteral("Bad:")}};
    }
    QString counter_panel(int panel) const override { return panels.value(panel); }
    void set_counter_panel(int panel, const QString& text) override { panels[panel] = text; }
    QString engine_status() const override { return status; }
    void set_engine_status(const QString& text) override { status = text; }
    void add_activity_line(const QString& line) override { activity.append(line); }
    void show_failure_warning() override { ++warnings; }
    void refresh_open_folders() override { ++refreshes; }

    QMap<int, QString> panels;
    QString status;
    QStringList activity;
    int warnings = 0;
    int refreshes = 0;
};

} // namespace cvd::testing
