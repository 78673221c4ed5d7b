#pragma once

#include "addressbook/groups.h"
#include "console/name_list_window.h"

#include <functional>

namespace cvd::console {

// The groups by full name. The chosen short name goes to ConsoleState::selected_name; edit mode then opens
// edit_group, members mode group_maint (both through `open_next`), and delete mode deletes at once, without
// asking, unless messages wait for the group.
class list_groups : public NameListWindow
{
public:
    using Mode = addressbook::GroupListMode;
    // Opens the next window for ConsoleState::selected_name, modal over `caller`.
    using OpenNext = std::function<void(Mode mode, QWidget* caller)>;

    list_groups(ConsoleContext& context, Mode mode, OpenNext open_next, QWidget* parent);

    void done(int result) override;

protected:
    QList<addressbook::RecipientListEntry> read_rows() override;
    bool act_on(const QString& name) override;

private:
    Mode m_mode;
    OpenNext m_open_next;
    bool m_closed = false;
};

} // namespace cvd::console
