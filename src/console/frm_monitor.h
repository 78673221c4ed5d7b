#pragma once

#include <QWidget>

class QListWidget;

namespace cvd::console {

struct ConsoleContext;

// The engine's activity lines, the newest 500, in a modeless window of their own. It follows the activity log
// line by line, so a busy engine costs one list row per line, never a reload.
class frmMonitor : public QWidget
{
    Q_OBJECT

public:
    explicit frmMonitor(ConsoleContext& context);

    bool autoscroll() const { return m_autoscroll; }
    // The send window's menu unloads the monitor: its place is kept and it stays closed at the next start.
    void unload();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void add_line(const QString& line, qsizetype dropped);
    void toggle_autoscroll();
    void show_caption();
    void make_last_current();
    void store_closing();

    ConsoleContext& m_context;
    QListWidget* log_box = nullptr;
    bool m_autoscroll = false;
};

} // namespace cvd::console
