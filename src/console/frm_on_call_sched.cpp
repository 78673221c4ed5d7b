#include "console/frm_on_call_sched.h"

#include "console/busy_lock.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "console/frm_add_oncall.h"
#include "console/geometry.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

QString cell(const QTableWidget& grid, int row, int column)
{
    const QTableWidgetItem* item = grid.item(row, column);
    return item != nullptr ? item->text() : QString();
}

} // namespace

frmOnCallSched::frmOnCallSched(ConsoleContext& context, QString group, QWidget* parent)
    : QDialog(parent), m_context(context), m_group(std::move(group))
{
    setWindowTitle(u"On-Call Schedule"_s);
    OnCallGrid = make_control<QTableWidget>(this, "OnCallGrid", 0, 6);
    OnCallGrid->setHorizontalHeaderLabels(
        {u"Group"_s, u"Recipient"_s, u"Start Day"_s, u"Start Time"_s, u"Stop Day"_s, u"Stop Time"_s});
    OnCallGrid->setAccessibleName(u"On-call schedule"_s);
    OnCallGrid->setSelectionBehavior(QAbstractItemView::SelectRows);
    OnCallGrid->setSelectionMode(QAbstractItemView::ExtendedSelection);
    OnCallGrid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    OnCallGrid->verticalHeader()->hide();
    // Six short columns share the width evenly, so no day name or time is cut off.
    OnCallGrid->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    btnAdd = make_control<QPushButton>(this, "btnAdd", u"&Add"_s);
    btnEdit = make_control<QPushButton>(this, "btnEdit", u"&Edit"_s);
    btnDelete = make_control<QPushButton>(this, "btnDelete", u"&Delete"_s);
    btnAccept = make_control<QPushButton>(this, "btnAccept", u"A&pply"_s);
    btnCancel = make_control<QPushButton>(this, "btnCancel", u"&Close"_s);

    auto* buttons = new QHBoxLayout;
    for (QPushButton* button : {btnAdd, btnEdit, btnDelete}) {
        buttons->addWidget(button);
    }
    buttons->addStretch();
    buttons->addWidget(btnAccept);
    buttons->addWidget(btnCancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(OnCallGrid);
    layout->addLayout(buttons);

    for (const addressbook::RosterGridRow& row : addressbook::load_roster(m_context.state, m_group)) {
        OnCallGrid->insertRow(OnCallGrid->rowCount());
        set_row(OnCallGrid->rowCount() - 1, row);
    }

    connect(btnAdd, &QPushButton::clicked, this, &frmOnCallSched::add_span);
    connect(btnEdit, &QPushButton::clicked, this, &frmOnCallSched::edit_span);
    connect(OnCallGrid, &QTableWidget::cellDoubleClicked, this, &frmOnCallSched::edit_span);
    connect(btnDelete, &QPushButton::clicked, this, &frmOnCallSched::delete_spans);
    connect(btnAccept, &QPushButton::clicked, this, &frmOnCallSched::on_accept);
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
    publish_accessibility(*this);
    resize(680, 360);
    if (parent != nullptr) {
        center_on_form(*this, *parent);
    }
}

QList<addressbook::RosterGridRow> frmOnCallSched::grid_rows() const
{
    QList<addressbook::RosterGridRow> rows;
    for (int row = 0; row < OnCallGrid->rowCount(); ++row) {
        rows.append({cell(*OnCallGrid, row, 0), cell(*OnCallGrid, row, 1), cell(*OnCallGrid, row, 2),
                     cell(*OnCallGrid, row, 3), cell(*OnCallGrid, row, 4), cell(*OnCallGrid, row, 5)});
    }
    return rows;
}

void frmOnCallSched::set_row(int row, const addressbook::RosterGridRow& values)
{
    const QString texts[] = {values.group,      values.recipient, values.start_day,
                             values.start_time, values.stop_day,  values.stop_time};
    for (int column = 0; column < 6; ++column) {
        OnCallGrid->setItem(row, column, new QTableWidgetItem(texts[column]));
    }
}

void frmOnCallSched::add_span()
{
    frmAddOncall span(m_context, m_group, std::nullopt, this);
    if (span.exec() != QDialog::Accepted || !span.result()) {
        return;
    }
    OnCallGrid->clearSelection();
    const int row = OnCallGrid->rowCount();
    OnCallGrid->insertRow(row);
    set_row(row, *span.result());
}

void frmOnCallSched::edit_span()
{
    const QModelIndexList selected = OnCallGrid->selectionModel()->selectedRows();
    if (selected.isEmpty()) {
        return;
    }
    // The first selected row from the top is the one edited.
    const int row = std::min_element(selected.begin(), selected.end(), [](const auto& a, const auto& b) {
                        return a.row() < b.row();
                    })->row();
    frmAddOncall span(m_context, m_group, grid_rows().at(row), this);
    if (span.exec() == QDialog::Accepted && span.result()) {
        set_row(row, *span.result());
    }
}

void frmOnCallSched::delete_spans()
{
    QList<int> rows;
    for (const QModelIndex& index : OnCallGrid->selectionModel()->selectedRows()) {
        rows.append(index.row());
    }
    std::sort(rows.begin(), rows.end(), std::greater<>());
    for (const int row : rows) {
        OnCallGrid->removeRow(row);
    }
}

void frmOnCallSched::on_accept()
{
    {
        BusyLock lock(*this);
        addressbook::apply_roster(m_context.state, m_group, grid_rows());
    }
    accept();
}

} // namespace cvd::console
