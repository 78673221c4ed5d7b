#pragma once

#include "core/clock.h"

#include <QList>

namespace cvd::testing {

// A clock that stands still until told otherwise. Waits are recorded and advance the time, never sleep.
class PinnedClock : public Clock
{
public:
    explicit PinnedClock(QDateTime now = QDateTime(QDate(2026, 11, 23), QTime(9, 30, 0)));

    QDateTime now() const override { return m_now; }
    void wait(int milliseconds) override;
    double random_unit() override { return 0.25; }

    void set(const QDateTime& now) { m_now = now; }
    void advance_seconds(qint64 seconds) { m_now = m_now.addSecs(seconds); }

    QList<int> waits;

private:
    QDateTime m_now;
};

} // namespace cvd::testing
