#pragma once

#include <QString>
#include <optional>

namespace cvd {

struct AppState;

namespace queue {

// One line handed in by another program: recipient, one blank, sender, one blank, message. The first two
// fields hold no blank; the message runs to the end of the line and is neither trimmed nor limited.
struct MessageLine
{
    QString recipient;
    QString sender;
    QString message;
};

// Splits a line at its first two blanks. Each separating blank must have something behind it; a blank as the
// first character behind the recipient still counts, and the sender is then empty. nullopt with the reason
// in *reason when the line cannot be split.
std::optional<MessageLine> split_message_line(const QString& line, QString* reason = nullptr);

struct SendPageResult
{
    bool inserted = false;
    qint64 message_id = 0;
    QString reason; // why nothing was inserted
};

// Enqueues one message from a line, for a recipient that exists. Opens and closes the global database itself,
// so it can run before anything else is set up.
SendPageResult SendPage(AppState& state, const QString& line);

} // namespace queue
} // namespace cvd
