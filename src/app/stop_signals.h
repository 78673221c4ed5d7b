#pragma once

#include <QObject>
#include <functional>
#include <memory>

class QSocketNotifier;

namespace cvd::app {

// Turns SIGINT and SIGTERM into a call on the event loop, where the orderly end can run safely.
class StopSignals
{
public:
    StopSignals(QObject* context, std::function<void()> on_stop);
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::function<void()> m_on_stop;
};

} // namespace cvd::app
