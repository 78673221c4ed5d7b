#include "console/frm_schedule.h"

#include "console/console_context.h"
#include "console/controls.h"
#include "console/geometry.h"
#include "core/app_state.h"
#include "core/clock.h"
#include "core/prompter.h"
#include "desk/schedule_rules.h"

#include <QCheckBox>
#include <QDateEdit>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTimeEdit>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

constexpr int kBoxCharacters = 6;

QDateTime joined(const QDateEdit& date, const QTimeEdit& time)
{
    return QDateTime(date.date(), time.time());
}

} // namespace

frmSchedule::frmSchedule(ConsoleContext& context, QWidget* parent)
    : QDialog(parent), m_context(context), m_opened_time(context.state.clock.now())
{
    build_controls();
    publish_accessibility(*this);
    fill();
    if (m_context.send_form != nullptr) {
        adjustSize();
        center_on_form(*this, m_context.send_form->window());
    }
}

frmSchedule::RepeatBox frmSchedule::make_repeat_box(const char* label_name, const QString& caption,
                                                    const char* box_name, const char* updown_name, int maximum)
{
    RepeatBox repeat;
    repeat.maximum = maximum;
    repeat.label = make_control<QLabel>(this, label_name, caption);
    repeat.box = make_control<QLineEdit>(this, box_name);
    repeat.box->setMaximumWidth(repeat.box->fontMetrics().averageCharWidth() * kBoxCharacters * 2);
    repeat.label->setBuddy(repeat.box);
    // The up-down beside the box: its arrows step the box within the box's limits.
    repeat.updown = make_control<QScrollBar>(this, updown_name, Qt::Vertical);
    repeat.updown->setRange(0, maximum);
    repeat.updown->setInvertedControls(false);
    repeat.updown->setInvertedAppearance(true);
    repeat.updown->setFixedHeight(repeat.box->sizeHint().height());
    repeat.updown->setToolTip(caption);
    QLineEdit* box = repeat.box;
    QScrollBar* updown = repeat.updown;
    connect(updown, &QScrollBar::valueChanged, box, [box](int value) { box->setText(QString::number(value)); });
    connect(box, &QLineEdit::editingFinished, this, [box, updown, maximum] {
        const int value = desk::clamp_repeat_box(box->text(), maximum);
        box->setText(QString::number(value));
        updown->setValue(value);
    });
    return repeat;
}

void frmSchedule::build_controls()
{
    setObjectName(u"frmSchedule"_s);
    setWindowTitle(u"Schedule Message"_s);
    lblStart = make_control<QLabel>(this, "lblStart", u"Send Message Date/Time"_s);
    dtpStartDate = make_control<QDateEdit>(this, "dtpStartDate");
    dtpStartTime = make_control<QTimeEdit>(this, "dtpStartTime");
    chkRepeat = make_control<QCheckBox>(this, "chkRepeat", u"Repeating Message"_s);
    m_days = make_repeat_box("lblDays", u"Days"_s, "edtRepeatDays", "updDays", desk::kMaxRepeatDays);
    m_hours = make_repeat_box("lblHours", u"Hours"_s, "edtRepeatHours", "updHours", desk::kMaxRepeatHours);
    m_minutes = make_repeat_box("lblMinutes", u"Minutes"_s, "edtRepeatMinutes", "updMinutes", desk::kMaxRepeatMinutes);
    lblStop = make_control<QLabel>(this, "lblStop", u"Stop Sending Date/Time"_s);
    dtpStopDate = make_control<QDateEdit>(this, "dtpStopDate");
    dtpStopTime = make_control<QTimeEdit>(this, "dtpStopTime");
    btnApply = make_control<QPushButton>(this, "btnApply", u"Apply"_s);
    btnClose = make_control<QPushButton>(this, "btnClose", u"Cancel"_s);
    lblStart->setBuddy(dtpStartDate);
    lblStop->setBuddy(dtpStopDate);
    // The label names the date picker; the time picker beside it says what it is itself.
    dtpStartTime->setToolTip(u"Send Message Time"_s);
    dtpStopTime->setToolTip(u"Stop Sending Time"_s);
    for (QDateEdit* date : {dtpStartDate, dtpStopDate}) {
        date->setCalendarPopup(true);
    }
    for (QTimeEdit* time : {dtpStartTime, dtpStopTime}) {
        time->setDisplayFormat(u"hh:mm"_s);
    }

    auto* grid = new QGridLayout(this);
    grid->addWidget(lblStart, 0, 0, 1, 6);
    grid->addWidget(dtpStartDate, 1, 0, 1, 3);
    grid->addWidget(dtpStartTime, 1, 3, 1, 3);
    grid->addWidget(chkRepeat, 2, 0, 1, 6);
    int column = 0;
    for (const RepeatBox* repeat : {&m_days, &m_hours, &m_minutes}) {
        auto* pair = new QHBoxLayout;
        pair->setSpacing(0);
        pair->addWidget(repeat->box);
        pair->addWidget(repeat->updown);
        grid->addWidget(repeat->label, 3, column, 1, 2);
        grid->addLayout(pair, 4, column, 1, 2);
        column += 2;
    }
    grid->addWidget(lblStop, 5, 0, 1, 6);
    grid->addWidget(dtpStopDate, 6, 0, 1, 3);
    grid->addWidget(dtpStopTime, 6, 3, 1, 3);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnApply);
    buttons->addWidget(btnClose);
    grid->addLayout(buttons, 7, 0, 1, 6);
    btnApply->setDefault(true);

    connect(chkRepeat, &QCheckBox::toggled, this, &frmSchedule::repeat_toggled);
    connect(btnApply, &QPushButton::clicked, this, &frmSchedule::apply);
    connect(btnClose, &QPushButton::clicked, this, &QWidget::close);
}

void frmSchedule::fill()
{
    const desk::ScheduleFields fields = desk::schedule_fields_on_open(m_context.shared.schedule, m_opened_time);
    dtpStartDate->setDate(fields.start.date());
    dtpStartTime->setTime(fields.start.time());
    dtpStopDate->setDate(fields.stop.date());
    dtpStopTime->setTime(fields.stop.time());
    m_days.updown->setValue(fields.days);
    m_hours.updown->setValue(fields.hours);
    m_minutes.updown->setValue(fields.minutes);
    for (const RepeatBox* repeat : {&m_days, &m_hours, &m_minutes}) {
        repeat->box->setText(QString::number(repeat->updown->value()));
    }
    chkRepeat->setChecked(fields.repeat);
    repeat_toggled();
}

void frmSchedule::repeat_toggled()
{
    const bool on = chkRepeat->isChecked();
    for (const RepeatBox* repeat : {&m_days, &m_hours, &m_minutes}) {
        repeat->label->setEnabled(on);
        repeat->box->setEnabled(on);
        repeat->updown->setEnabled(on);
    }
    for (QWidget* stop : std::initializer_list<QWidget*>{lblStop, dtpStopDate, dtpStopTime}) {
        stop->setEnabled(on);
    }
}

void frmSchedule::apply()
{
    desk::ScheduleFields fields;
    fields.start = joined(*dtpStartDate, *dtpStartTime);
    fields.stop = joined(*dtpStopDate, *dtpStopTime);
    fields.repeat = chkRepeat->isChecked();
    fields.days = desk::clamp_repeat_box(m_days.box->text(), m_days.maximum);
    fields.hours = desk::clamp_repeat_box(m_hours.box->text(), m_hours.maximum);
    fields.minutes = desk::clamp_repeat_box(m_minutes.box->text(), m_minutes.maximum);
    if (const std::optional<Notice> refusal = desk::apply_schedule(m_context.shared.schedule, fields, m_opened_time)) {
        m_context.state.prompter.show_box(*refusal);
        return;
    }
    close();
}

} // namespace cvd::console
