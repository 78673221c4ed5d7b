#include "console/frm_add_recipient.h"

#include "addressbook/recipients_store.h"
#include "console/address_book_refresh.h"
#include "console/busy_lock.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "console/geometry.h"
#include "core/app_state.h"
#include "core/prompter.h"
#include "intake/registry_transfer.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

using addressbook::Protocol;
using addressbook::RecipientBox;
using addressbook::RecipientFlag;
using Controls = RecipientFrameControls;

constexpr int kTypeNormal = 0;
constexpr int kTypeAdHoc = 1;

} // namespace

frmAddRecipient::frmAddRecipient(ConsoleContext& context, bool is_edit, const QString& recipient_name, QWidget* parent)
    : QDialog(parent), m_context(context), m_is_edit(is_edit), m_loaded_name(is_edit ? recipient_name : QString())
{
    setObjectName(u"frmAddRecipient"_s);
    build_controls();
    load_carriers();
    if (m_carriers.isEmpty()) {
        m_context.state.prompter.show_box(*addressbook::refuse_recipient_window(false));
        m_close_on_activate = true;
    } else {
        select_carrier(0);
        set_add_defaults();
        if (m_is_edit) {
            load_row();
        }
    }
    show_tab(tabFrames->currentIndex());
    publish_accessibility(*this);
}

void frmAddRecipient::build_controls()
{
    tabFrames = make_control<QStackedWidget>(this, "tabFrames");
    for (int i = 0; i < addressbook::protocol_count; ++i) {
        m_frames.at(static_cast<std::size_t>(i)) = build_recipient_frames(this, static_cast<Protocol>(i));
    }
    // Tabs 0 to 8 hold the main frames, 9 to 17 the Advanced frames, in protocol order.
    for (const Controls& frame : m_frames) {
        tabFrames->addWidget(frame.main);
    }
    for (const Controls& frame : m_frames) {
        tabFrames->addWidget(frame.advanced);
    }
    cmbCarrierType = make_control<QComboBox>(this, "cmbCarrierType");
    cmbCarrierMaxChars = make_control<QComboBox>(this, "cmbCarrierMaxChars");
    cmbCarrierType->hide();
    cmbCarrierMaxChars->hide();
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabFrames);
    for (const Controls& frame : m_frames) {
        connect_frame(frame);
        frame.short_name->setEnabled(!m_is_edit);
    }
}

void frmAddRecipient::connect_frame(const Controls& frame)
{
    const auto on_leave = [this](QLineEdit* Controls::*box, RecipientBox rule, QLineEdit* control) {
        connect(control, &QLineEdit::editingFinished, this,
                [this, box, rule, control] { leave_box(box, rule, control->text()); });
    };
    on_leave(&Controls::short_name, RecipientBox::ShortName, frame.short_name);
    on_leave(&Controls::identity, RecipientBox::Identity, frame.identity);
    on_leave(&Controls::comment1, RecipientBox::Comment, frame.comment1);
    on_leave(&Controls::comment2, RecipientBox::Comment, frame.comment2);
    on_leave(&Controls::max_chars, RecipientBox::MaxChars, frame.max_chars);
    on_leave(&Controls::priority, RecipientBox::Priority, frame.priority);
    QLineEdit* full_name = frame.full_name;
    connect(full_name, &QLineEdit::editingFinished, this, [this, full_name] { leave_full_name(full_name->text()); });
    connect(frame.carrier, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (!m_syncing) {
            select_carrier(index);
        }
    });
    connect(frame.type, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (!m_syncing) {
            copy_type(index);
        }
    });
    for (const RecipientFlag which : addressbook::all_recipient_flags) {
        // The Extract Subject boxes are not copied between the three frames that have them.
        if (frame.flag(which) != nullptr && which != RecipientFlag::SendSubject) {
            connect(frame.flag(which), &QCheckBox::clicked, this,
                    [this, which](bool checked) { copy_flag(which, checked); });
        }
    }
    connect(frame.apply, &QPushButton::clicked, this, &frmAddRecipient::apply);
    connect(frame.close, &QPushButton::clicked, this, &QDialog::reject);
    connect(frame.to_advanced, &QPushButton::clicked, this,
            [this] { show_tab(tabFrames->currentIndex() + addressbook::protocol_count); });
    connect(frame.back, &QPushButton::clicked, this,
            [this] { show_tab(tabFrames->currentIndex() - addressbook::protocol_count); });
}

void frmAddRecipient::load_carriers()
{
    for (const addressbook::RecipientCarrier& carrier : addressbook::recipient_dialog_carriers(m_context.state)) {
        add_carrier(carrier);
    }
}

void frmAddRecipient::add_carrier(const addressbook::RecipientCarrier& carrier)
{
    m_carriers.append(carrier);
    m_syncing = true;
    for (const Controls& frame : m_frames) {
        frame.carrier->addItem(carrier.name);
    }
    cmbCarrierType->addItem(carrier.type);
    cmbCarrierMaxChars->addItem(QString::number(carrier.maxchars));
    m_syncing = false;
}

void frmAddRecipient::set_add_defaults()
{
    // Set after the first carrier was selected, so a new recipient shows its frame's Max Chars, not the
    // carrier's. The differing defaults of the frames are why flag clicks are copied only once activated.
    for (const Controls& frame : m_frames) {
        const addressbook::RecipientDefaults defaults = addressbook::recipient_add_defaults(frame.protocol);
        frame.max_chars->setText(defaults.max_chars);
        frame.priority->setText(addressbook::recipient_default_priority());
        for (const RecipientFlag which : addressbook::all_recipient_flags) {
            if (frame.flag(which) != nullptr) {
                frame.flag(which)->setChecked(defaults.flags.value(which));
            }
        }
    }
    copy_type(kTypeNormal);
}

void frmAddRecipient::load_row()
{
    const std::optional<addressbook::RecipientEntry> entry =
        addressbook::load_recipient(m_context.state, m_loaded_name);
    if (!entry) {
        // The row went away since it was listed: the boxes stay empty and Apply finds nothing to store.
        return;
    }
    set_twins(&Controls::short_name, entry->short_name);
    set_twins(&Controls::full_name, entry->full_name);
    set_twins(&Controls::identity, entry->identity);
    set_twins(&Controls::comment1, entry->comment1);
    set_twins(&Controls::comment2, entry->comment2);
    set_twins(&Controls::max_chars, entry->max_chars);
    set_twins(&Controls::priority, entry->priority);
    int carrier = m_frames.front().carrier->findText(entry->carrier, Qt::MatchFixedString);
    if (carrier < 0 && !entry->carrier.isEmpty()) {
        // The row names a carrier that is gone: it stays listed for this row, so an Apply keeps it instead of
        // moving the recipient to another carrier unseen.
        add_carrier(addressbook::recipient_carrier(entry->carrier, QString(), 0));
        carrier = static_cast<int>(m_carriers.size()) - 1;
    }
    select_carrier(carrier);
    copy_type(entry->type == addressbook::RecipientType::AdHoc ? kTypeAdHoc : kTypeNormal);
    for (const RecipientFlag which : addressbook::all_recipient_flags) {
        for (const Controls& frame : m_frames) {
            if (frame.flag(which) != nullptr) {
                frame.flag(which)->setChecked(entry->flags.value(which));
            }
        }
    }
}

void frmAddRecipient::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (m_activated) {
        return;
    }
    if (m_context.send_form != nullptr) {
        center_on_form(*this, m_context.send_form->window());
    }
    if (m_close_on_activate) {
        QMetaObject::invokeMethod(this, &QDialog::reject, Qt::QueuedConnection);
        return;
    }
    const Controls& frame = current_frame();
    frame.apply->setDefault(true);
    frame.full_name->setFocus();
    m_activated = true;
}

void frmAddRecipient::show_tab(int tab)
{
    tabFrames->setCurrentIndex(tab);
    const bool advanced = tab >= addressbook::protocol_count;
    const QString caption = m_is_edit ? u"Edit Recipient"_s : u"Add Recipient"_s;
    setWindowTitle(advanced ? caption + u" - Advanced"_s : caption);
    const Controls& frame = current_frame();
    frame.apply->setDefault(!advanced);
    frame.back->setDefault(advanced);
    (advanced ? frame.type : frame.carrier)->setFocus();
}

const RecipientFrameControls& frmAddRecipient::current_frame() const
{
    return m_frames.at(static_cast<std::size_t>(tabFrames->currentIndex() % addressbook::protocol_count));
}

void frmAddRecipient::select_carrier(int index)
{
    if (index < 0 || index >= m_carriers.size()) {
        return;
    }
    m_syncing = true;
    for (const Controls& frame : m_frames) {
        frame.carrier->setCurrentIndex(index);
    }
    cmbCarrierType->setCurrentIndex(index);
    cmbCarrierMaxChars->setCurrentIndex(index);
    m_syncing = false;
    const addressbook::RecipientCarrier& carrier = m_carriers.at(index);
    if (const std::optional<QString> max_chars =
            addressbook::max_chars_on_carrier_selected(m_is_edit, carrier.maxchars)) {
        set_twins(&Controls::max_chars, *max_chars);
    }
    if (const std::optional<Protocol> protocol = addressbook::protocol_of_dial_type(carrier.type)) {
        show_tab(addressbook::main_tab(*protocol));
    }
}

void frmAddRecipient::copy_type(int index)
{
    m_syncing = true;
    for (const Controls& frame : m_frames) {
        frame.type->setCurrentIndex(index);
    }
    m_syncing = false;
}

void frmAddRecipient::copy_flag(RecipientFlag which, bool checked)
{
    if (!m_activated) {
        return;
    }
    for (const Controls& frame : m_frames) {
        if (frame.flag(which) != nullptr) {
            frame.flag(which)->setChecked(checked);
        }
    }
}

void frmAddRecipient::leave_box(QLineEdit* Controls::*box, RecipientBox rule, const QString& text)
{
    set_twins(box, addressbook::on_leaving(rule, text));
}

void frmAddRecipient::leave_full_name(const QString& text)
{
    const QString full_name = addressbook::on_leaving(RecipientBox::FullName, text);
    set_twins(&Controls::full_name, full_name);
    set_twins(&Controls::short_name,
              addressbook::short_name_after_full_name(current_frame().short_name->text(), full_name));
}

void frmAddRecipient::set_twins(QLineEdit* Controls::*box, const QString& text)
{
    for (const Controls& frame : m_frames) {
        (frame.*box)->setText(text);
    }
}

addressbook::RecipientEntry frmAddRecipient::current_entry() const
{
    const Controls& frame = current_frame();
    addressbook::RecipientEntry entry;
    entry.short_name = frame.short_name->text();
    entry.full_name = frame.full_name->text();
    entry.identity = frame.identity->text();
    entry.type = frame.type->currentIndex() == kTypeAdHoc ? addressbook::RecipientType::AdHoc
                                                          : addressbook::RecipientType::Normal;
    entry.carrier = frame.carrier->currentText();
    entry.max_chars = frame.max_chars->text();
    entry.priority = frame.priority->text();
    entry.comment1 = frame.comment1->text();
    entry.comment2 = frame.comment2->text();
    for (const RecipientFlag which : addressbook::all_recipient_flags) {
        entry.flags.set(which, frame.flag(which) != nullptr && frame.flag(which)->isChecked());
    }
    return entry;
}

void frmAddRecipient::apply()
{
    const Controls& frame = current_frame();
    addressbook::ApplyOutcome outcome;
    {
        BusyLock busy(*this);
        outcome =
            addressbook::apply_recipient(m_context.state, frame.protocol, current_entry(), m_is_edit, m_loaded_name);
        set_twins(&Controls::short_name, outcome.short_name);
        set_twins(&Controls::full_name, outcome.full_name);
        if (outcome.notice) {
            m_context.state.prompter.show_box(*outcome.notice);
        }
    }
    // In edit mode every way out of Apply closes the dialog, a refused entry included.
    if (m_is_edit) {
        accept();
        return;
    }
    if (outcome.stored) {
        // The carrier, type, limits and flags stay for the next recipient.
        for (QLineEdit* Controls::*box : {&Controls::short_name, &Controls::full_name, &Controls::identity,
                                          &Controls::comment1, &Controls::comment2}) {
            set_twins(box, QString());
        }
        current_frame().full_name->setFocus();
    }
}

void frmAddRecipient::done(int result)
{
    if (!m_closed) {
        m_closed = true;
        rebuild_send_lists(m_context, &intake::publish_recipients);
    }
    QDialog::done(result);
}

} // namespace cvd::console
