#include "tools/cvdctl.h"

#include "core/version.h"
#include "tools/addressbook_commands.h"
#include "tools/control_commands.h"
#include "tools/db_commands.h"
#include "tools/registry_commands.h"

using namespace Qt::StringLiterals;

namespace cvd::tools {

QString cvdctl_usage_text()
{
    return u"Usage: cvdctl COMMAND [ARGUMENTS]\n"
           "\n"
           "Talks to Corvane Desk on this machine, for other programs and scripts.\n"
           "\n"
           "The running program:\n"
           "  send [--localdb] RECIPIENT SENDER MESSAGE...    enqueue a message line for the program, running\n"
           "                                                  or not; it is stored before cvdctl answers\n"
           "  notify --kind 2|3 TEXT                          an activity line (2) or status text (3), below\n"
           "                                                  2048 bytes in UTF-8\n"
           "  stop [--timeout SECONDS]                        ask it to end and wait until it has (30 s)\n"
           "  status [--localdb]                              whether it runs, its pid and channel, the counts\n"
           "\n"
           "Address book (KIND is carriers, recipients, groups or members):\n"
           "  export [--localdb] KIND FILE                    write them to a text file\n"
           "  import [--localdb] KIND FILE [--overwrite]      read them from a text file; existing names are\n"
           "                                                  kept unless --overwrite is given\n"
           "  list [--localdb] carriers|recipients|groups|members\n"
           "                                                  print them as tab-separated lines\n"
           "\n"
           "Database upkeep (while everything keeps running):\n"
           "  db [--localdb] check                            integrity, version and row counts\n"
           "  db [--localdb] backup FILE                      a consistent copy of the global database\n"
           "  db [--localdb] purge [--days N]                 delete finished messages older than N days\n"
           "                                                  (default: the purge_after setting)\n"
           "  db [--localdb] compact                          compact both databases and fill null columns\n"
           "                                                  (only while Corvane Desk does not run)\n"
           "\n"
           "Machine store (keys are paths such as 'SOFTWARE\\Halvern\\Transfer'; --hive HKLM is the default):\n"
           "  reg get [--hive HKLM|HKCU] KEY NAME             print a value\n"
           "  reg set [--hive HKLM|HKCU] [--number] KEY NAME DATA\n"
           "                                                  write a text or number, creating the key\n"
           "  reg delete [--hive HKLM|HKCU] KEY [NAME]        delete a value, or the key with all below it\n"
           "  reg list [--hive HKLM|HKCU] KEY                 list subkeys (ending in \\) and values\n"
           "\n"
           "  --help       show this text\n"
           "  --version    show the version\n"
           "\n"
           "The store lies under CVD_REGISTRY_ROOT, the runtime folder under CVD_RUNTIME_DIR, when they are set.\n"
           "Exit status: 0 on success, 1 on failure, 2 for wrong arguments.\n"_s;
}

int run_cvdctl(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    if (arguments.isEmpty()) {
        err << cvdctl_usage_text();
        return 2;
    }
    const QString& command = arguments.first();
    if (command == u"--help" || command == u"-h" || command == u"help") {
        out << cvdctl_usage_text();
        return 0;
    }
    if (command == u"--version") {
        out << "cvdctl " << CVD_VERSION_TEXT << '\n';
        return 0;
    }
    const QStringList rest = arguments.mid(1);
    if (command == u"send") {
        return run_send_command(rest, out, err);
    }
    if (command == u"notify") {
        return run_notify_command(rest, out, err);
    }
    if (command == u"stop") {
        return run_stop_command(rest, out, err);
    }
    if (command == u"status") {
        return run_status_command(rest, out, err);
    }
    if (command == u"db") {
        return run_db_command(rest, out, err);
    }
    if (command == u"export") {
        return run_export_command(rest, out, err);
    }
    if (command == u"import") {
        return run_import_command(rest, out, err);
    }
    if (command == u"list") {
        return run_list_command(rest, out, err);
    }
    if (command == u"reg") {
        return run_registry_command(arguments.mid(1), out, err);
    }
    err << "cvdctl: unknown command '" << command << "'; see cvdctl --help\n";
    return 2;
}

} // namespace cvd::tools
