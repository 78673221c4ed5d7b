#pragma once

#include "addressbook/pickers.h"
#include "core/prompter.h"
#include "queue/schedule_selection.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <optional>

namespace cvd {
struct AppState;
}

namespace cvd::queue {

inline constexpr qsizetype kMaxSentTextLength = 6000;

// What one picked entry becomes in its row: the recipient key, the typed number of an ad hoc entry, and the
// priority.
struct PickedTarget
{
    QString recipient;
    QString pin;
    qint64 priority = 0;

    bool operator==(const PickedTarget&) const = default;
};

// The key lower-cased and cut to 45 characters; an ad hoc key ("(a) " in front or " (a)" behind) loses its
// first four characters either way and takes the text behind the label's first "|" (at most 100 characters,
// trimmed) as its number. The priority is the leading number of the entry's priority text, 0 when it has none.
PickedTarget picked_target(const addressbook::PickerEntry& entry);

// The text as it is stored: trimmed, cut to 6000 characters and trimmed again.
QString text_to_send(const QString& message);

struct SendOutcome
{
    std::optional<Notice> refusal; // nothing picked or no text; no row then
    qint32 transaction = 0;
    QList<qint64> message_ids; // in the order of the picked entries
};

// The press of SEND: one Waiting row per picked entry, in the list's order, all with one transaction number
// and committed together, so that a failure leaves no half-sent message. Due at the schedule selection's time
// when one was chosen, with its repeat. Database failures take the common error path ("Procedure: send_form
// send"). The caller then runs the scheduler and the counters and clears the selection.
SendOutcome send_message(AppState& state, const QList<addressbook::PickerEntry>& picked, const QString& message,
                         const ScheduleSelection& schedule);

} // namespace cvd::queue
