#pragma once

#include "queue/history.h"

#include <QAbstractTableModel>
#include <functional>
#include <map>
#include <memory>

namespace cvd {
struct AppState;
}

namespace cvd::console {

// The rows of the history for the grid, read in pages as the grid scrolls to them, so that a history of a
// million rows opens at once. The order is the database's; the model only keeps the pages it has read.
class HistoryModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    HistoryModel(AppState& state, QObject* parent);
    ~HistoryModel() override;

    // Reads the history anew in that sort; the rows shown are those there now.
    void rebuild(queue::HistorySort sort, queue::StatusRule rule);
    // Sorts the same rows again, keeping the status rule.
    void sort_by(queue::HistorySort sort);
    queue::HistorySort current_sort() const { return m_sort; }

    // The row at a position, read if need be; an empty row past the end.
    const queue::HistoryRow& history_row(qint64 position) const;
    // Walks the rows from `first` on in the shown order while `visit` returns true.
    void walk(qint64 first, const std::function<bool(qint64, const queue::HistoryRow&)>& visit);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    void open_view(queue::HistorySort sort, queue::StatusRule rule);
    void forget_pages();

    AppState& m_state;
    queue::HistorySort m_sort = queue::HistorySort::RequestedAscending;
    queue::StatusRule m_rule = queue::StatusRule::FirstFill;
    std::unique_ptr<queue::HistoryView> m_view;
    // Pages read so far by page number, and the order they were read in, so that the oldest goes first.
    mutable std::map<qint64, QList<queue::HistoryRow>> m_pages;
    mutable QList<qint64> m_page_order;
    queue::HistoryRow m_empty;
};

} // namespace cvd::console
