#pragma once

#include "addressbook/rosters.h"

#include <QDialog>

class QPushButton;
class QTableWidget;

namespace cvd::console {

struct ConsoleContext;

// The weekly roster of one on-call group. It works on a copy in its grid; nothing reaches the table before
// Apply, which replaces the group's whole roster at once.
class frmOnCallSched : public QDialog
{
public:
    frmOnCallSched(ConsoleContext& context, QString group, QWidget* parent);

private:
    QList<addressbook::RosterGridRow> grid_rows() const;
    void set_row(int row, const addressbook::RosterGridRow& values);
    void add_span();
    void edit_span();
    void delete_spans();
    void on_accept();

    ConsoleContext& m_context;
    QString m_group;
    QTableWidget* OnCallGrid;
    QPushButton* btnAdd;
    QPushButton* btnEdit;
    QPushButton* btnDelete;
    QPushButton* btnAccept;
    QPushButton* btnCancel;
};

} // namespace cvd::console
