#include "core/clock.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QRandomGenerator>
#include <QTimer>
#include <chrono>
#include <thread>

namespace cvd {

QDateTime SystemClock::now() const
{
    return QDateTime::currentDateTime();
}

void SystemClock::wait(int milliseconds)
{
    if (milliseconds <= 0) {
        yield_to_event_loop();
        return;
    }
    if (QCoreApplication::instance() == nullptr) {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        return;
    }
    // Input and timers keep being served while we wait.
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

double SystemClock::random_unit()
{
    return QRandomGenerator::global()->generateDouble();
}

} // namespace cvd

namespace cvd {

void yield_to_event_loop()
{
    if (QCoreApplication::instance() != nullptr) {
        QCoreApplication::processEvents();
    }
}

} // namespace cvd
