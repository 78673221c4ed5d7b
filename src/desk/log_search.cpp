#include "desk/log_search.h"

namespace cvd::desk {

std::optional<qint64> find_start(std::optional<qint64> marked, qint64 row_count, FindDirection direction)
{
    qint64 start = 0;
    if (direction == FindDirection::Next) {
        start = marked ? *marked + 1 : 0;
    } else {
        start = marked ? *marked - 1 : row_count - 1;
    }
    if (start < 0 || start >= row_count) {
        return std::nullopt;
    }
    return start;
}

bool row_matches(const QString& row_text, const QString& search_text)
{
    return row_text.toLower().contains(search_text.toLower());
}

std::optional<qint64> find_in_lines(const QStringList& lines, const QString& search_text, qint64 start,
                                    FindDirection direction)
{
    const QString needle = search_text.toLower();
    const qint64 step = direction == FindDirection::Next ? 1 : -1;
    for (qint64 row = start; row >= 0 && row < lines.size(); row += step) {
        if (lines.at(row).toLower().contains(needle)) {
            return row;
        }
    }
    return std::nullopt;
}

} // namespace cvd::desk
