#pragma once

#include "core/prompter.h"
#include "queue/schedule_selection.h"

#include <QDateTime>
#include <optional>

namespace cvd::desk {

// What the schedule dialog shows.
struct ScheduleFields
{
    QDateTime start;     // dtpStartDate and dtpStartTime
    bool repeat = false; // chkRepeat, and with it the twelve repeat controls enabled
    int days = 0;
    int hours = 0;
    int minutes = 0;
    QDateTime stop; // dtpStopDate and dtpStopTime
};

// The repeat boxes' limits.
inline constexpr int kMaxRepeatDays = 3650;
inline constexpr int kMaxRepeatHours = 23;
inline constexpr int kMaxRepeatMinutes = 59;

// The dialog's fields when it opens at `opened_time`. Unless an earlier Apply is to be shown again, the
// selection's send time becomes the opening moment (the selection is changed for that).
ScheduleFields schedule_fields_on_open(queue::ScheduleSelection& selection, const QDateTime& opened_time);

// Apply: the send time and stop time cut to whole minutes. A send time left as it opened sets nothing, not
// even a ticked repeat. A repeat whose stop time is not after its send time is refused with the box and the
// dialog stays; the selection then keeps only its two flags cleared. Returns the refusal, or nullopt when the
// selection was stored and the dialog closes.
std::optional<Notice> apply_schedule(queue::ScheduleSelection& selection, const ScheduleFields& fields,
                                     const QDateTime& opened_time);

// A repeat box's text kept inside 0 to `maximum` when it is left; text that is no number counts as 0.
int clamp_repeat_box(const QString& text, int maximum);

// A date and time less its seconds.
QDateTime whole_minutes(const QDateTime& value);

} // namespace cvd::desk
