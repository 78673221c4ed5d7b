#include "console/preset_recipient_list.h"

#include <QHeaderView>

using namespace Qt::StringLiterals;

namespace cvd::console {

PresetRecipientList::PresetRecipientList(QWidget* parent) : QTreeWidget(parent)
{
    setObjectName(u"lstRecipient"_s);
    setColumnCount(2);
    setHeaderLabels({u"full name"_s, u"short name"_s});
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    header()->setSectionResizeMode(0, QHeaderView::Stretch);
    header()->setStretchLastSection(false);
}

void PresetRecipientList::fill(const QList<addressbook::PresetRecipientChoice>& choices, const QString& selected_name)
{
    clear();
    for (const addressbook::PresetRecipientChoice& choice : choices) {
        auto* item = new QTreeWidgetItem(this, {choice.label, choice.name});
        // Short names are compared without regard to case, as the recipients table does.
        if (currentItem() == nullptr && choice.name.compare(selected_name, Qt::CaseInsensitive) == 0) {
            setCurrentItem(item);
        }
    }
    resizeColumnToContents(1);
}

QString PresetRecipientList::selected_name() const
{
    const QList<QTreeWidgetItem*> selected = selectedItems();
    return selected.isEmpty() ? QString() : selected.constFirst()->text(1);
}

} // namespace cvd::console
