#include "console/edit_group.h"

#include "console/address_book_refresh.h"
#include "console/busy_lock.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "core/app_state.h"
#include "core/prompter.h"

#include <QCheckBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace cvd::console {

edit_group::edit_group(ConsoleContext& context, QWidget* parent)
    : GroupForm(context, false, parent), m_name(context.shared.selected_name)
{
    setWindowTitle(u"Edit Group"_s);
    fuser->setEnabled(false);
    // A group deleted meanwhile shows empty; its Apply then finds no row to change.
    const addressbook::GroupEntry loaded =
        addressbook::load_group(m_context.state, m_name).value_or(addressbook::GroupEntry{m_name, {}, {}, {}, false});
    show_entry(loaded);
    m_loaded_on_call = loaded.on_call;
    Command1->setEnabled(false);
    publish_accessibility(*this);
}

QString edit_group::roster_name() const
{
    return m_name;
}

void edit_group::apply()
{
    {
        BusyLock busy(*this);
        if (const std::optional<Notice> refusal =
                addressbook::edit_group(m_context.state, m_name, m_loaded_on_call, entry())) {
            m_context.state.prompter.show_box(*refusal);
        }
    }
    accept();
}

void edit_group::done(int result)
{
    if (!m_closed) {
        m_closed = true;
        rebuild_send_lists(m_context);
    }
    GroupForm::done(result);
}

} // namespace cvd::console
