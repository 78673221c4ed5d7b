#pragma once

#include <QString>

namespace cvd {

// Whatever shows the dispatcher's work: the console's windows, or the log lines of the program without
// windows. The dispatcher only tells it what changed and keeps its own state; nothing is read back.
class ConsoleView
{
public:
    virtual ~ConsoleView() = default;

    // The counter panels 2 to 5 of the status bar ("Sched: 3", "Pend: 0", "Sent: 12", "Bad: 1").
    virtual void set_counter_panel(int panel, const QString& text) = 0;
    // The engine status label.
    virtual void set_engine_status(const QString& text) = 0;
    // A line of the engine's activity (the monitor keeps the last 500).
    virtual void add_activity_line(const QString& line) = 0;
    // Brings the window to the front and shows the failure warning; returns when it was closed.
    virtual void show_failure_warning() = 0;
    // The open folders reload what they show; also said once at the end of every count.
    virtual void refresh_open_folders() = 0;
    // Another program asked the program to end: the front end closes in order.
    virtual void request_quit() = 0;
};

// The panel numbers.
inline constexpr int kSchedPanel = 2;
inline constexpr int kPendPanel = 3;
inline constexpr int kSentPanel = 4;
inline constexpr int kBadPanel = 5;

// "Delivery Engine", CR LF, "Not Running".
inline const QString kEngineNotRunningText = QStringLiteral("Delivery Engine\r\nNot Running");

} // namespace cvd
