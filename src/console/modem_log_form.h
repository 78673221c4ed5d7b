#pragma once

#include "console/searchable_log.h"

#include <QWidget>

class QListView;
class QPushButton;
class QStringListModel;

namespace cvd::console {

struct ConsoleContext;

// "Activity Log": the delivery engine's cvd.log, its last eight million bytes or so, with Refresh, Purge,
// Print and Clipboard. Later lines of the engine show after Refresh.
class modem_log_form : public QWidget, public SearchableLog
{
    Q_OBJECT

public:
    explicit modem_log_form(ConsoleContext& context);

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
    void load_log();
    void purge();
    void print_log();
    void copy_to_clipboard();
    QString log_path() const;

    ConsoleContext& m_context;
    bool m_first_activation = true;
    QStringListModel* m_lines = nullptr;
    QListView* log_list = nullptr;
    QPushButton* btnFind = nullptr;
    QPushButton* btnRefresh = nullptr;
    QPushButton* Command4 = nullptr;
    QPushButton* Command3 = nullptr;
    QPushButton* Command1 = nullptr;
    QPushButton* btnClose = nullptr;
};

} // namespace cvd::console
