#pragma once

#include <QDateTime>
#include <QtGlobal>

namespace cvd::queue {

// What the schedule dialog leaves for the next press of SEND: a later send time, a repeat, or both. Cleared
// by every send.
struct ScheduleSelection
{
    bool schedule_flag = false;  // a send time was chosen
    bool repeat_flag = false;    // a repeat was chosen
    QDateTime schedule_time;     // whole minutes
    QDateTime repeat_stop_time;  // whole minutes
    qint32 repeat_minutes = 0;   // the value for cv_repeat_interval
    bool dialog_applied = false; // the dialog shows its last content again when opened

    void clear() { *this = ScheduleSelection{}; }
};

} // namespace cvd::queue
