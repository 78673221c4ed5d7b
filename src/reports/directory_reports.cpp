#include "reports/directory_reports.h"

#include "core/record_format.h"
#include "reports/report_text.h"
#include "store/database.h"
#include "store/tables.h"

#include <QStringBuilder>

using namespace Qt::StringLiterals;

namespace cvd::reports {

namespace recipients = store::tables::recipients;
namespace carriers = store::tables::carriers;
namespace groups = store::tables::groups;

namespace {

QString yes_no(bool value)
{
    return value ? u"True"_s : u"False"_s;
}

FileField flag_value(bool value)
{
    return value_field(flag_field(value));
}

QList<FileField> heading_fields(const QStringList& names)
{
    QList<FileField> fields;
    for (const QString& name : names) {
        fields.append(text_field(name));
    }
    return fields;
}

struct RecipientRow
{
    QString name;
    QString full_name;
    QString carrier;
    QString id;
    qint64 maxchars = 0;
    bool alpha = false;
    bool drop_control = false;
    bool send_subject = false;
    bool on_call = false;
};

std::optional<RecipientRow> recipient_by_full_name(store::Database& db, const QString& full_name)
{
    store::Statement& statement = db.cached(
        u"SELECT "_s %
        store::tables::column_list({recipients::name, recipients::full_name, recipients::carrier, recipients::id,
                                    recipients::maxchars, recipients::alpha, recipients::drop_control,
                                    recipients::send_subject, recipients::on_call}) %
        u" FROM "_s % recipients::table % u" WHERE "_s % recipients::full_name % u" = ?1 LIMIT 1"_s);
    statement.bind(1, full_name);
    std::optional<RecipientRow> row;
    if (statement.step()) {
        row = RecipientRow{statement.text(0).value_or(QString()),
                           statement.text(1).value_or(QString()),
                           statement.text(2).value_or(QString()),
                           statement.text(3).value_or(QString()),
                           statement.integer(4).value_or(0),
                           statement.flag(5),
                           statement.flag(6),
                           statement.flag(7),
                           statement.flag(8)};
    }
    statement.reset();
    return row;
}

void recipient_list(store::Database& db, const ReportRequest& request, ReportWriter& out)
{
    const bool detail = request.depth == Depth::Detail;
    if (out.to_file()) {
        QStringList names{u"Full Name"_s, u"Short Name"_s, u"Carrier"_s, u"ID"_s};
        if (detail) {
            // Ten names over eight fields: the two notify columns are gone, their heading stays.
            names +=
                {u"Alpha"_s, u"Max Chars"_s, u"Notify Only"_s, u"Notify Code"_s, u"Drop NonPrint"_s, u"Send Subject"_s};
        }
        out.record(heading_fields(names));
    }
    for (const QString& row : rows_to_report(request)) {
        const std::optional<RecipientRow> found = recipient_by_full_name(db, row);
        if (!found) {
            continue;
        }
        const RecipientRow& r = *found;
        if (out.to_file()) {
            QList<FileField> fields{text_field(r.full_name), text_field(r.name), text_field(r.carrier),
                                    text_field(r.id)};
            if (detail) {
                fields += {flag_value(r.alpha), value_field(r.maxchars), flag_value(r.drop_control),
                           flag_value(r.send_subject)};
            }
            out.record(fields);
            continue;
        }
        if (detail) {
            out.row({u"#0#Full Name: "_s + r.full_name, u"#3500#Recipient: "_s + r.name, u"#7000#ID: "_s + r.id});
            out.row({u"#500#Carrier: "_s + r.carrier, u"#3500#Alpha: "_s + yes_no(r.alpha),
                     u"#7000#Max Chars:"_s + QString::number(r.maxchars)});
            out.row({u"#0#Drop Non-print: "_s + yes_no(r.drop_control),
                     u"#3500#Send Subject: "_s + yes_no(r.send_subject)});
        } else {
            out.row({u"#0#Full Name: "_s + r.full_name, u"#5000#Recipient: "_s + r.name});
            out.row({u"#0#Carrier: "_s + r.carrier, u"#5000#ID: "_s + r.id});
        }
        out.blank_row();
    }
}

void group_members(store::Database& db, const QString& group, bool detail, ReportWriter& out)
{
    store::Statement members = db.prepare(u"SELECT "_s % groups::recipient % u" FROM "_s % groups::table %
                                          u" WHERE "_s % groups::group % u" = ?1"_s);
    members.bind(1, group);
    store::Statement& person =
        db.cached(u"SELECT "_s % recipients::full_name % u", "_s % recipients::name % u" FROM "_s % recipients::table %
                  u" WHERE "_s % recipients::name % u" = ?1 LIMIT 1"_s);
    while (members.step()) {
        person.bind(1, members.text(0).value_or(QString()));
        if (person.step()) {
            const QString full_name = person.text(0).value_or(QString());
            const QString name = person.text(1).value_or(QString());
            if (out.to_file()) {
                out.record({text_field(u"Member:"_s), text_field(full_name)});
            } else {
                out.row({u"#500#Member: "_s + full_name + (detail ? u" ("_s + name + u')' : QString())});
            }
        }
        person.reset();
    }
}

void group_list(store::Database& db, const ReportRequest& request, ReportWriter& out)
{
    const bool detail = request.depth == Depth::Detail;
    if (out.to_file()) {
        QStringList names{u"Description"_s, u"Short Name"_s};
        if (detail) {
            names.append(u"On-Call"_s);
        }
        out.record(heading_fields(names));
    }
    for (const QString& row : rows_to_report(request)) {
        const std::optional<RecipientRow> found = recipient_by_full_name(db, row);
        if (!found) {
            continue;
        }
        const RecipientRow& r = *found;
        if (out.to_file()) {
            QList<FileField> fields{text_field(r.full_name), text_field(r.name)};
            if (detail) {
                fields.append(flag_value(r.on_call));
            }
            out.record(fields);
        } else if (detail) {
            out.row({u"#0#Description: "_s + r.full_name, u"#5000#Short Name: "_s + r.name,
                     u"#9000#On-Call: "_s + yes_no(r.on_call)});
        } else {
            out.row({u"#0#Description: "_s + r.full_name, u"#6000#Short Name: "_s + r.name});
        }
        if (request.members) {
            group_members(db, r.name, detail, out);
        }
        if (!out.to_file()) {
            out.blank_row();
        }
    }
}

struct CarrierRow
{
    QString name;
    QString dial_type;
    QString phone;
    QString settings;
    QString init_string;
    qint64 maxchars = 0;
    QString password;
    qint64 message_limit = 0;
};

std::optional<CarrierRow> carrier_by_name(store::Database& db, const QString& name)
{
    store::Statement& statement =
        db.cached(u"SELECT "_s %
                  store::tables::column_list({carriers::name, carriers::dial_type, carriers::phone_number,
                                              carriers::modem_settings, carriers::init_string, carriers::maxchars,
                                              carriers::auth_pass, carriers::message_limit}) %
                  u" FROM "_s % carriers::table % u" WHERE "_s % carriers::name % u" = ?1 LIMIT 1"_s);
    statement.bind(1, name);
    std::optional<CarrierRow> row;
    if (statement.step()) {
        row = CarrierRow{statement.text(0).value_or(QString()), statement.text(1).value_or(QString()),
                         statement.text(2).value_or(QString()), statement.text(3).value_or(QString()),
                         statement.text(4).value_or(QString()), statement.integer(5).value_or(0),
                         statement.text(6).value_or(QString()), statement.integer(7).value_or(0)};
    }
    statement.reset();
    return row;
}

void carrier_recipients(store::Database& db, const QString& carrier, ReportWriter& out)
{
    store::Statement statement =
        db.prepare(u"SELECT "_s % recipients::name % u", "_s % recipients::full_name % u" FROM "_s % recipients::table %
                   u" WHERE "_s % recipients::carrier % u" = ?1"_s);
    statement.bind(1, carrier);
    while (statement.step()) {
        const QString name = statement.text(0).value_or(QString());
        const QString full_name = statement.text(1).value_or(QString());
        if (out.to_file()) {
            out.record(
                {text_field(u"Short Name :"_s), text_field(name), text_field(u"Full Name:"_s), text_field(full_name)});
        } else {
            out.row({u"#1000#Short Name :"_s + name, u"#5800#Full Name: "_s + full_name});
        }
    }
}

void carrier_list(store::Database& db, const ReportRequest& request, ReportWriter& out)
{
    const bool detail = request.depth == Depth::Detail;
    if (out.to_file()) {
        QStringList names{u"Name"_s, u"Type"_s, u"Phone/Addr"_s, u"Settings/Port"_s};
        if (detail) {
            names += {u"Init String"_s, u"Max Chars"_s, u"Password"_s, u"Message Limit"_s};
        }
        out.record(heading_fields(names));
    } else if (!detail) {
        out.page_heading({u"#0#Carrier"_s, u"#4000#Type:"_s, u"#5800#Phone/Addr:"_s, u"#9200#Settings/Port"_s});
    }
    for (const QString& row : rows_to_report(request)) {
        const std::optional<CarrierRow> found = carrier_by_name(db, row);
        if (!found) {
            continue;
        }
        const CarrierRow& c = *found;
        const QString kind = carrier_kind(c.dial_type);
        if (out.to_file()) {
            QList<FileField> fields{text_field(c.name), text_field(kind), text_field(c.phone), text_field(c.settings)};
            if (detail) {
                fields += {text_field(c.init_string), value_field(c.maxchars), text_field(c.password),
                           value_field(c.message_limit)};
            }
            out.record(fields);
        } else if (detail) {
            out.row({u"#0#Carrier: "_s + c.name, u"#4000#Type: "_s + kind, u"#5800#Phone/Addr: "_s + c.phone,
                     u"#9200#Settings/Port: "_s + c.settings},
                    true);
            out.row({u"#500#Init String: "_s + c.init_string, u"#4000#Max Chars:"_s + QString::number(c.maxchars),
                     u"#5800#Password: "_s + c.password});
            out.row({u"#500#Msg Limit: "_s + QString::number(c.message_limit)});
        } else {
            out.row({u"#0#"_s + c.name, u"#4000#"_s + kind, u"#5800#"_s + c.phone, u"#9200#"_s + c.settings});
        }
        if (request.members) {
            carrier_recipients(db, c.name, out);
        }
        if (!out.to_file() && (detail || request.members)) {
            out.blank_row();
        }
    }
}

} // namespace

QString carrier_kind(const QString& dial_type)
{
    static const std::pair<QStringView, QStringView> kinds[] = {
        {u"eml", u"SMTP"}, {u"tap", u"TAP"},  {u"ucp", u"UCP"},   {u"ton", u"TONE"},
        {u"snp", u"SNPP"}, {u"wct", u"WCTP"}, {u"gsm", u"GSMAT"}, {u"fax", u"FAX"},
    };
    const QString code = dial_type.left(3);
    for (const auto& [prefix, kind] : kinds) {
        if (code == prefix) {
            return kind.toString();
        }
    }
    return {};
}

void directory_report(store::Database& db, const ReportRequest& request, ReportResult& result)
{
    ReportWriter out(result, request.to_file);
    if (request.type == CarrierList) {
        out.title(u"Carrier List - "_s + general_date(request.now));
        carrier_list(db, request, out);
    } else if (request.type == GroupList) {
        out.title(u"Group List - "_s + general_date(request.now));
        group_list(db, request, out);
    } else {
        out.title(u"Recipient List - "_s + general_date(request.now));
        recipient_list(db, request, out);
    }
}

} // namespace cvd::reports
