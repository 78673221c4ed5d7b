#pragma once

#include "console/searchable_log.h"
#include "queue/history.h"

#include <QWidget>

class QPushButton;
class QTableView;

namespace cvd::console {

struct ConsoleContext;
class HistoryModel;

// "Message History": every row of the queue, whatever its state and however old, with Details, Copy,
// Requeue, Print and Clipboard. What it shows is what was there when it opened, until Requeue rebuilds it.
class log_form : public QWidget, public SearchableLog
{
    Q_OBJECT

public:
    explicit log_form(ConsoleContext& context);
    ~log_form() override;

    // The twelve sorts: the rows in that order, the sort's name kept in list_sort_order, its heading marked
    // and no row selected.
    void sort_history(queue::HistorySort sort);

    QWidget& log_window() override { return *this; }
    qint64 log_row_count() const override;
    std::optional<qint64> first_marked_row() const override;
    void unmark_row(qint64 row) override;
    void mark_row(qint64 row) override;
    std::optional<qint64> find_row(const QString& search_text, qint64 start, desk::FindDirection direction) override;

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void build_controls();
    void fill(queue::StatusRule rule);
    void heading_clicked(int column);
    void show_details();
    void open_find();
    void copy_message();
    void requeue();
    void print_list();
    void copy_to_clipboard();
    QString list_text(queue::HistoryLayout layout);

    ConsoleContext& m_context;
    HistoryModel* m_model = nullptr;
    bool m_first_activation = true;
    QTableView* Status_Grid = nullptr;
    QPushButton* btnDetails = nullptr;
    QPushButton* btnFind = nullptr;
    QPushButton* btnEdit = nullptr;
    QPushButton* btnRequeue = nullptr;
    QPushButton* Command1 = nullptr;
    QPushButton* Command3 = nullptr;
    QPushButton* Command2 = nullptr;
};

} // namespace cvd::console
