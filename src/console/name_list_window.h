#pragma once

#include "addressbook/recipients_store.h"

#include <QAbstractTableModel>
#include <QDialog>
#include <QList>

class QPushButton;
class QTreeView;

namespace cvd::console {

struct ConsoleContext;

// Short name and full name, one row per entry, loaded in one go: tens of thousands of rows show at once.
class NameListModel : public QAbstractTableModel
{
public:
    using QAbstractTableModel::QAbstractTableModel;

    void reset_rows(QList<addressbook::RecipientListEntry> rows);
    void remove_entry(int row);
    const addressbook::RecipientListEntry& entry(int row) const { return m_rows.at(row); }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    QList<addressbook::RecipientListEntry> m_rows;
};

// The list a recipient or group is chosen from for editing or deletion: the list, `btnEdit` and `btnClose`.
// A double click on the list does what `btnEdit` does. The list is read again whenever the window comes
// back from the window it opened.
class NameListWindow : public QDialog
{
public:
    NameListWindow(ConsoleContext& context, const char* list_name, QWidget* parent);

protected:
    // The rows to show, read afresh.
    virtual QList<addressbook::RecipientListEntry> read_rows() = 0;
    // What btnEdit does for the chosen short name; true when its line is to leave the list.
    virtual bool act_on(const QString& name) = 0;

    // Fills the list; called by the subclass once it is built and after each act.
    void reload();
    void set_captions(const QString& window, const QString& button);

    ConsoleContext& m_context;

private:
    void on_edit();

    NameListModel* m_model;
    QTreeView* m_list;
    QPushButton* btnEdit;
    QPushButton* btnClose;
};

} // namespace cvd::console
