#pragma once

#include "app/front_end.h"
#include "app/headless_view.h"
#include "terminal/terminal_prompter.h"

namespace cvd::app {

// `cvd --headless`: boxes on the terminal, the dispatcher's reports as log lines on stdout.
class HeadlessFrontEnd : public FrontEnd
{
public:
    Prompter& prompter() override { return m_prompter; }
    int run(AppState& state) override;
    void request_stop() override;
    void ended() override;

private:
    terminal::TerminalPrompter m_prompter;
    HeadlessView m_view;
};

} // namespace cvd::app
