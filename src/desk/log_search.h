#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace cvd::desk {

// Find Next walks down from the row after the marked one (the first row when none is marked); Find Prev walks
// up from the row before it (the last row when none is marked).
enum class FindDirection { Next, Prev };

// The row a search starts at, or nullopt when there is none left in that direction.
std::optional<qint64> find_start(std::optional<qint64> marked, qint64 row_count, FindDirection direction);

// Whether a row's whole text holds the search text, both without regard to case.
bool row_matches(const QString& row_text, const QString& search_text);

// The first line from `start` on in that direction that holds the search text.
std::optional<qint64> find_in_lines(const QStringList& lines, const QString& search_text, qint64 start,
                                    FindDirection direction);

} // namespace cvd::desk
