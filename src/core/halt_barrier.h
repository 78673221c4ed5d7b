#pragma once

#include "core/error_path.h"
#include "core/startup.h"

#include <QCoreApplication>
#include <QString>
#include <optional>

namespace cvd {

// The halt that ended the event loop, if one did. A halt has already shown its fatal box when it is thrown.
std::optional<QString> noted_halt();
void note_halt(const QString& text);
void clear_noted_halt();

// The one barrier between a halt and the event loop: a ProgramHalted thrown by any event handler, slot or
// timer ends the loop with kExitFailure and is noted, so that the front end ends the program after exec()
// returns and no handler needs a try/catch of its own. Application is QCoreApplication or QApplication.
template <typename Application> class HaltBarrier : public Application
{
public:
    using Application::Application;

    bool notify(QObject* receiver, QEvent* event) override
    {
        try {
            return Application::notify(receiver, event);
        } catch (const ProgramHalted& halt) {
            note_halt(halt.text());
            Application::exit(kExitFailure);
            return true;
        }
    }
};

} // namespace cvd
