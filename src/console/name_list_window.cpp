#include "console/name_list_window.h"

#include "console/busy_lock.h"
#include "console/controls.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

void NameListModel::reset_rows(QList<addressbook::RecipientListEntry> rows)
{
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
}

void NameListModel::remove_entry(int row)
{
    beginRemoveRows({}, row, row);
    m_rows.removeAt(row);
    endRemoveRows();
}

int NameListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int NameListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : 2;
}

QVariant NameListModel::data(const QModelIndex& index, int role) const
{
    if (role != Qt::DisplayRole || !index.isValid()) {
        return {};
    }
    const addressbook::RecipientListEntry& row = m_rows.at(index.row());
    return index.column() == 0 ? row.name : row.full_name;
}

QVariant NameListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal) {
        return {};
    }
    return section == 0 ? u"short name"_s : u"full name"_s;
}

NameListWindow::NameListWindow(ConsoleContext& context, const char* list_name, QWidget* parent)
    : QDialog(parent), m_context(context), m_model(new NameListModel(this)),
      m_list(make_control<QTreeView>(this, list_name)), btnEdit(make_control<QPushButton>(this, "btnEdit")),
      btnClose(make_control<QPushButton>(this, "btnClose", u"&Close"_s))
{
    m_list->setModel(m_model);
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setItemsExpandable(false);
    m_list->setAllColumnsShowFocus(true);
    m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->header()->resizeSection(0, 200);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnEdit);
    buttons->addWidget(btnClose);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    layout->addLayout(buttons);
    resize(520, 440);
    connect(btnEdit, &QPushButton::clicked, this, &NameListWindow::on_edit);
    connect(m_list, &QTreeView::doubleClicked, this, &NameListWindow::on_edit);
    connect(btnClose, &QPushButton::clicked, this, &QDialog::reject);
}

void NameListWindow::reload()
{
    m_model->reset_rows(read_rows());
}

void NameListWindow::set_captions(const QString& window, const QString& button)
{
    setWindowTitle(window);
    btnEdit->setText(button);
    btnEdit->setDefault(true);
    m_list->setAccessibleName(window);
    publish_accessibility(*this);
}

void NameListWindow::on_edit()
{
    BusyLock busy(*this);
    const QModelIndexList chosen = m_list->selectionModel()->selectedRows();
    if (chosen.isEmpty()) {
        return;
    }
    const int row = chosen.front().row();
    const QString name = m_model->entry(row).name;
    if (act_on(name)) {
        m_model->remove_entry(row);
    }
}

} // namespace cvd::console
