#include "tools/addressbook_commands.h"

#include "core/databases.h"
#include "core/error_path.h"
#include "exchange/text_exchange.h"
#include "store/database.h"
#include "store/tables.h"
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

namespace carriers = store::tables::carriers;
namespace recipients = store::tables::recipients;
namespace groups = store::tables::groups;

// Fixed queries of our own; nothing typed by the caller goes into them. A null flag reads as false: a row
// whose cv_group is null is a recipient, one whose cv_on_call is null is not on call.
const QList<Listing>& listings()
{
    using store::tables::column_list;
    static const QList<Listing> all{
        {"carriers", "name\tprotocol\tphone\tline settings\tpriority",
         u"SELECT "_s %
             column_list({carriers::name, carriers::dial_type, carriers::phone_number, carriers::modem_settings,
                          carriers::priority}) %
             u" FROM "_s % carriers::table % u" ORDER BY "_s % carriers::name},
        {"recipients", "name\tfull name\tpin\tcarrier\tmax chars\tpriority",
         u"SELECT "_s %
             column_list({recipients::name, recipients::full_name, recipients::id, recipients::carrier,
                          recipients::maxchars, recipients::priority}) %
             u" FROM "_s % recipients::table % u" WHERE "_s % store::tables::is_false(recipients::group) %
             u" ORDER BY "_s % recipients::name},
        {"groups", "name\tfull name\ton call",
         u"SELECT "_s % column_list({recipients::name, recipients::full_name}) % u", CASE WHEN "_s %
             store::tables::is_true(recipients::on_call) % u" THEN 'yes' ELSE 'no' END FROM "_s % recipients::table %
             u" WHERE "_s % store::tables::is_true(recipients::group) % u" ORDER BY "_s % recipients::name},
        {"members", "group\trecipient",
         u"SELECT "_s % column_list(groups::all) % u" FROM "_s % groups::table % u" ORDER BY "_s % groups::group %
             u", "_s % groups::recipient},
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

namespace {

std::optional<exchange::ExchangeKind> exchange_kind(const QString& word)
{
    static const QList<std::pair<QString, exchange::ExchangeKind>> kinds{
        {u"carriers"_s, exchange::ExchangeKind::Carriers},
        {u"recipients"_s, exchange::ExchangeKind::Recipients},
        {u"groups"_s, exchange::ExchangeKind::Groups},
        {u"members"_s, exchange::ExchangeKind::Members},
    };
    for (const auto& [name, kind] : kinds) {
        if (word == name) {
            return kind;
        }
    }
    return std::nullopt;
}

int report(const std::optional<Notice>& box, bool succeeded, const char* command, QTextStream& out, QTextStream& err)
{
    const QString text = box ? QString(box->text).replace(u'\n', u"; "_s) : QString();
    if (succeeded) {
        out << text << '\n';
        return 0;
    }
    err << "cvdctl " << command << ": " << (box ? box->title + u": "_s + text : u"nothing done"_s) << '\n';
    return 1;
}

} // namespace

int run_export_command(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QStringList rest = arguments;
    const bool local_db = take_local_switch(rest);
    const std::optional<exchange::ExchangeKind> kind = exchange_kind(rest.value(0));
    if (rest.size() != 2 || !kind) {
        err << "cvdctl export: usage: export carriers|recipients|groups|members FILE\n";
        return 2;
    }
    DirectAccess direct(local_db);
    try {
        open_database(direct.state);
        const exchange::ExportResult result = exchange::export_text(direct.state, *kind, rest.at(1));
        return report(result.box, result.succeeded, "export", out, err);
    } catch (const ProgramHalted& halted) {
        err << "cvdctl export: " << halted.text() << '\n';
        return 1;
    }
}

int run_import_command(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QStringList rest = arguments;
    const bool local_db = take_local_switch(rest);
    const bool overwrite = rest.removeAll(u"--overwrite"_s) > 0;
    const std::optional<exchange::ExchangeKind> kind = exchange_kind(rest.value(0));
    if (rest.size() != 2 || !kind) {
        err << "cvdctl import: usage: import carriers|recipients|groups|members FILE [--overwrite]\n";
        return 2;
    }
    DirectAccess direct(local_db);
    try {
        open_database(direct.state);
        // The import publishes the names to the machine store itself.
        const exchange::ImportResult result = exchange::import_text(direct.state, *kind, rest.at(1), overwrite);
        return report(result.box, result.succeeded, "import", out, err);
    } catch (const ProgramHalted& halted) {
        err << "cvdctl import: " << halted.text() << '\n';
        return 1;
    }
}

} // namespace cvd::tools
