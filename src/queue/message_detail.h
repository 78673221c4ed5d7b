#pragma once

#include <QString>
#include <optional>

namespace cvd::store {
class Database;
}

namespace cvd::queue {

// The window that asked for a message's details, as detail_source numbers them.
enum class DetailSource { Scheduled = 1, Pending = 2, Sent = 3, Bad = 4, Log = 5 };

// The plain text of one message's details, lines joined by CR LF: "To: ", "Sender: ", "Carrier: ",
// "Priority: ", "Requested: ", the lines of the asking window, and "Message:" with the text on the next line.
// nullopt when the row is gone or the source is none of the five. Throws store::Error.
std::optional<QString> message_detail_text(store::Database& db, int source, qint64 message_id);

} // namespace cvd::queue
