#include "support/pinned_clock.h"

namespace cvd::testing {

PinnedClock::PinnedClock(QDateTime now) : m_now(std::move(now)) {}

void PinnedClock::wait(int milliseconds)
{
    waits.append(milliseconds);
    m_now = m_now.addMSecs(milliseconds);
}

} // namespace cvd::testing
