#pragma once

#include <QObject>
#include <QStringList>

namespace cvd::console {

// The engine's activity lines as the monitor shows them: the newest 500, kept whether or not the monitor
// window is open, so that opening it shows what came before.
class ActivityLog : public QObject
{
    Q_OBJECT

public:
    static constexpr qsizetype kMaxLines = 500;

    // Appends the line and drops the oldest while more than kMaxLines are kept.
    void add(const QString& line);
    const QStringList& lines() const { return m_lines; }

signals:
    // The line was appended; `dropped` lines were removed from the front to make room.
    void line_added(const QString& line, qsizetype dropped);

private:
    QStringList m_lines;
};

} // namespace cvd::console
