#include "console/history_model.h"

#include "core/app_state.h"
#include "core/databases.h"
#include "core/error_path.h"

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

constexpr qint64 kPageRows = queue::kHistoryPageRows;
// About sixteen thousand rows kept at most, whatever the length of the history.
constexpr qsizetype kKeptPages = 64;

const QString kProcedure = u"Procedure: log_form activate"_s;

} // namespace

HistoryModel::HistoryModel(AppState& state, QObject* parent) : QAbstractTableModel(parent), m_state(state) {}

HistoryModel::~HistoryModel() = default;

void HistoryModel::open_view(queue::HistorySort sort, queue::StatusRule rule)
{
    m_view.reset();
    open_database(m_state);
    m_state.clear_error_counters();
    m_view = with_retry(m_state, kProcedure,
                        [&] { return std::make_unique<queue::HistoryView>(m_state.global_db, sort, rule); });
    m_sort = sort;
    m_rule = rule;
}

void HistoryModel::forget_pages()
{
    m_pages.clear();
    m_page_order.clear();
}

void HistoryModel::rebuild(queue::HistorySort sort, queue::StatusRule rule)
{
    beginResetModel();
    forget_pages();
    open_view(sort, rule);
    endResetModel();
}

void HistoryModel::sort_by(queue::HistorySort sort)
{
    rebuild(sort, m_rule);
}

const queue::HistoryRow& HistoryModel::history_row(qint64 position) const
{
    if (m_view == nullptr || position < 0 || position >= m_view->row_count()) {
        return m_empty;
    }
    const qint64 page = position / kPageRows;
    auto found = m_pages.find(page);
    if (found == m_pages.end()) {
        m_state.clear_error_counters();
        QList<queue::HistoryRow> rows =
            with_retry(m_state, kProcedure, [&] { return m_view->rows(page * kPageRows, kPageRows); });
        if (m_page_order.size() >= kKeptPages) {
            m_pages.erase(m_page_order.takeFirst());
        }
        m_page_order.append(page);
        found = m_pages.emplace(page, std::move(rows)).first;
    }
    const qint64 within = position - page * kPageRows;
    return within < found->second.size() ? found->second.at(within) : m_empty;
}

void HistoryModel::walk(qint64 first, const std::function<bool(qint64, const queue::HistoryRow&)>& visit)
{
    if (m_view == nullptr) {
        return;
    }
    m_state.clear_error_counters();
    with_retry(m_state, kProcedure, [&] { m_view->walk(first, visit); });
}

int HistoryModel::rowCount(const QModelIndex& parent) const
{
    if (parent.isValid() || m_view == nullptr) {
        return 0;
    }
    return static_cast<int>(m_view->row_count());
}

int HistoryModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : queue::kHistoryColumnCount;
}

QVariant HistoryModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid()) {
        return {};
    }
    // A message longer than its column reads whole in the tooltip.
    const bool message_tip = role == Qt::ToolTipRole && index.column() == queue::kHistoryMessage;
    if (role != Qt::DisplayRole && !message_tip) {
        return {};
    }
    return history_row(index.row()).columns[index.column()];
}

QVariant HistoryModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return QAbstractTableModel::headerData(section, orientation, role);
    }
    return queue::history_heading(section);
}

} // namespace cvd::console
