#pragma once

#include <QList>
#include <QPointer>

class QWidget;

namespace cvd::console {

// "Lock the window": the hourglass and every control disabled while a handler works, undone on every way out
// of the handler, exceptions included. Only controls that were enabled are enabled again, so a control the
// window had disabled for its own reasons stays so.
class BusyLock
{
public:
    explicit BusyLock(QWidget& window);
    ~BusyLock();
    BusyLock(const BusyLock&) = delete;
    BusyLock& operator=(const BusyLock&) = delete;

private:
    QList<QPointer<QWidget>> m_disabled;
};

} // namespace cvd::console
