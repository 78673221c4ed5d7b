#include "console/frm_group_members.h"

#include "addressbook/groups.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "core/app_state.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

frmGroupMembers::frmGroupMembers(ConsoleContext& context, QWidget* parent)
    : QDialog(parent), lstMembers(make_control<QListWidget>(this, "lstMembers")),
      close_button(make_control<QPushButton>(this, "close", u"&Close"_s))
{
    setWindowTitle(addressbook::group_members_caption(context.shared.info_group_label));
    lstMembers->addItems(addressbook::group_member_names(context.state, context.shared.selected_name));
    lstMembers->setAccessibleName(windowTitle());
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(close_button);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lstMembers);
    layout->addLayout(buttons);
    resize(360, 400);
    close_button->setDefault(true);
    connect(close_button, &QPushButton::clicked, this, &QDialog::reject);
    publish_accessibility(*this);
}

} // namespace cvd::console
