#include "console/list_groups.h"

#include "console/address_book_refresh.h"
#include "console/console_context.h"
#include "core/app_state.h"
#include "core/prompter.h"
#include "intake/registry_transfer.h"

#include <QGuiApplication>

using namespace Qt::StringLiterals;

namespace cvd::console {

list_groups::list_groups(ConsoleContext& context, Mode mode, OpenNext open_next, QWidget* parent)
    : NameListWindow(context, "lstgroups", parent), m_mode(mode), m_open_next(std::move(open_next))
{
    setObjectName(u"list_groups"_s);
    const addressbook::GroupListCaptions captions = addressbook::group_list_captions(m_mode);
    set_captions(captions.window, captions.button);
    reload();
}

QList<addressbook::RecipientListEntry> list_groups::read_rows()
{
    return addressbook::list_groups(m_context.state);
}

bool list_groups::act_on(const QString& name)
{
    m_context.shared.selected_name = name;
    if (m_mode != Mode::Delete) {
        if (m_open_next) {
            m_open_next(m_mode, this);
        }
        reload();
        return false;
    }
    if (const std::optional<Notice> refusal = addressbook::delete_group(m_context.state, name)) {
        m_context.state.prompter.show_box(*refusal);
        return false;
    }
    return true;
}

void list_groups::done(int result)
{
    // edit_group rebuilds the send window's list itself when it closes.
    if (!m_closed && m_mode != Mode::Edit) {
        m_closed = true;
        rebuild_send_lists(m_context, &intake::publish_groups);
    }
    NameListWindow::done(result);
}

} // namespace cvd::console
