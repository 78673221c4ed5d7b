#include "intake/local_channel.h"

#include "core/app_state.h"
#include "intake/registry_transfer.h"
#include "queue/enqueue.h"
#include "queue/send_page.h"

using namespace Qt::StringLiterals;

namespace cvd::intake {

bool LocalChannel::bind(const QString& path)
{
    return m_receiver.bind(path);
}

LocalChannel::Changes LocalChannel::drain()
{
    Changes changes;
    if (!m_receiver.is_bound()) {
        return changes;
    }
    while (const std::optional<platform::Datagram> datagram = m_receiver.receive()) {
        note(*datagram, &changes);
    }
    return changes;
}

void LocalChannel::note(const platform::Datagram& datagram, Changes* changes)
{
    if (datagram.kind == kActivityKind) {
        m_activity.append(datagram.text);
        while (m_activity.size() > kActivityLimit) {
            m_activity.removeFirst();
        }
        if (changes != nullptr) {
            changes->activity_lines.append(datagram.text);
        }
    } else if (datagram.kind == kStatusKind) {
        const QString& text = datagram.text;
        if (text.size() > kSendPagePrefix.size() && text.left(kSendPagePrefix.size()).toLower() == kSendPagePrefix) {
            m_reg_messages.append(text.mid(kSendPagePrefix.size()));
            if (changes != nullptr) {
                ++changes->messages_noted;
            }
        } else {
            m_status = text;
            if (changes != nullptr) {
                changes->status = text;
            }
        }
    }
}

void check_wm_list(AppState& state, QStringList& reg_messages)
{
    const QString procedure = u"Procedure: check_wm_list"_s;
    state.clear_error_counters();
    // The count is read again each round and the first line removed only when done with it: lines may be
    // noted while the inserts let the event loop run.
    while (!reg_messages.isEmpty()) {
        const QString line = reg_messages.first();
        const std::optional<queue::MessageLine> parts = queue::split_message_line(line);
        if (parts && !parts->recipient.isEmpty() && !parts->message.isEmpty()) {
            // Recipient, sender and message go in as given; an unknown recipient leaves no row.
            queue::enqueue_for_known_recipient(state, procedure, parts->recipient, parts->sender, parts->message);
        }
        reg_messages.removeFirst();
    }
}

} // namespace cvd::intake
