#pragma once

#include <QString>
#include <QtGlobal>
#include <cstddef>
#include <vector>

namespace cvd::queue {

// The scheduler's short memory of which transaction it has just handed to which recipient, so that a second
// delivery of the same transaction to the same recipient (two groups of one send sharing a member) is dropped.
// Counted in ticks, not in time; nothing is kept across a restart.
class TransList
{
public:
    struct Entry
    {
        qint32 transaction = 0;
        QString name; // the recipient's key, or the pin of an ad hoc recipient
        int age = 0;  // ticks since the pair was written

        friend bool operator==(const Entry&, const Entry&) = default;
    };

    // A pair is remembered while its age is 0 to 3.
    static constexpr int max_age = 3;

    // Appends the pair with age 0.
    void add(qint32 transaction, const QString& name);

    // True when the pair is remembered; otherwise remembers it and returns false. Names compare exactly, with
    // case. Only the run of entries that begins at the first entry of `transaction` is looked at.
    bool find_trans(qint32 transaction, const QString& name);

    // Once per tick, before the scheduler: ages every entry by one tick and forgets those older than max_age,
    // so a pair written in one tick is gone after the ageing of the fourth tick that follows.
    void inc_trans_life();

    // Forgets every entry after the first `count`, so that a step run again after a failure does not meet the
    // pairs its failed attempt wrote.
    void truncate(std::size_t count);

    const std::vector<Entry>& entries() const { return m_entries; }
    bool empty() const { return m_entries.empty(); }
    std::size_t size() const { return m_entries.size(); }

    friend bool operator==(const TransList&, const TransList&) = default;

private:
    std::vector<Entry> m_entries;
};

} // namespace cvd::queue
