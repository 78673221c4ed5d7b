#include "console/masked_entry.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <algorithm>

namespace cvd::console {

namespace {

bool is_password_character(const QString& typed)
{
    return typed.size() == 1 && typed.at(0).unicode() >= 32 && typed.at(0).unicode() <= 126;
}

// Keys that only move the caret or the selection; the shown text and the real text have the same length,
// so the line edit's own handling of them is right.
bool is_navigation(const QKeyEvent& event)
{
    switch (event.key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Home:
    case Qt::Key_End:
        return true;
    default:
        return event.matches(QKeySequence::SelectAll);
    }
}

// Keys the dialog around the box acts on: Enter for the default button, Escape for Cancel, Tab for focus.
bool belongs_to_dialog(const QKeyEvent& event)
{
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Escape:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return true;
    default:
        return false;
    }
}

} // namespace

MaskedEntry::MaskedEntry(int limit, QWidget* parent) : QLineEdit(parent), m_limit(limit)
{
    // No menu, no drops and no input method: every way text could reach the box besides the keys below.
    setContextMenuPolicy(Qt::NoContextMenu);
    setAcceptDrops(false);
    setDragEnabled(false);
    setAttribute(Qt::WA_InputMethodEnabled, false);
}

void MaskedEntry::set_real_text(const QString& text)
{
    m_real = text;
    show_masked(text.size());
}

void MaskedEntry::keyPressEvent(QKeyEvent* event)
{
    if (belongs_to_dialog(*event)) {
        event->ignore();
        return;
    }
    if (is_navigation(*event)) {
        QLineEdit::keyPressEvent(event);
        return;
    }
    event->accept();
    if (event->key() == Qt::Key_Backspace) {
        erase(false);
    } else if (event->key() == Qt::Key_Delete) {
        erase(true);
    } else if (is_password_character(event->text()) && !(event->modifiers() & Qt::ControlModifier)) {
        replace_selection(event->text());
    }
    // Anything else (copy, cut, paste, undo ...) is swallowed: the shown stars are not the text.
}

void MaskedEntry::mouseReleaseEvent(QMouseEvent* event)
{
    // A middle click would paste the primary selection into the shown text.
    if (event->button() == Qt::MiddleButton) {
        event->accept();
        return;
    }
    QLineEdit::mouseReleaseEvent(event);
}

void MaskedEntry::replace_selection(const QString& with)
{
    const qsizetype start = hasSelectedText() ? selectionStart() : cursorPosition();
    const qsizetype length = hasSelectedText() ? selectionLength() : 0;
    m_real.replace(start, length, with);
    show_masked(start + with.size());
}

void MaskedEntry::erase(bool forward)
{
    if (hasSelectedText()) {
        replace_selection(QString());
        return;
    }
    const qsizetype caret = cursorPosition();
    if (forward && caret < m_real.size()) {
        m_real.remove(caret, 1);
        show_masked(caret);
    } else if (!forward && caret > 0) {
        m_real.remove(caret - 1, 1);
        show_masked(caret - 1);
    }
}

void MaskedEntry::show_masked(qsizetype caret)
{
    m_real.truncate(m_limit);
    setText(QString(m_real.size(), u'*'));
    setCursorPosition(static_cast<int>(std::min(caret, m_real.size())));
}

} // namespace cvd::console
