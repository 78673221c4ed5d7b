#include "tools/addressbook_commands.h"

#include "core/databases.h"
#include "core/error_path.h"
#include "store/database.h"
#include "tools/direct_access.h"

using namespace Qt::StringLiterals;

namespace cvd::tools {

namespace {

struct Listing
{
    const char* kind;
    const char* heading;
    QString sql;
};

// Fixed queries of our own; nothing typed by the caller goes into them.
const QList<Listing>& listings()
{
    static const QList<Listing> all{
        {"carriers", "name\tprotocol\tphone\tline settings\tpriority",
         u"SELECT cv_name, cv_dial_type, cv_phone_number, cv_modem_settings, cv_priority FROM cv_carriers "
         "ORDER BY cv_name"_s},
        {"recipients", "name\tfull name\tpin\tcarrier\tmax chars\tpriority",
         u"SELECT cv_name, cv_full_name, cv_id, cv_carrier, cv_maxchars, cv_priority FROM cv_recipients "
         "WHERE (cv_group = 0 OR cv_group IS NULL) ORDER BY cv_name"_s},
        {"groups", "name\tfull name\ton call",
         u"SELECT cv_name, cv_full_name, CASE WHEN cv_on_call <> 0 THEN 'yes' ELSE 'no' END FROM cv_recipients "
         "WHERE cv_group <> 0 ORDER BY cv_name"_s},
        {"members", "group\trecipient",
         u"SELECT cv_group, cv_recipient FROM cv_groups ORDER BY cv_group, cv_recipient"_s},
    };
    return all;
}

} // namespace

int run_list_command(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QStringList rest = arguments;
    const bool local_db = take_local_switch(rest);
    const Listing* chosen = nullptr;
    for (const Listing& listing : listings()) {
        if (rest.size() == 1 && rest.first() == QLatin1StringView(listing.kind)) {
            chosen = &listing;
        }
    }
    if (chosen == nullptr) {
        err << "cvdctl list: usage: list carriers|recipients|groups|members\n";
        return 2;
    }
    DirectAccess direct(local_db);
    try {
        open_database(direct.state);
        store::Statement select = direct.state.global_db.prepare(chosen->sql);
        out << chosen->heading << '\n';
        while (select.step()) {
            QStringList fields;
            for (int column = 0; column < select.column_count(); ++column) {
                fields.append(select.text(column).value_or(QString()));
            }
            out << fields.join(u'\t') << '\n';
        }
    } catch (const store::Error& error) {
        err << "cvdctl list: " << error.message() << '\n';
        return 1;
    } catch (const ProgramHalted& halted) {
        err << "cvdctl list: " << halted.text() << '\n';
        return 1;
    }
    return 0;
}

} // namespace cvd::tools
