#include "console/activity_log.h"

namespace cvd::console {

void ActivityLog::add(const QString& line)
{
    m_lines.append(line);
    const qsizetype dropped = std::max<qsizetype>(0, m_lines.size() - kMaxLines);
    m_lines.remove(0, dropped);
    emit line_added(line, dropped);
}

} // namespace cvd::console
