#include "console/busy_lock.h"

#include <QGuiApplication>
#include <QWidget>

namespace cvd::console {

BusyLock::BusyLock(QWidget& window)
{
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const QList<QWidget*> controls = window.findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
    for (QWidget* control : controls) {
        if (control->isEnabled() && !control->isWindow()) {
            control->setEnabled(false);
            m_disabled.append(control);
        }
    }
}

BusyLock::~BusyLock()
{
    for (const QPointer<QWidget>& control : std::as_const(m_disabled)) {
        if (control != nullptr) {
            control->setEnabled(true);
        }
    }
    QGuiApplication::restoreOverrideCursor();
}

} // namespace cvd::console
