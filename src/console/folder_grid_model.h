#pragma once

#include "queue/folders.h"

#include <QAbstractTableModel>
#include <QList>

namespace cvd::console {

// The rows of a queue folder for its Status_Grid: held in memory, loaded in one go, dates formatted only for
// the rows on screen, sorted here by the folder's six routines.
class FolderGridModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    FolderGridModel(QString date_heading, QString number_heading, QObject* parent);

    void set_rows(QList<queue::FolderRow> rows);
    const queue::FolderRow& row_at(int row) const { return m_rows.at(row); }
    // Numeric by the date number, or by the text of "Sent To" or "Message" without regard to case; stable, so
    // equal keys keep the order of the query.
    void sort_rows(int column, bool numeric, bool descending);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    QString m_date_heading;
    QString m_number_heading;
    QList<queue::FolderRow> m_rows;
};

} // namespace cvd::console
