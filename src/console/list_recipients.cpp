#include "console/list_recipients.h"

#include "console/address_book_refresh.h"
#include "console/console_context.h"
#include "core/app_state.h"
#include "core/prompter.h"
#include "intake/registry_transfer.h"

#include <QGuiApplication>

using namespace Qt::StringLiterals;

namespace cvd::console {

list_recipients::list_recipients(ConsoleContext& context, Mode mode, EditRecipient edit, QWidget* parent)
    : NameListWindow(context, "lstRecipients", parent), m_mode(mode), m_edit(std::move(edit))
{
    if (m_mode == Mode::Edit) {
        set_captions(u"Edit Recipient"_s, u"&Edit"_s);
    } else {
        set_captions(u"Delete Recipient"_s, u"&Delete"_s);
    }
    reload();
}

QList<addressbook::RecipientListEntry> list_recipients::read_rows()
{
    return addressbook::recipient_list(m_context.state);
}

bool list_recipients::act_on(const QString& name)
{
    if (m_mode == Mode::Edit) {
        if (m_edit) {
            m_edit(name, this);
        }
        reload();
        return false;
    }
    if (const std::optional<Notice> refusal = addressbook::delete_listed_recipient(m_context.state, name)) {
        m_context.state.prompter.show_box(*refusal);
        return false;
    }
    return true;
}

void list_recipients::done(int result)
{
    // In edit mode the recipient dialog has rebuilt the lists already.
    if (!m_closed && m_mode == Mode::Delete) {
        m_closed = true;
        rebuild_send_lists(m_context, &intake::publish_recipients);
    }
    NameListWindow::done(result);
}

} // namespace cvd::console
