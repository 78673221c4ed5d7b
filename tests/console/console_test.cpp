#include "console_test.h"

#include <QApplication>
#include <QTimer>

namespace cvd::testing {

void ConsoleTest::SetUp()
{
    DatabaseTest::SetUp();
    context = std::make_unique<console::ConsoleContext>(
        console::ConsoleContext{*state, shared, windows, activity, &send_form, {}, {}});
}

void ConsoleTest::TearDown()
{
    windows.close_all();
    QApplication::processEvents();
}

void ConsoleTest::when_modal(std::function<void(QWidget&)> act)
{
    auto* poll = new QTimer;
    poll->setInterval(5);
    QObject::connect(poll, &QTimer::timeout, [poll, act = std::move(act)] {
        QWidget* modal = QApplication::activeModalWidget();
        if (modal == nullptr) {
            return;
        }
        poll->stop();
        poll->deleteLater();
        act(*modal);
    });
    poll->start();
}

} // namespace cvd::testing
