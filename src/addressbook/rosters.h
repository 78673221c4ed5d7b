#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QTime>
#include <optional>

namespace cvd {

struct AppState;

namespace addressbook {

// Day codes of the roster: 1 "Sunday" to 7 "Saturday". Another code gives empty text, an unknown name 0.
QString roster_day_name(int day);
int roster_day_number(const QString& name);
// "Sunday" to "Saturday", as the day lists of the span dialog offer them.
QStringList roster_day_names();

// A time of day as the grid shows it, without seconds ("8:00 AM"), and read back from the grid or from a
// stored value; nullopt when the text holds no time.
QString roster_time_text(QTime time);
std::optional<QTime> read_roster_time(const QString& text);

// One row of the roster grid, every column as text.
struct RosterGridRow
{
    QString group;
    QString recipient; // the member's full name, or the stored cv_recipient when no recipient has that name
    QString start_day;
    QString start_time;
    QString stop_day;
    QString stop_time;

    bool operator==(const RosterGridRow&) const = default;
};

// The group's rows for the grid, in table order ("Procedure: frmOnCallSched_load").
QList<RosterGridRow> load_roster(AppState& state, const QString& group);

// The recipients the span dialog offers: each member's full name, or the raw name without recipient
// ("Procedure: frmAddOncall_load"). Only members can be put on the roster.
QStringList roster_member_choices(AppState& state, const QString& group);

// The grid row the span dialog adds. nullopt when no member is chosen: a group without members gets no row,
// and nothing is said.
std::optional<RosterGridRow> new_roster_row(const QString& group, const QString& recipient, const QString& start_day,
                                            QTime start_time, const QString& stop_day, QTime stop_time);

// The grid row the span dialog leaves in edit mode: the group stays, every other column takes the dialog's value.
RosterGridRow edited_roster_row(const RosterGridRow& row, const QString& recipient, const QString& start_day,
                                QTime start_time, const QString& stop_day, QTime stop_time);

// Replaces the group's whole roster by the grid rows, in grid order, in one transaction ("Procedure:
// frmOnCallSched_btnAccept"). The recipient column is resolved by full name (the first recipient wins); a text
// that names no full name is stored as it stands. A failure changes nothing.
void apply_roster(AppState& state, const QString& group, const QList<RosterGridRow>& rows);

} // namespace addressbook
} // namespace cvd
