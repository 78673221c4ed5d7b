#include "queue/send_page.h"

#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "core/text.h"
#include "platform/folders.h"
#include "queue/enqueue.h"

using namespace Qt::StringLiterals;

namespace cvd::queue {

std::optional<MessageLine> split_message_line(const QString& line, QString* reason)
{
    auto refuse = [reason](const QString& why) -> std::optional<MessageLine> {
        if (reason != nullptr) {
            *reason = why;
        }
        return std::nullopt;
    };
    const qsizetype first = line.indexOf(u' ');
    if (first < 0 || first == line.size() - 1) {
        return refuse(u"the line needs a recipient, a sender and a message, separated by blanks"_s);
    }
    const QString rest = line.mid(first + 1);
    const qsizetype second = rest.indexOf(u' ');
    if (second < 0 || second == rest.size() - 1) {
        return refuse(u"the line needs a sender and a message after the recipient"_s);
    }
    return MessageLine{line.left(first), rest.left(second), rest.mid(second + 1)};
}

namespace {

const QString kProcedure = u"Procedure: SendPage"_s;

SendPageResult enqueue(AppState& state, const MessageLine& parts)
{
    SendPageResult result;
    if (!open_current_database(state)) {
        result.reason = u"the database must be brought up to date by starting the program first"_s;
        return result;
    }
    const std::optional<qint64> id =
        enqueue_for_known_recipient(state, kProcedure, parts.recipient, parts.sender, parts.message);
    if (!id) {
        result.reason = u"unknown recipient \""_s + parts.recipient + u'"';
        return result;
    }
    state.date_order_ok = true;
    result.message_id = *id;
    result.inserted = true;
    return result;
}

} // namespace

SendPageResult SendPage(AppState& state, const QString& line)
{
    state.clear_error_counters();
    state.program_folder = platform::executable_folder();
    SendPageResult result;
    const std::optional<MessageLine> parts = split_message_line(line, &result.reason);
    if (!parts) {
        return result;
    }
    result = enqueue(state, *parts);
    close_database(state);
    return result;
}

} // namespace cvd::queue
