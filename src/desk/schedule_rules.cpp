#include "desk/schedule_rules.h"

#include <QString>

using namespace Qt::StringLiterals;

namespace cvd::desk {

namespace {

constexpr int kMinutesPerDay = 1440;
constexpr int kMinutesPerHour = 60;

} // namespace

int clamp_repeat_box(const QString& text, int maximum)
{
    bool ok = false;
    const qint64 value = text.trimmed().toLongLong(&ok);
    if (!ok || value < 0) {
        return 0;
    }
    return value > maximum ? maximum : static_cast<int>(value);
}

QDateTime whole_minutes(const QDateTime& value)
{
    if (!value.isValid()) {
        return value;
    }
    QDateTime cut = value;
    cut.setTime(QTime(value.time().hour(), value.time().minute()));
    return cut;
}

ScheduleFields schedule_fields_on_open(queue::ScheduleSelection& selection, const QDateTime& opened_time)
{
    if (!selection.dialog_applied) {
        selection.schedule_time = opened_time;
    }
    ScheduleFields fields;
    fields.start = selection.schedule_time;
    fields.stop = selection.schedule_time;
    if (selection.dialog_applied && selection.repeat_flag) {
        fields.repeat = true;
        fields.stop = selection.repeat_stop_time;
        fields.days = selection.repeat_minutes / kMinutesPerDay;
        fields.hours = (selection.repeat_minutes % kMinutesPerDay) / kMinutesPerHour;
        fields.minutes = selection.repeat_minutes % kMinutesPerHour;
    }
    return fields;
}

std::optional<Notice> apply_schedule(queue::ScheduleSelection& selection, const ScheduleFields& fields,
                                     const QDateTime& opened_time)
{
    selection.schedule_flag = false;
    selection.repeat_flag = false;
    const QDateTime send_time = whole_minutes(fields.start);
    const QDateTime stop_time = whole_minutes(fields.stop);
    // The pickers show whole minutes, so the opening moment counts as untouched at that precision.
    if (send_time != whole_minutes(opened_time)) {
        selection.schedule_flag = true;
        const qint64 period =
            qint64{fields.minutes} + qint64{fields.hours} * kMinutesPerHour + qint64{fields.days} * kMinutesPerDay;
        if (fields.repeat && period > 0) {
            if (stop_time <= send_time) {
                selection.schedule_flag = false;
                return Notice{u"The Stop Date/Time Must be After the Send Date/Time"_s, u"INVALID STOP DATE/TIME"_s,
                              BoxIcon::Warning};
            }
            selection.repeat_flag = true;
            selection.repeat_minutes = static_cast<qint32>(period);
        }
    }
    selection.dialog_applied = true;
    selection.schedule_time = send_time;
    selection.repeat_stop_time = stop_time;
    return std::nullopt;
}

} // namespace cvd::desk
