#include "console/frm_info.h"

#include "addressbook/pickers.h"
#include "console/busy_lock.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "core/app_state.h"
#include "core/prompter.h"

#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

constexpr SettingKey kGroupLabelAfter{u"display", u"group_label_after"};
constexpr SettingKey kExtra1Label{u"display", u"extra1_label"};
constexpr SettingKey kExtra2Label{u"display", u"extra2_label"};

constexpr int kBoxMinimumWidth = 260;

} // namespace

frmInfo::frmInfo(ConsoleContext& context, QWidget* parent) : QDialog(parent), m_context(context)
{
    build_controls();
    if (m_context.shared.info_filter) {
        prepare_filter();
    } else {
        show_details();
    }
    publish_accessibility(*this);
}

void frmInfo::build_controls()
{
    setWindowTitle(u"Recipient Info"_s);
    SettingsStore& settings = m_context.state.settings;
    lblFullName = make_control<QLabel>(this, "lblFullName", u"Full Name"_s);
    txtFullName = make_control<QLineEdit>(this, "txtFullName");
    lblShortName = make_control<QLabel>(this, "lblShortName", u"Short Name"_s);
    txtShortName = make_control<QLineEdit>(this, "txtShortName");
    lblComment1 = make_control<QLabel>(this, "lblComment1", settings.get_setting_text(kExtra1Label));
    txtExtra1 = make_control<QLineEdit>(this, "txtExtra1");
    lblComment2 = make_control<QLabel>(this, "lblComment2", settings.get_setting_text(kExtra2Label));
    txtExtra2 = make_control<QLineEdit>(this, "txtExtra2");
    btnGroupMembers = make_control<QPushButton>(this, "btnGroupMembers", u"Members"_s);
    btnClose = make_control<QPushButton>(this, "btnClose", u"Close"_s);

    auto* grid = new QGridLayout(this);
    const std::pair<QLabel*, QLineEdit*> rows[] = {
        {lblFullName, txtFullName}, {lblShortName, txtShortName}, {lblComment1, txtExtra1}, {lblComment2, txtExtra2}};
    int row = 0;
    for (const auto& [label, box] : rows) {
        label->setBuddy(box);
        box->setMinimumWidth(kBoxMinimumWidth);
        grid->addWidget(label, row, 0);
        grid->addWidget(box, row, 1);
        ++row;
    }
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnGroupMembers);
    buttons->addWidget(btnClose);
    grid->addLayout(buttons, row, 0, 1, 2);
    connect(btnClose, &QPushButton::clicked, this, &QDialog::reject);
}

void frmInfo::show_details()
{
    const QString& key = m_context.shared.info_key;
    const bool is_group = !m_context.shared.info_group_label.isEmpty();
    if (is_group) {
        setWindowTitle(u"Group Info"_s);
    }
    btnGroupMembers->setVisible(is_group);
    connect(btnGroupMembers, &QPushButton::clicked, this, [this] {
        m_context.shared.selected_name = m_context.shared.info_key;
        m_context.catalog.open(u"frmGroupMembers"_s, this);
    });
    const addressbook::RecipientDetails details = addressbook::recipient_details(m_context.state, key);
    txtFullName->setText(details.full_name);
    txtShortName->setText(key);
    txtExtra1->setText(details.extra1);
    txtExtra2->setText(details.extra2);
    // The boxes are for reading only: focus that lands on one goes on to Close.
    for (QLineEdit* box : {txtFullName, txtShortName, txtExtra1, txtExtra2}) {
        box->setReadOnly(true);
        box->installEventFilter(this);
    }
    btnClose->setDefault(true);
    btnClose->setFocus();
}

void frmInfo::prepare_filter()
{
    setWindowTitle(u"Filter Recipients"_s);
    btnGroupMembers->setText(u"Filter"_s);
    btnGroupMembers->setDefault(true);
    connect(btnGroupMembers, &QPushButton::clicked, this, &frmInfo::run_filter);
    txtFullName->setFocus();
}

void frmInfo::run_filter()
{
    const addressbook::PickerFilter filter{txtFullName->text(), txtShortName->text(), txtExtra1->text(),
                                           txtExtra2->text()};
    QList<addressbook::PickerEntry> entries;
    {
        BusyLock busy(*this);
        const bool label_after = m_context.state.settings.get_setting_flag(kGroupLabelAfter) != 0;
        entries = addressbook::filter_recipients(m_context.state, filter, label_after);
    }
    if (entries.isEmpty()) {
        m_context.state.prompter.show_box(Notice{u"No matching recipients found"_s, u"No Records Found"_s});
        m_context.send_form->show_users();
        return;
    }
    m_context.send_form->fill_unpicked(entries);
    accept();
}

bool frmInfo::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FocusIn && qobject_cast<QLineEdit*>(watched) != nullptr) {
        btnClose->setFocus();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace cvd::console
