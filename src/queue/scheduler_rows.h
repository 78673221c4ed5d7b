#pragma once

// The scheduler's view of the tables: the rows it reads, the rows it writes, and the statements that do it.
// Internal to the scheduler.

#include "store/database.h"

#include <QDateTime>
#include <QString>
#include <QTime>
#include <optional>
#include <vector>

namespace cvd::queue::scheduling {

inline const QString kProcedure = QStringLiteral("Procedure: schedule_messages");

// The recipient row a message names. Null texts read as empty and null flags as false.
struct Recipient
{
    QString name;
    QString id; // the pin
    QString carrier;
    bool group = false;
    bool on_call = false;
    bool ad_hoc = false;
};

// A due Waiting row as a pass found it, with the recipient row it names (the first one of that name), read
// in the same query. The text and the sender are read only for a row that is copied.
struct DueRow
{
    qint64 id = 0;
    QString recipient;
    QString pin;
    QString requested; // as stored
    qint64 repeat_interval = 0;
    std::optional<QString> repeat_stop; // as stored; null ends a series
    qint32 transaction = 0;
    std::optional<Recipient> found; // none when nobody has that name
};

struct RosterSpan
{
    QString recipient;
    int start_day = 0;
    QTime start_time;
    int stop_day = 0;
    QTime stop_time;
};

// A member of a group, in the order the members were added, with the carrier of its recipient row. A member
// without a recipient row has no carrier.
struct Member
{
    QString name;
    std::optional<QString> carrier; // null texts read as empty
};

// What a copied row takes over from its source row.
struct MessageBody
{
    QString message;
    QString from;
};

// One new Waiting row: the next occurrence of a repeat, or a member's row of a group.
struct NewRow
{
    QString recipient;
    QString pin;
    QString carrier;
    QString requested;
    qint64 repeat_interval = 0;
    std::optional<QString> repeat_stop;
};

// The statements of one call, prepared once and run again for every row. Each change of a row's state names
// the Waiting state it expects and reports whether it found the row in it.
class Statements
{
public:
    explicit Statements(store::Database& db);

    std::vector<DueRow> due_rows(const QDateTime& now);
    std::optional<Recipient> recipient(const QString& name);
    std::vector<Member> group_members(const QString& group);
    std::vector<RosterSpan> roster(const QString& group);
    MessageBody body(qint64 message_id);

    void insert(const NewRow& row, const MessageBody& body, qint32 transaction, const QDateTime& last_try);
    bool make_pending(qint64 message_id, const QString& carrier, const QString& pin);
    bool drop_duplicate(qint64 message_id);
    bool mark_unresolved(qint64 message_id, const QDateTime& now);
    // Sent (or Failed when `failed`) with transaction 0, which keeps the group's own row out of every
    // counter and folder.
    bool close_group(qint64 message_id, bool failed, const QDateTime& now);

private:
    bool changed_one(store::Statement& statement);

    store::Database& m_db;
    store::Statement m_due;
    store::Statement m_recipient;
    store::Statement m_members;
    store::Statement m_roster;
    store::Statement m_body;
    store::Statement m_insert;
    store::Statement m_pending;
    store::Statement m_delete;
    store::Statement m_unresolved;
    store::Statement m_close;
    store::Statement m_close_failed;
};

// When a repeating row is due next: one interval after its request, moved on by whole intervals past
// occurrences that were missed, so the series keeps its phase. nullopt when the row does not repeat or the
// occurrence lies after the row's repeat stop. As stored text.
std::optional<QString> next_occurrence(const DueRow& row, const QDateTime& now);

// A roster time as the store hands it back: a date value of which only the time of day counts, or a bare
// time of day. What cannot be read counts as midnight.
QTime roster_time(const std::optional<QString>& stored);

} // namespace cvd::queue::scheduling
