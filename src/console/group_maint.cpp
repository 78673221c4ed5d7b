#include "console/group_maint.h"

#include "addressbook/groups.h"
#include "console/busy_lock.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "core/app_state.h"
#include "core/setting_keys.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace cvd::console {

group_maint::group_maint(ConsoleContext& context, QWidget* parent)
    : QDialog(parent), m_context(context), m_group(context.shared.selected_name),
      m_label_after(context.state.settings.get_setting_flag(setting_keys::display::group_label_after) != 0),
      lblNonMembers(make_control<QLabel>(this, "lblNonMembers", u"Non-members"_s)),
      non_list(make_control<QListWidget>(this, "non_list")),
      lblMembers(make_control<QLabel>(this, "lblMembers", u"Members"_s)),
      member_list(make_control<QListWidget>(this, "member_list")),
      Command3(make_control<QPushButton>(this, "Command3", u"&Apply"_s)),
      btnClose(make_control<QPushButton>(this, "btnClose", u"&Close"_s))
{
    setObjectName(u"group_maint"_s);
    setWindowTitle(u"Set Group Members"_s);
    build_controls();
    const addressbook::MemberLists lists = addressbook::group_maint_lists(m_context.state, m_group, m_label_after);
    member_list->addItems(lists.members);
    non_list->addItems(lists.non_members);
    publish_accessibility(*this);
}

void group_maint::build_controls()
{
    auto* grid = new QGridLayout(this);
    lblNonMembers->setBuddy(non_list);
    lblMembers->setBuddy(member_list);
    grid->addWidget(lblNonMembers, 0, 0);
    grid->addWidget(lblMembers, 0, 1);
    grid->addWidget(non_list, 1, 0);
    grid->addWidget(member_list, 1, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(Command3);
    buttons->addWidget(btnClose);
    grid->addLayout(buttons, 2, 0, 1, 2);
    resize(640, 460);

    for (QListWidget* list : {non_list, member_list}) {
        list->setSelectionMode(QAbstractItemView::SingleSelection);
        list->installEventFilter(this);
        // Qt reports clicked only for the left button; another button only gives the list the focus.
        connect(list, &QListWidget::clicked, this,
                [this, list](const QModelIndex& index) { move_entry(*list, index.row()); });
    }
    connect(Command3, &QPushButton::clicked, this, &group_maint::apply);
    connect(btnClose, &QPushButton::clicked, this, &QDialog::reject);
}

void group_maint::move_entry(QListWidget& from, int row)
{
    QListWidgetItem* item = from.takeItem(row);
    if (item == nullptr) {
        return;
    }
    QListWidget& to = &from == non_list ? *member_list : *non_list;
    to.addItem(item);
}

bool group_maint::eventFilter(QObject* watched, QEvent* event)
{
    auto* list = qobject_cast<QListWidget*>(watched);
    if (list != nullptr && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space) {
            if (list->currentItem() != nullptr && list->currentItem()->isSelected()) {
                move_entry(*list, list->currentRow());
            }
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void group_maint::apply()
{
    {
        BusyLock busy(*this);
        QStringList members;
        for (int row = 0; row < member_list->count(); ++row) {
            members.append(member_list->item(row)->text());
        }
        addressbook::apply_group_members(m_context.state, m_group, members, m_label_after);
    }
    accept();
}

} // namespace cvd::console
