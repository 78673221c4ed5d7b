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

class FrontEnd;

// The program with a front end chosen: start-up, then the front end runs it until it is asked to end (by the
// operator, by SIGINT or SIGTERM, or by another program), then the orderly end. A halt ends it with status 1.
// The application object (with its halt barrier) must exist.
int run_front_end(FrontEnd& front, const ProgramOptions& options);

// The whole program: the options, the application object and the front end, then run_front_end.
int run_cvd(int argc, char** argv);

} // namespace cvd::app
