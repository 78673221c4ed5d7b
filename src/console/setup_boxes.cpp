#include "console/setup_boxes.h"

#include <QEvent>
#include <QLineEdit>

namespace cvd::console {

namespace {

class LeaveFilter : public QObject
{
public:
    LeaveFilter(QLineEdit* box, std::function<void(QLineEdit&)> fix) : QObject(box), m_box(box), m_fix(std::move(fix))
    {
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == m_box && event->type() == QEvent::FocusOut) {
            m_fix(*m_box);
        }
        return false;
    }

private:
    QLineEdit* m_box;
    std::function<void(QLineEdit&)> m_fix;
};

// Changes the text only when the fix changes it, so that an untouched box keeps its undo history.
void replace_text(QLineEdit& box, const QString& text)
{
    if (box.text() != text) {
        box.setText(text);
    }
}

} // namespace

void when_left(QLineEdit* box, std::function<void(QLineEdit&)> fix)
{
    box->installEventFilter(new LeaveFilter(box, std::move(fix)));
}

void clamp_when_left(QLineEdit* box, desk::NumberRange range)
{
    when_left(box, [range](QLineEdit& edit) { replace_text(edit, desk::clamp_number_text(edit.text(), range)); });
}

void cut_when_left(QLineEdit* box, qsizetype limit, bool trimmed)
{
    when_left(box, [limit, trimmed](QLineEdit& edit) {
        replace_text(edit, desk::cut_box_text(edit.text(), limit, trimmed));
    });
}

} // namespace cvd::console
