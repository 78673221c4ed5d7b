#pragma once

#include "platform/registry.h"

#include <QString>
#include <optional>

namespace cvd::intake {

// The other side of the integration: what a program on this machine needs to find the running program,
// talk to it over the local channel and ask it to end. It reads what the program publishes under the
// transfer key and in the runtime folder; it never starts the program and never writes a message row.
class IntegrationClient
{
public:
    IntegrationClient(platform::Registry registry, QString runtime_dir);

    // The single-instance lock is held.
    bool program_runs() const;
    // The published `Socket`, else the channel's usual place in the runtime folder.
    QString channel_path() const;
    // The published `Handle`; 0 when there is none.
    qint64 program_pid() const;

    // Why a text cannot go over the channel as this kind, or nullopt when it can: only activity lines and
    // status texts are carried, each in one datagram, and a status text is never read as a message line
    // (a message is committed to the database by whoever hands it in, never left waiting in memory).
    static std::optional<QString> refusal(quint32 kind, const QString& text);

    // Sends one text of kind 2 or 3. The channel holds only a few datagrams while the program is busy in a
    // tick, so a full channel is tried again for a while. False with a reason when it was refused or not sent.
    bool notify(quint32 kind, const QString& text, QString* error) const;

    // Asks the program to end at its next tick (`Stop` 1). False when the request cannot be written.
    bool request_stop();
    // The program says it no longer runs (`Running` is 0 or missing).
    bool has_stopped() const;

private:
    platform::Registry m_registry;
    QString m_runtime_dir;
};

} // namespace cvd::intake
