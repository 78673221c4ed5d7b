#include "console/frm_more_presets.h"

#include "console/console_context.h"
#include "console/controls.h"
#include "console/frm_edit_more_presets.h"
#include "console/window_owner.h"
#include "core/app_state.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

const QString kListProcedure = u"Procedure: frmMorePresets load"_s;

QStringList row_texts(const addressbook::PresetListRow& row)
{
    return {QString::number(row.number), row.description, row.recipient_label, row.message};
}

} // namespace

frmMorePresets::frmMorePresets(ConsoleContext& context, QWidget* parent) : QDialog(parent), m_context(context)
{
    setWindowTitle(u"Preset Messages"_s);
    lstPresets = make_control<QTreeWidget>(this, "lstPresets");
    lstPresets->setHeaderLabels({u"Number"_s, u"Description"_s, u"Recipient"_s, u"Message"_s});
    lstPresets->setRootIsDecorated(false);
    lstPresets->setUniformRowHeights(true);
    lstPresets->setSelectionMode(QAbstractItemView::SingleSelection);
    lstPresets->setAllColumnsShowFocus(true);
    // The list sorts itself by the chosen order's two columns, not by the view's one.
    lstPresets->setSortingEnabled(false);
    lstPresets->header()->setSectionsClickable(true);
    lstPresets->header()->setSortIndicatorShown(true);
    lstPresets->header()->setSortIndicator(-1, Qt::AscendingOrder);
    lstPresets->setAccessibleName(windowTitle());

    btnAccept = make_control<QPushButton>(this, "btnAccept", u"&Apply"_s);
    btnEdit = make_control<QPushButton>(this, "btnEdit", u"&Edit"_s);
    btnCancel = make_control<QPushButton>(this, "btnCancel", u"&Close"_s);
    // Apply is the default button, so Enter on the list uses the selected row.
    btnAccept->setDefault(true);
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(btnAccept, QDialogButtonBox::AcceptRole);
    buttons->addButton(btnEdit, QDialogButtonBox::ActionRole);
    buttons->addButton(btnCancel, QDialogButtonBox::RejectRole);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lstPresets);
    layout->addWidget(buttons);
    resize(760, 460);

    m_rows = addressbook::preset_list_rows(m_context.state, m_context.shared.presets, kListProcedure);
    m_order = addressbook::stored_sort_order(m_context.state.settings);
    if (m_order) {
        sort_by(*m_order);
    } else {
        show_rows(std::nullopt);
    }
    lstPresets->resizeColumnToContents(0);
    lstPresets->setColumnWidth(1, 160);
    lstPresets->setColumnWidth(2, 160);

    connect(lstPresets->header(), &QHeaderView::sectionClicked, this, &frmMorePresets::on_heading_clicked);
    connect(lstPresets, &QTreeWidget::itemDoubleClicked, this, &frmMorePresets::use_selected);
    connect(btnAccept, &QPushButton::clicked, this, &frmMorePresets::use_selected);
    connect(btnEdit, &QPushButton::clicked, this, &frmMorePresets::edit_selected);
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
    // However the window closes, the program buttons show the descriptions now in force.
    connect(this, &QDialog::finished, this, [this] {
        if (m_context.send_form != nullptr) {
            m_context.send_form->update_prog_captions();
        }
    });
    publish_accessibility(*this);
}

void frmMorePresets::show_rows(std::optional<int> selected)
{
    lstPresets->clear();
    for (const addressbook::PresetListRow& row : m_rows) {
        auto* item = new QTreeWidgetItem(lstPresets, row_texts(row));
        item->setTextAlignment(0, Qt::AlignRight | Qt::AlignVCenter);
        if (selected == row.number) {
            lstPresets->setCurrentItem(item);
        }
    }
}

void frmMorePresets::sort_by(addressbook::PresetSortOrder order)
{
    const std::optional<int> selected = selected_number();
    m_order = order;
    addressbook::store_sort_order(m_context.state.settings, order);
    addressbook::sort_preset_rows(order, m_rows);
    lstPresets->header()->setSortIndicator(static_cast<int>(addressbook::sort_column(order)),
                                           addressbook::sort_ascending(order) ? Qt::AscendingOrder
                                                                              : Qt::DescendingOrder);
    show_rows(selected);
}

void frmMorePresets::on_heading_clicked(int column)
{
    sort_by(addressbook::order_after_column_click(m_order, static_cast<addressbook::PresetColumn>(column)));
}

std::optional<int> frmMorePresets::selected_number() const
{
    const QList<QTreeWidgetItem*> selected = lstPresets->selectedItems();
    if (selected.isEmpty()) {
        return std::nullopt;
    }
    return m_rows.at(lstPresets->indexOfTopLevelItem(selected.constFirst())).number;
}

void frmMorePresets::use_selected()
{
    const std::optional<int> number = selected_number();
    if (!number) {
        return;
    }
    if (m_context.send_form != nullptr) {
        m_context.send_form->use_preset(m_context.shared.presets.at(*number));
    }
    accept();
}

void frmMorePresets::edit_selected()
{
    const std::optional<int> number = selected_number();
    if (!number) {
        return;
    }
    if (m_context.windows.open<frmEditMorePresets>(m_context, *number, this).exec() != QDialog::Accepted) {
        return;
    }
    // The row takes the stored values where it stands; the list is not sorted again.
    const auto found = std::find_if(m_rows.begin(), m_rows.end(),
                                    [&](const addressbook::PresetListRow& row) { return row.number == *number; });
    const addressbook::Preset& preset = m_context.shared.presets.at(*number);
    *found = {*number, preset.description,
              addressbook::preset_recipient_label(m_context.state, preset.recipient, kListProcedure), preset.message};
    QTreeWidgetItem* item = lstPresets->topLevelItem(static_cast<int>(found - m_rows.begin()));
    const QStringList texts = row_texts(*found);
    for (int column = 0; column < texts.size(); ++column) {
        item->setText(column, texts.at(column));
    }
}

} // namespace cvd::console
