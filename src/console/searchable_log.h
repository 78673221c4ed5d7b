#pragma once

#include "desk/log_search.h"

#include <optional>

class QWidget;

namespace cvd::console {

// What the search window needs of the log it serves: the rows, their marks, and a search over the rows'
// whole texts that does not have to bring every row into a widget.
class SearchableLog
{
public:
    virtual ~SearchableLog() = default;

    virtual QWidget& log_window() = 0;
    virtual qint64 log_row_count() const = 0;
    // The first row marked selected, from the top.
    virtual std::optional<qint64> first_marked_row() const = 0;
    virtual void unmark_row(qint64 row) = 0;
    // Marks the row, makes it current and scrolls to it.
    virtual void mark_row(qint64 row) = 0;
    // The first row from `start` on in that direction whose whole text holds `search_text`, without regard
    // to case.
    virtual std::optional<qint64> find_row(const QString& search_text, qint64 start, desk::FindDirection direction) = 0;
};

} // namespace cvd::console
