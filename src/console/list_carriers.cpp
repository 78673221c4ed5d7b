#include "console/list_carriers.h"

#include "addressbook/carrier_rules.h"
#include "addressbook/carriers_store.h"
#include "console/busy_lock.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "console/geometry.h"
#include "core/app_state.h"
#include "core/prompter.h"

#include <QDialogButtonBox>
#include <QEvent>
#include <QGuiApplication>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

list_carriers::list_carriers(ConsoleContext& context, bool edit_mode, QWidget* parent)
    : QDialog(parent), m_context(context), m_edit_mode(edit_mode)
{
    const addressbook::CarrierListCaptions captions = addressbook::carrier_list_captions(m_edit_mode);
    setWindowTitle(captions.title);
    lstCarriers = make_control<QListWidget>(this, "lstCarriers");
    lstCarriers->setToolTip(u"Carriers"_s);
    btnEdit = make_control<QPushButton>(this, "btnEdit", captions.action);
    btnClose = make_control<QPushButton>(this, "btnClose", u"&Close"_s);
    btnEdit->setDefault(true);

    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(btnEdit, QDialogButtonBox::ActionRole);
    buttons->addButton(btnClose, QDialogButtonBox::RejectRole);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lstCarriers);
    layout->addWidget(buttons);
    resize(320, 360);

    connect(btnEdit, &QPushButton::clicked, this, &list_carriers::on_edit);
    connect(btnClose, &QPushButton::clicked, this, &QDialog::reject);
    connect(lstCarriers, &QListWidget::itemDoubleClicked, this, &list_carriers::on_edit);
    load();
    publish_accessibility(*this);
}

bool list_carriers::event(QEvent* event)
{
    if (event->type() == QEvent::WindowActivate) {
        load();
    }
    return QDialog::event(event);
}

void list_carriers::load()
{
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const QString current = lstCarriers->currentItem() != nullptr ? lstCarriers->currentItem()->text() : QString();
    lstCarriers->clear();
    for (const addressbook::CarrierRow& row : addressbook::carrier_list(m_context.state)) {
        lstCarriers->addItem(row.name.value_or(QString()));
    }
    // The place in the list stays where it was, so that coming back from an edit keeps the operator's row.
    const QList<QListWidgetItem*> found = lstCarriers->findItems(current, Qt::MatchExactly);
    if (!current.isEmpty() && !found.isEmpty()) {
        lstCarriers->setCurrentItem(found.first());
    }
    QGuiApplication::restoreOverrideCursor();
}

void list_carriers::on_edit()
{
    const QList<QListWidgetItem*> selected = lstCarriers->selectedItems();
    if (selected.isEmpty()) {
        return;
    }
    QListWidgetItem* item = selected.first();
    const QString name = item->text();
    if (m_edit_mode) {
        m_context.shared.selected_name = name;
        m_context.catalog.open(u"frmAddCarrier"_s, this);
        load();
        return;
    }
    BusyLock lock(*this);
    if (const std::optional<Notice> refusal = addressbook::delete_listed_carrier(m_context.state, name)) {
        m_context.state.prompter.show_box(*refusal);
        return;
    }
    delete lstCarriers->takeItem(lstCarriers->row(item));
}

} // namespace cvd::console
