// The composition area of the send window: both recipient lists, the message, SEND and the program buttons.
#include "console/busy_lock.h"
#include "console/controls.h"
#include "console/send_form.h"
#include "core/app_state.h"
#include "core/clock.h"
#include "core/text.h"
#include "desk/pick_lists.h"
#include "desk/send_form_rules.h"
#include "dispatch/dispatch_loop.h"
#include "queue/send_message.h"

#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScopeGuard>
#include <QTextCursor>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace cvd::console {

using addressbook::PickerEntry;

void send_form::show_users()
{
    const QList<PickerEntry> entries = addressbook::picker_entries(m_context.state, label_after());
    fill_list(*picked, m_picked_entries, {});
    fill_list(*unpicked, m_unpicked_entries, entries);
    if (isVisible() && isEnabled() && unpicked->isEnabled()) {
        unpicked->setFocus();
    }
}

void send_form::fill_unpicked(const QList<PickerEntry>& entries)
{
    fill_list(*unpicked, m_unpicked_entries, entries);
}

void send_form::fill_list(QListWidget& list, QList<PickerEntry>& entries, const QList<PickerEntry>& source)
{
    // The source comes in the list's order, so the rows go in at once, without a sort per row.
    list.setUpdatesEnabled(false);
    list.clear();
    entries = source;
    QStringList labels;
    labels.reserve(source.size());
    for (const PickerEntry& entry : source) {
        labels.append(entry.label);
    }
    list.addItems(labels);
    list.setUpdatesEnabled(true);
}

void send_form::insert_entry(QListWidget& list, QList<PickerEntry>& entries, const PickerEntry& entry)
{
    const auto place = std::upper_bound(entries.begin(), entries.end(), entry, addressbook::picker_entry_less);
    const int row = static_cast<int>(place - entries.begin());
    entries.insert(row, entry);
    list.insertItem(row, entry.label);
}

PickerEntry send_form::take_entry(QListWidget& list, QList<PickerEntry>& entries, int row)
{
    delete list.takeItem(row);
    return entries.takeAt(row);
}

void send_form::move_entry(bool from_unpicked, int row)
{
    if (from_unpicked) {
        insert_entry(*picked, m_picked_entries, take_entry(*unpicked, m_unpicked_entries, row));
    } else {
        insert_entry(*unpicked, m_unpicked_entries, take_entry(*picked, m_picked_entries, row));
    }
}

bool send_form::list_mouse_press(bool on_unpicked, QMouseEvent& event)
{
    if (event.button() == Qt::LeftButton) {
        m_mouse_used = true;
        m_shift = event.modifiers().testFlag(Qt::ShiftModifier);
        return false;
    }
    if (on_unpicked) {
        filter_recipients();
        upfocus_button->click();
    } else {
        upfocus2_button->click();
    }
    return true;
}

void send_form::list_clicked(bool on_unpicked, int row)
{
    const auto clear_flag = qScopeGuard([this] { m_mouse_used = false; });
    QList<PickerEntry>& entries = on_unpicked ? m_unpicked_entries : m_picked_entries;
    if (!m_mouse_used || row < 0 || row >= entries.size()) {
        return; // a selection made with the keyboard moves nothing
    }
    // The area stays disabled while the click works, so that a double click cannot act twice.
    m_central->setEnabled(false);
    const auto enable = qScopeGuard([this] { m_central->setEnabled(true); });
    const PickerEntry entry = entries.at(row);
    const desk::ListClick click = on_unpicked ? desk::unpicked_click(entry, m_shift, label_after())
                                              : desk::picked_click(entry, m_shift, label_after());
    switch (click.action) {
    case desk::ClickAction::Details:
        show_details(click.detail_key, click.group_label);
        break;
    case desk::ClickAction::AskAdhocPin: {
        const QString pin = m_context.doors.ask_adhoc_pin ? m_context.doors.ask_adhoc_pin() : QString();
        if (const std::optional<PickerEntry> numbered = addressbook::adhoc_picked_entry(entry, pin)) {
            insert_entry(*picked, m_picked_entries, *numbered);
        }
        break;
    }
    case desk::ClickAction::Drop:
        take_entry(*picked, m_picked_entries, row);
        break;
    case desk::ClickAction::Move:
        move_entry(on_unpicked, row);
        break;
    }
}

bool send_form::list_key_press(bool on_unpicked, QKeyEvent& event)
{
    const bool enter = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    if (!enter || (event.modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier) {
        return false;
    }
    QListWidget& list = on_unpicked ? *unpicked : *picked;
    const int row = list.currentRow();
    if (row < 0 || list.currentItem() == nullptr || !list.currentItem()->isSelected()) {
        return true;
    }
    move_entry(on_unpicked, row);
    (on_unpicked ? upfocus_button : upfocus2_button)->click();
    return true;
}

void send_form::show_details(const QString& key, const QString& group_label)
{
    m_context.shared.info_filter = false;
    m_context.shared.info_key = key;
    m_context.shared.info_group_label = group_label;
    if (m_context.doors.info_details) {
        m_context.doors.info_details();
    }
}

void send_form::filter_recipients()
{
    m_central->setEnabled(false);
    const auto enable = qScopeGuard([this] { m_central->setEnabled(true); });
    m_context.shared.info_filter = true;
    if (m_context.doors.info_filter) {
        m_context.doors.info_filter();
    }
}

void send_form::upfocus()
{
    picked->setFocus();
    unpicked->setFocus();
}

void send_form::upfocus2()
{
    unpicked->setFocus();
    picked->setFocus();
}

void send_form::message_changed()
{
    const QString text = message->toPlainText();
    if (m_max_length > 0 && text.size() > m_max_length) {
        // The box takes no more than the setting allows, whether typed or pasted.
        const int caret = std::min(message->textCursor().position(), m_max_length);
        message->setPlainText(text.left(m_max_length));
        QTextCursor cursor = message->textCursor();
        cursor.setPosition(caret);
        message->setTextCursor(cursor);
        return; // the change of setPlainText comes back here
    }
    cc->setText(QString::number(trim_blanks(text).size()));
    lay_out();
}

bool send_form::program_button_press(int number, QMouseEvent& event)
{
    m_context.shared.preset_number = number;
    if (event.button() == Qt::LeftButton) {
        return false; // the click uses the preset
    }
    if (m_context.doors.edit_preset) {
        m_context.doors.edit_preset(number);
    }
    return true;
}

void send_form::use_preset_number(int number)
{
    m_context.shared.preset_number = number;
    use_preset(m_context.shared.presets.at(number));
}

void send_form::use_preset(const addressbook::Preset& preset)
{
    if (trim_blanks(preset.message).isEmpty()) {
        m_context.state.prompter.show_box(desk::not_programmed_notice());
        return;
    }
    const QString recipient = trim_blanks(preset.recipient);
    if (!recipient.isEmpty()) {
        message->clear();
        if (const std::optional<QString> label =
                desk::preset_recipient_label(m_context.state, recipient, label_after())) {
            show_users();
            const QList<qsizetype> rows = desk::entries_with_label(m_unpicked_entries, *label);
            // From the back, so that the rows still to move keep their places.
            for (auto row = rows.crbegin(); row != rows.crend(); ++row) {
                move_entry(true, static_cast<int>(*row));
            }
        }
    }
    const QTextCursor cursor = message->textCursor();
    desk::MessageEdit edit{message->toPlainText(), cursor.selectionStart(),
                           cursor.selectionEnd() - cursor.selectionStart(), cursor.position()};
    message->setPlainText(desk::insert_preset_text(edit, preset.message));
    message->moveCursor(QTextCursor::End);
    message->setFocus();
}

bool send_form::load_message(const QString& recipient, const QString& text)
{
    show_users();
    if (m_unpicked_entries.isEmpty()) {
        return false;
    }
    // From the back, so that the entries still to move keep their rows.
    for (auto row = m_unpicked_entries.size() - 1; row >= 0; --row) {
        if (trim_blanks(m_unpicked_entries.at(row).key) == recipient) {
            move_entry(true, static_cast<int>(row));
        }
    }
    message->setPlainText(text);
    message->moveCursor(QTextCursor::End);
    return true;
}

void send_form::update_prog_captions()
{
    for (std::size_t i = 0; i < m_prog_buttons.size(); ++i) {
        m_prog_buttons.at(i)->setText(m_context.shared.presets.at(static_cast<int>(i) + 1).description);
    }
    publish_accessibility(*this);
}

void send_form::cancel_all_messages()
{
    queue::cancel_all_messages(m_context.state, *this);
}

void send_form::press_send()
{
    if (m_sending) {
        return;
    }
    m_sending = true;
    QTimer* timer = m_loop ? &m_loop->repeat_timer() : nullptr;
    const bool timer_was_active = timer != nullptr && timer->isActive();
    if (timer != nullptr) {
        timer->stop();
    }
    const auto done = qScopeGuard([&] {
        m_sending = false;
        if (timer_was_active) {
            timer->start();
        }
    });
    const queue::SendOutcome outcome =
        queue::send_message(m_context.state, m_picked_entries, message->toPlainText(), m_context.shared.schedule);
    if (outcome.refusal) {
        m_context.state.prompter.show_box(*outcome.refusal);
        return;
    }
    {
        BusyLock lock(*this);
        const QStringList& frames = desk::send_caption_frames();
        for (qsizetype i = 0; i + 1 < frames.size(); ++i) {
            send->setText(frames.at(i));
            m_context.state.clock.wait(desk::kSendFramePauseMs);
        }
        send->setText(frames.constLast());
        // The message goes out now instead of waiting for the next tick.
        queue::schedule_messages(m_context.state, m_loop ? m_loop->dispatcher().scheduler() : m_scheduler);
        queue::update_counters(m_context.state, *this, counters());
    }
    if (m_context.doors.unload_schedule) {
        m_context.doors.unload_schedule();
    }
    m_context.shared.schedule.clear();
    if (m_context.state.settings.get_setting_flag(desk::keys::clear_on_send) != 0) {
        show_users();
        message->clear();
    }
}

} // namespace cvd::console
