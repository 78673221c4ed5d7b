#pragma once

#include <QLineEdit>
#include <QString>

namespace cvd::console {

// A password box that keeps the real text to itself and shows one "*" per character. Typing, Backspace and
// Delete work on the real text at the caret or over the selection; the real text never goes beyond the
// limit. The widget's own text is only the stars, so copying, dragging or assistive tools see nothing else,
// and nothing is pasted in behind the real text's back.
class MaskedEntry : public QLineEdit
{
    Q_OBJECT

public:
    MaskedEntry(int limit, QWidget* parent);

    const QString& real_text() const { return m_real; }
    void set_real_text(const QString& text);
    int limit() const { return m_limit; }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    // The selection, or the empty range at the caret, is replaced by `with`; the caret goes behind it.
    void replace_selection(const QString& with);
    // Backspace (backward) or Delete (forward): the selection, else one character beside the caret.
    void erase(bool forward);
    // The real text cut to the limit and shown again as stars, with the caret put back.
    void show_masked(qsizetype caret);

    QString m_real;
    int m_limit;
};

} // namespace cvd::console
