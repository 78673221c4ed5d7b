#pragma once

#include <QDateTime>

namespace cvd {

// The time and the waits of the program. Tests pin the time and record the waits instead of sleeping.
class Clock
{
public:
    virtual ~Clock() = default;
    virtual QDateTime now() const = 0;
    // Waits while the event loop keeps running.
    virtual void wait(int milliseconds) = 0;
    // A uniform number in [0, 1), for the jitter of retries.
    virtual double random_unit() = 0;
};

class SystemClock : public Clock
{
public:
    QDateTime now() const override;
    void wait(int milliseconds) override;
    double random_unit() override;
};

} // namespace cvd

namespace cvd {

// Lets waiting events run (timers, the local channel). Does nothing before the event loop exists.
void yield_to_event_loop();

} // namespace cvd
