#pragma once

#include <QPointer>
#include <QWidget>
#include <map>
#include <typeindex>
#include <utility>

namespace cvd::console {

// The one owner of the console's windows. A window is created at first use and forgotten when it is
// destroyed (every window closes with WA_DeleteOnClose), so asking again gives back the open one or a fresh
// one. No window reaches another through a global: it asks the owner.
class WindowOwner
{
public:
    // The open window of that class, or nullptr.
    template <typename Window> Window* find() const
    {
        const auto found = m_windows.find(std::type_index(typeid(Window)));
        if (found == m_windows.end() || found->second == nullptr) {
            return nullptr;
        }
        return static_cast<Window*>(found->second.data());
    }

    // The open window of that class, or a new one made from the arguments.
    template <typename Window, typename... Args> Window& open(Args&&... args)
    {
        if (Window* open_window = find<Window>()) {
            return *open_window;
        }
        auto* window = new Window(std::forward<Args>(args)...);
        window->setAttribute(Qt::WA_DeleteOnClose);
        m_windows[std::type_index(typeid(Window))] = window;
        return *window;
    }

    // Closes every open window, the way the program's end does.
    void close_all()
    {
        for (auto& [type, window] : m_windows) {
            if (window != nullptr) {
                window->close();
            }
        }
    }

private:
    std::map<std::type_index, QPointer<QWidget>> m_windows;
};

} // namespace cvd::console
