#pragma once

#include "platform/datagram.h"

#include <QString>
#include <QStringList>
#include <QStringView>
#include <optional>

namespace cvd {

struct AppState;

namespace intake {

// The kinds of text the local channel carries.
inline constexpr quint32 kActivityKind = 2; // one line of engine activity
inline constexpr quint32 kStatusKind = 3;   // the engine's status, or "sendpage " and a message line
// A status text that starts with this word (in any case) and has more behind it hands in a message line.
inline constexpr QStringView kSendPagePrefix = u"sendpage ";

// The receiving side of the local channel. It only notes what arrives: activity lines, the engine status and
// message lines handed in by other programs. The tick turns the message lines into rows (check_wm_list).
class LocalChannel
{
public:
    // The activity buffer keeps the newest lines only, so a busy engine cannot grow it without limit.
    static constexpr int kActivityLimit = 500;

    // What one drain() brought.
    struct Changes
    {
        QStringList activity_lines;    // new activity lines, in order of arrival
        std::optional<QString> status; // the newest status text, when one came
        int messages_noted = 0;        // message lines added to reg_messages

        bool empty() const { return activity_lines.isEmpty() && !status && messages_noted == 0; }
    };

    // Binds the channel's socket at path (replacing a stale one). False with error() on failure.
    bool bind(const QString& path);
    void close() { m_receiver.close(); }
    bool is_bound() const { return m_receiver.is_bound(); }
    const QString& path() const { return m_receiver.path(); }
    const QString& error() const { return m_receiver.error(); }
    // For an event-loop notifier; -1 when not bound.
    int fd() const { return m_receiver.fd(); }

    // Reads every datagram waiting, without blocking, and notes each one.
    Changes drain();

    // Notes one datagram; kinds other than activity and status are ignored.
    void note(const platform::Datagram& datagram, Changes* changes = nullptr);

    const QStringList& activity() const { return m_activity; }
    const QString& status() const { return m_status; }
    QStringList& reg_messages() { return m_reg_messages; }
    const QStringList& reg_messages() const { return m_reg_messages; }

private:
    platform::DatagramReceiver m_receiver;
    QStringList m_activity;
    QString m_status;
    QStringList m_reg_messages;
};

// Turns the noted message lines into Waiting rows, first line first, until none is left. A line that cannot
// be split, lacks a recipient or a message, or names an unknown recipient is dropped without a word. Lines
// noted while this runs (it lets the event loop run) are taken in the same call.
void check_wm_list(AppState& state, QStringList& reg_messages);

} // namespace intake
} // namespace cvd
