#include "console/add_group.h"

#include "console/address_book_refresh.h"
#include "console/busy_lock.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "console/geometry.h"
#include "core/app_state.h"
#include "core/prompter.h"
#include "core/text.h"
#include "intake/registry_transfer.h"

#include <QCheckBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace cvd::console {

add_group::add_group(ConsoleContext& context, QWidget* parent) : GroupForm(context, true, parent)
{
    setObjectName(u"add_group"_s);
    setWindowTitle(u"Add Group"_s);
    if (const std::optional<Notice> refusal = addressbook::add_group_window_refusal(m_context.state)) {
        m_context.state.prompter.show_box(*refusal);
        m_close_on_activate = true;
    }
    publish_accessibility(*this);
}

void add_group::showEvent(QShowEvent* event)
{
    GroupForm::showEvent(event);
    if (m_activated) {
        return;
    }
    m_activated = true;
    if (m_close_on_activate) {
        QMetaObject::invokeMethod(this, &QDialog::reject, Qt::QueuedConnection);
        return;
    }
    if (m_context.send_form != nullptr) {
        center_on_form(*this, m_context.send_form->window());
    }
    ffull_name->setFocus();
}

QString add_group::roster_name() const
{
    return fuser->text();
}

void add_group::apply()
{
    {
        BusyLock busy(*this);
        fuser->setText(trim_blanks(fuser->text()));
        ffull_name->setText(trim_blanks(ffull_name->text()));
        const addressbook::GroupApplyOutcome outcome = addressbook::add_group(m_context.state, entry());
        fuser->setText(outcome.short_name);
        m_context.state.prompter.show_box(outcome.notice);
        if (outcome.stored) {
            // The on-call box keeps its state for the next group.
            for (QLineEdit* box : {fuser, ffull_name, fExtra1, fExtra2}) {
                box->clear();
            }
        }
    }
    // Every way out ends here, so after a refusal the operator must change something before Apply works again.
    ffull_name->setFocus();
    Command1->setEnabled(false);
}

void add_group::done(int result)
{
    if (!m_closed) {
        m_closed = true;
        rebuild_send_lists(m_context, &intake::publish_groups);
    }
    GroupForm::done(result);
}

} // namespace cvd::console
