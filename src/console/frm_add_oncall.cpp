#include "console/frm_add_oncall.h"

#include "console/console_context.h"
#include "console/controls.h"
#include "console/geometry.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>
#include <QTimeEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

// The "medium time" form: hours and minutes, no seconds.
QTimeEdit* make_time_picker(QWidget* parent, const char* name)
{
    auto* picker = make_control<QTimeEdit>(parent, name);
    picker->setDisplayFormat(u"h:mm AP"_s);
    picker->setTime(QTime(12, 0));
    return picker;
}

// Selects the entry with that text; a text that is not in the list leaves the list as it is.
void select_text(QComboBox& list, const QString& text)
{
    const int index = list.findText(text);
    if (index >= 0) {
        list.setCurrentIndex(index);
    }
}

} // namespace

frmAddOncall::frmAddOncall(ConsoleContext& context, const QString& group,
                           std::optional<addressbook::RosterGridRow> edited, QWidget* parent)
    : QDialog(parent), m_group(group), m_edited(std::move(edited))
{
    setWindowTitle(m_edited ? u"Edit Schedule"_s : u"Add Schedule"_s);
    fuser = make_control<QComboBox>(this, "fuser");
    fstart_day = make_control<QComboBox>(this, "fstart_day");
    fstop_day = make_control<QComboBox>(this, "fstop_day");
    fstart_time = make_time_picker(this, "fstart_time");
    fstop_time = make_time_picker(this, "fstop_time");
    btnApply = make_control<QPushButton>(this, "btnApply", u"&Apply"_s);
    btnCancel = make_control<QPushButton>(this, "btnCancel", u"&Close"_s);

    auto* form = new QFormLayout;
    add_labelled_row(*form, this, "lblUser", u"&Recipient"_s, fuser);
    add_labelled_row(*form, this, "lblStartDay", u"Start &Day"_s, fstart_day);
    add_labelled_row(*form, this, "lblStartTime", u"Start &Time"_s, fstart_time);
    add_labelled_row(*form, this, "lblStopDay", u"St&op Day"_s, fstop_day);
    add_labelled_row(*form, this, "lblStopTime", u"Sto&p Time"_s, fstop_time);
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(btnApply, QDialogButtonBox::AcceptRole);
    buttons->addButton(btnCancel, QDialogButtonBox::RejectRole);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);

    const QStringList days = addressbook::roster_day_names();
    fstart_day->addItems(days);
    fstop_day->addItems(days);
    fuser->addItems(addressbook::roster_member_choices(context.state, m_group));
    if (m_edited) {
        show_row(*m_edited);
    }

    connect(btnApply, &QPushButton::clicked, this, &frmAddOncall::on_apply);
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
    publish_accessibility(*this);
    resize(sizeHint().expandedTo(QSize(360, 0)));
    if (parent != nullptr) {
        center_on_form(*this, *parent);
    }
}

void frmAddOncall::show_row(const addressbook::RosterGridRow& row)
{
    select_text(*fuser, row.recipient);
    select_text(*fstart_day, row.start_day);
    select_text(*fstop_day, row.stop_day);
    if (const std::optional<QTime> start = addressbook::read_roster_time(row.start_time)) {
        fstart_time->setTime(*start);
    }
    if (const std::optional<QTime> stop = addressbook::read_roster_time(row.stop_time)) {
        fstop_time->setTime(*stop);
    }
}

void frmAddOncall::on_apply()
{
    if (m_edited) {
        m_result = addressbook::edited_roster_row(*m_edited, fuser->currentText(), fstart_day->currentText(),
                                                  fstart_time->time(), fstop_day->currentText(), fstop_time->time());
    } else {
        m_result = addressbook::new_roster_row(m_group, fuser->currentText(), fstart_day->currentText(),
                                               fstart_time->time(), fstop_day->currentText(), fstop_time->time());
    }
    accept();
}

} // namespace cvd::console
