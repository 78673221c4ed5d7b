#pragma once

#include <QString>
#include <QStringList>

namespace cvd::app {

struct ProgramOptions
{
    bool headless = false;
    bool show_help = false;
    bool show_version = false;
    QString command_line; // everything else, joined by blanks: switches and a message line
};

// Our own options count only before the first other argument, so a message line may hold any word.
ProgramOptions parse_program_arguments(const QStringList& arguments);
QString cvd_usage_text();

// The whole program: start-up, then running until SIGINT or SIGTERM, then the orderly end.
int run_cvd(int argc, char** argv);

} // namespace cvd::app
