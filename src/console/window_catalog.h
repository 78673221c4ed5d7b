#pragma once

#include <QString>
#include <functional>
#include <map>
#include <utility>

class QWidget;

namespace cvd::console {

// The windows behind menu entries, toolbar buttons, status panels and other windows' buttons, by the name of
// the entry that opens them ("carriers_add", "scheduled", "rptSentDate", "frmGroupMembers" ...). Each family of
// windows adds its own entries when the console starts; an entry nobody added stays disabled in the menu.
class WindowCatalog
{
public:
    // Opens the window; `caller` is the window that asked (the parent of a modal dialog), or nullptr for the
    // send window.
    using Opener = std::function<void(QWidget* caller)>;

    void add(const QString& entry, Opener open) { m_openers[entry] = std::move(open); }
    bool has(const QString& entry) const { return m_openers.contains(entry); }
    // Opens the window of that entry; an unknown entry does nothing.
    void open(const QString& entry, QWidget* caller = nullptr) const
    {
        if (const auto found = m_openers.find(entry); found != m_openers.end() && found->second) {
            found->second(caller);
        }
    }

private:
    std::map<QString, Opener> m_openers;
};

} // namespace cvd::console
