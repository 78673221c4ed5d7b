#include "console/folder_grid_model.h"

#include "desk/folder_rules.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

constexpr int kColumns = 5;
constexpr int kNumberDigits = 15;

} // namespace

FolderGridModel::FolderGridModel(QString date_heading, QString number_heading, QObject* parent)
    : QAbstractTableModel(parent), m_date_heading(std::move(date_heading)), m_number_heading(std::move(number_heading))
{
}

void FolderGridModel::set_rows(QList<queue::FolderRow> rows)
{
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
}

void FolderGridModel::sort_rows(int column, bool numeric, bool descending)
{
    const auto text_of = [column](const queue::FolderRow& row) -> const QString& {
        return column == desk::kToColumn ? row.label : row.message;
    };
    layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    std::stable_sort(m_rows.begin(), m_rows.end(), [&](const queue::FolderRow& a, const queue::FolderRow& b) {
        const queue::FolderRow& first = descending ? b : a;
        const queue::FolderRow& second = descending ? a : b;
        if (numeric) {
            return first.date_number < second.date_number;
        }
        return QString::compare(text_of(first), text_of(second), Qt::CaseInsensitive) < 0;
    });
    layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

int FolderGridModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int FolderGridModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : kColumns;
}

QVariant FolderGridModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::AccessibleTextRole)) {
        return {};
    }
    const queue::FolderRow& row = m_rows.at(index.row());
    switch (index.column()) {
    case desk::kIdColumn:
        return QString::number(row.id);
    case desk::kDateColumn:
        return queue::general_date_text(row.date);
    case desk::kToColumn:
        return row.label;
    case desk::kMessageColumn:
        return row.message;
    case desk::kDateNumberColumn:
        return QString::number(row.date_number, 'g', kNumberDigits);
    default:
        return {};
    }
}

QVariant FolderGridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return QAbstractTableModel::headerData(section, orientation, role);
    }
    switch (section) {
    case desk::kIdColumn:
        return u"Message Id"_s;
    case desk::kDateColumn:
        return m_date_heading;
    case desk::kToColumn:
        return u"Sent To"_s;
    case desk::kMessageColumn:
        return u"Message"_s;
    case desk::kDateNumberColumn:
        return m_number_heading;
    default:
        return {};
    }
}

} // namespace cvd::console
