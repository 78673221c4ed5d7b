#pragma once

#include "app/front_end.h"
#include "console/console_session.h"

namespace cvd::app {

// `cvd` on a desktop: the console's windows over the same dispatcher that `cvd --headless` runs.
class ConsoleFrontEnd : public FrontEnd
{
public:
    Prompter& prompter() override { return m_session.prompter(); }
    int run(AppState& state) override { return m_session.run(state); }
    void request_stop() override { m_session.request_close(); }

private:
    console::ConsoleSession m_session;
};

} // namespace cvd::app
