#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>
#include <array>
#include <functional>
#include <optional>

namespace cvd::store {
class Database;
}

namespace cvd::queue {

// The history shows every row of cv_messages, whatever its state and however old, in nine columns. Positions
// 0, 7 and 8 are kept out of sight but are searched like the others.
enum HistoryColumn {
    kHistoryMessageId = 0,
    kHistoryRequested = 1,
    kHistorySent = 2,
    kHistoryStatus = 3,
    kHistorySentTo = 4,
    kHistorySentFrom = 5,
    kHistoryMessage = 6,
    kHistoryRequestedFloat = 7,
    kHistorySentFloat = 8,
};
inline constexpr int kHistoryColumnCount = 9;

// The headings of the nine columns.
QString history_heading(int column);

// The status text of a row. Right after a requeue the history is rebuilt with one difference: a row not yet
// sent is "Pending" whatever its scheduled flag, until the window is opened again.
enum class StatusRule { FirstFill, AfterRequeue };
QString history_status(bool sent, bool error, bool scheduled, StatusRule rule);

// A date as the "general date" shows it (the locale's short date, then the time with seconds), empty when
// there is none.
QString general_date_text(const std::optional<QDateTime>& value);
// A date as a day number counted from 30 December 1899, with the time as the fraction; 0 when there is none.
double ole_date_number(const std::optional<QDateTime>& value);
// A number in the general number format: as many digits as it needs, no trailing zeros.
QString general_number_text(double value);

// One row of the history as the grid shows it.
struct HistoryRow
{
    qint64 message_id = 0;
    std::array<QString, kHistoryColumnCount> columns;

    // The row's whole text, every column joined by tabs, as a search reads it.
    QString text() const;
};

// The twelve sorts, two per visible column. Each sorts on several keys in the same direction.
enum class HistorySort {
    RequestedAscending,
    RequestedDescending,
    SentAscending,
    SentDescending,
    StatusAscending,
    StatusDescending,
    ToAscending,
    ToDescending,
    FromAscending,
    FromDescending,
    MessageAscending,
    MessageDescending,
};

// The routine name that a sort writes to list_sort_order ("SortByToAscending").
QString history_sort_name(HistorySort sort);
// The column whose heading a sort marks (1 to 6).
int history_sort_column(HistorySort sort);
bool history_sort_ascending(HistorySort sort);
// The keys of a sort by column position, first key first.
QList<int> history_sort_keys(HistorySort sort);
// A click on a heading: columns 1 to 6 sort descending when list_sort_order names that column's ascending
// sort, ascending otherwise. Any other column, or a negative one, sorts nothing.
std::optional<HistorySort> history_heading_sort(int column, const QString& list_sort_order);

// The list as text for the printer or the clipboard: a heading, a rule, then one line per row with the
// requested, sent, status, sent-to and sent-from fields cut or blank-filled to their widths and the message
// whole, each line ending in CR LF.
enum class HistoryLayout { Print, Clipboard };
QString history_text_heading(HistoryLayout layout);
QString history_text_line(const HistoryRow& row, HistoryLayout layout);

// The rows a page of the history holds; the first page of any sort is read without sorting every row.
inline constexpr qint64 kHistoryPageRows = 256;

// The rows of the history in one sort, as they stood when it was taken: rows added later are left out.
// Pages are read by position. For the sorts that lead with the request time the rows come straight from the
// index in order; for the others only the first page does, and for them and for a position deep into a long
// list the order is worked out once into a private temporary table of message ids, so that every further
// page is a range read.
class HistoryView
{
public:
    HistoryView(store::Database& db, HistorySort sort, StatusRule rule);
    ~HistoryView();
    HistoryView(const HistoryView&) = delete;
    HistoryView& operator=(const HistoryView&) = delete;

    HistorySort sort() const { return m_sort; }
    qint64 row_count() const { return m_count; }
    // Rows [offset, offset + count), fewer at the end.
    QList<HistoryRow> rows(qint64 offset, qint64 count);
    // Walks the rows from `first` on, in order, while `visit` returns true.
    void walk(qint64 first, const std::function<bool(qint64 position, const HistoryRow& row)>& visit);

private:
    bool ordered_in_table() const { return !m_order_table.isEmpty(); }
    void order_into_table();
    bool order_table_present();
    QString select_sql() const;
    bool read_directly(qint64 first, qint64 limit) const;
    // Rows from `first` on, at most `limit` of them (all with -1).
    void read(qint64 first, qint64 limit, const std::function<bool(qint64, const HistoryRow&)>& visit);

    store::Database& m_db;
    HistorySort m_sort;
    StatusRule m_rule;
    qint64 m_last_id = 0;
    qint64 m_count = 0;
    QString m_order_table;
};

// Requeue from the history: each row goes back to Waiting, due now with a fresh transaction, whatever state
// it was in (also a row still pending). All rows in one step.
void requeue_history_rows(store::Database& db, const QList<qint64>& message_ids, const QDateTime& now);

} // namespace cvd::queue
