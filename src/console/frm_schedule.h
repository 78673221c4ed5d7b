#pragma once

#include <QDateTime>
#include <QDialog>

class QCheckBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QPushButton;
class QScrollBar;
class QTimeEdit;

namespace cvd::console {

struct ConsoleContext;

// "Schedule Message": a send time and a repeat for the next press of SEND. It only fills the schedule
// selection; no row is touched here. Modeless, so that SEND can still be pressed, which unloads it.
class frmSchedule : public QDialog
{
    Q_OBJECT

public:
    frmSchedule(ConsoleContext& context, QWidget* parent);

    // The moment the window was loaded; a send time left at it sets nothing.
    const QDateTime& opened_time() const { return m_opened_time; }

private:
    struct RepeatBox
    {
        QLabel* label = nullptr;
        QLineEdit* box = nullptr;
        QScrollBar* updown = nullptr;
        int maximum = 0;
    };

    void build_controls();
    RepeatBox make_repeat_box(const char* label_name, const QString& caption, const char* box_name,
                              const char* updown_name, int maximum);
    void fill();
    void repeat_toggled();
    void apply();

    ConsoleContext& m_context;
    QDateTime m_opened_time;
    QLabel* lblStart = nullptr;
    QDateEdit* dtpStartDate = nullptr;
    QTimeEdit* dtpStartTime = nullptr;
    QCheckBox* chkRepeat = nullptr;
    RepeatBox m_days;
    RepeatBox m_hours;
    RepeatBox m_minutes;
    QLabel* lblStop = nullptr;
    QDateEdit* dtpStopDate = nullptr;
    QTimeEdit* dtpStopTime = nullptr;
    QPushButton* btnApply = nullptr;
    QPushButton* btnClose = nullptr;
};

} // namespace cvd::console
