// Renders two sample reports as PDF from a small seeded address book and history:
// report-sent-by-recipient.pdf and report-carriers.pdf in the folder given (docs/ by default).
#include "reports/page_painter.h"
#include "reports/report_request.h"
#include "store/database.h"
#include "store/schema.h"

#include <QDir>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

struct Person
{
    const char16_t* name;
    const char16_t* full_name;
    const char16_t* carrier;
    const char16_t* id;
};

const Person kPeople[] = {
    {u"jmarsh", u"Joan Marsh", u"Northline Paging", u"5550142"},
    {u"pokafor", u"Peter Okafor", u"Northline Paging", u"5550187"},
    {u"lchen", u"Lin Chen", u"Metro SMTP Relay", u"lchen@pager.example.net"},
    {u"rdiaz", u"Rosa Diaz", u"Coastal SNPP", u"7715"},
    {u"tbrandt", u"Tom Brandt", u"Coastal SNPP", u"7719"},
    {u"maintfax", u"Maintenance Office Fax", u"Plant Fax Server", u"5550100"},
};

const char16_t* const kTexts[] = {
    u"Pump station 3 high level alarm, please call the control room",
    u"Boiler 2 tripped on low water, standby crew requested",
    u"Shift handover at 18:00 moved to the east gate",
    u"Fire panel fault in building C, engineer on the way",
    u"Chiller 1 restarted, monitoring for one hour",
    u"Generator test complete, all readings normal",
};

void seed(cvd::store::Database& db)
{
    db.exec(u"INSERT INTO cv_carriers (cv_name, cv_dial_type, cv_phone_number, cv_modem_settings, cv_maxchars) VALUES "
            "('Northline Paging', 'tap', '18005550199', '1200,e,7,1', 240), "
            "('Metro SMTP Relay', 'eml', 'smtp.pager.example.net', '25', 1000), "
            "('Coastal SNPP', 'snpp', 'snpp.coastal.example.com', '444', 160), "
            "('Plant Fax Server', 'fxs', '\\\\faxsrv\\outbox', '', 0), "
            "('Harbour GSM', 'gsmat', '+4915550100', 'COM3 9600', 160)"_s);
    cvd::store::Statement person =
        db.prepare(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_carrier, cv_id, cv_group, cv_ad_hoc) "
                   "VALUES (?1, ?2, ?3, ?4, 0, 0)"_s);
    for (const Person& p : kPeople) {
        person.reset();
        person.bind(1, QString::fromUtf16(p.name))
            .bind(2, QString::fromUtf16(p.full_name))
            .bind(3, QString::fromUtf16(p.carrier))
            .bind(4, QString::fromUtf16(p.id));
        person.exec();
    }
    cvd::store::Statement message =
        db.prepare(u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_carrier, cv_message, cv_date_time_requested, "
                   "cv_date_time_sent, cv_sent, cv_scheduled, cv_error, cv_repeat_interval) "
                   "VALUES (?1, ?2, ?3, ?4, ?5, ?6, -1, -1, ?7, 0)"_s);
    const QDateTime day(QDate(2026, 11, 23), QTime(6, 0));
    for (int i = 0; i < 24; ++i) {
        const Person& p = kPeople[(i * 5) % 6];
        const QDateTime requested = day.addSecs(static_cast<qint64>(i) * 1260);
        message.reset();
        message.bind(1, QString::fromUtf16(p.name))
            .bind(2, QString::fromUtf16(p.id))
            .bind(3, QString::fromUtf16(p.carrier))
            .bind(4, QString::fromUtf16(kTexts[(i / 2 + i % 4) % 6]))
            .bind(5, requested)
            .bind(6, requested.addSecs(15 + (i * 37) % 200))
            .bind_bool(7, i % 9 == 4);
        message.exec();
    }
}

bool render(cvd::store::Database& db, const cvd::reports::ReportRequest& request, const QString& path)
{
    const cvd::reports::ReportResult result = cvd::reports::build_report(db, request);
    if (!cvd::reports::write_pdf(result.document, path, result.title)) {
        std::fprintf(stderr, "cannot write %s\n", qUtf8Printable(path));
        return false;
    }
    std::printf("%s: %lld page(s)\n", qUtf8Printable(path), static_cast<long long>(result.document.page_count()));
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QGuiApplication application(argc, argv);
    const QString out = argc > 1 ? QString::fromLocal8Bit(argv[1]) : u"docs"_s;
    QDir().mkpath(out);
    QTemporaryDir dir;
    const QString db_path = dir.filePath(u"cvd.mdb"_s);
    cvd::store::create_global_database(db_path);
    cvd::store::Database db = cvd::store::Database::open(db_path);
    seed(db);

    cvd::reports::ReportRequest request;
    request.selected = {cvd::reports::kAllRow};
    request.start = QDateTime(QDate(2026, 11, 23), QTime(0, 0));
    request.end = QDateTime(QDate(2026, 11, 23), QTime(23, 59, 59));
    request.now = QDateTime(QDate(2026, 11, 24), QTime(7, 0));
    for (const Person& p : kPeople) {
        request.rows.append(QString::fromUtf16(p.full_name));
    }
    request.type = cvd::reports::SentByRecipient;
    bool ok = render(db, request, out + u"/report-sent-by-recipient.pdf"_s);

    request.type = cvd::reports::CarrierList;
    request.rows = {u"Coastal SNPP"_s, u"Harbour GSM"_s, u"Metro SMTP Relay"_s, u"Northline Paging"_s,
                    u"Plant Fax Server"_s};
    request.members = true;
    ok = render(db, request, out + u"/report-carriers.pdf"_s) && ok;
    return ok ? 0 : 1;
}
