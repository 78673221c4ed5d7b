// The report routines over a seeded database: what each prints on the page and writes to the file.
#include "core/record_format.h"
#include "reports/directory_reports.h"
#include "reports/report_request.h"
#include "reports/report_text.h"
#include "reports/statistics_reports.h"
#include "support/database_test.h"
#include "support/printers.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

using reports::Depth;
using reports::ReportRequest;
using reports::Which;

QDateTime at(int day, int hour, int minute, int second = 0)
{
    return QDateTime(QDate(2026, 11, day), QTime(hour, minute, second));
}

// Each body row as its cells' texts joined by " | ".
QStringList body_texts(const reports::ReportDocument& document)
{
    QStringList rows;
    for (const reports::Row& row : document.body()) {
        QStringList cells;
        for (const reports::Cell& cell : row.cells) {
            cells.append(cell.text);
        }
        rows.append(cells.join(u" | "_s));
    }
    return rows;
}

class ReportRoutines : public DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        db().exec(u"INSERT INTO cv_carriers (cv_name, cv_dial_type, cv_phone_number, cv_modem_settings) VALUES "
                  "('TapNet', 'tap', '5551000', '1200,e,7,1'), ('MailNet', 'eml', 'mail.example', '25'), "
                  "('FaxSrv', 'fxs', 'fax1', '')"_s);
        db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_carrier, cv_id, cv_maxchars, cv_alpha, "
                  "cv_drop_control, cv_SendSubject, cv_group, cv_on_call) VALUES "
                  "('zed', 'Zed Ward', 'TapNet', '555', 80, -1, 0, -1, 0, 0), "
                  "('amy', 'Amy O''Fox', 'MailNet', 'amy@example', 200, -1, -1, 0, 0, 0), "
                  "('nob', 'Nobody Home', 'TapNet', '777', 80, 0, 0, 0, 0, 0), "
                  "('ops', 'Operations', '', '', 0, 0, 0, 0, -1, -1)"_s);
        db().exec(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('ops', 'zed'), ('ops', 'amy'), "
                  "('ops', 'gone')"_s);
        add(u"zed"_s, u"TapNet"_s, at(23, 8, 0), at(23, 8, 0, 30), false, u"Pump 3 down"_s);
        add(u"zed"_s, u"TapNet"_s, at(22, 10, 0), at(22, 10, 1), true, u"Call the desk"_s);
        add(u"amy"_s, u"MailNet"_s, at(23, 9, 0), at(23, 9, 0, 10), false, u"Shift change"_s, 1565);
        add(u"zed"_s, u"TapNet"_s, at(24, 12, 0), {}, false, u"Later"_s);
        request.start = at(20, 0, 0);
        request.end = at(23, 23, 0);
        request.now = at(23, 9, 30);
        request.rows = {u"Zed Ward"_s, u"Amy O'Fox"_s, u"Nobody Home"_s, u"(G) Operations"_s};
        request.selected = {reports::kAllRow};
    }

    void add(const QString& recipient, const QString& carrier, const QDateTime& requested, const QDateTime& sent,
             bool error, const QString& text, qint64 interval = 0)
    {
        store::Statement insert = db().prepare(
            u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_carrier, cv_date_time_requested, cv_date_time_sent, "
            "cv_sent, cv_scheduled, cv_error, cv_message, cv_repeat_interval, cv_repeat_stop) "
            "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?6, ?7, ?8, ?9, ?10)"_s);
        insert.bind(1, recipient).bind(2, recipient == u"zed"_s ? u"555"_s : u"amy@example"_s).bind(3, carrier);
        insert.bind(4, requested).bind(5, sent).bind_bool(6, sent.isValid()).bind_bool(7, error).bind(8, text);
        insert.bind(9, interval).bind(10, requested.addDays(7));
        insert.exec();
    }

    reports::ReportResult run(int type)
    {
        request.type = type;
        return reports::build_report(db(), request);
    }

    QStringList file_lines(int type)
    {
        request.to_file = true;
        const QString text = run(type).file_text;
        EXPECT_TRUE(text.endsWith(u"\r\n"_s));
        return text.split(u"\r\n"_s, Qt::SkipEmptyParts);
    }

    ReportRequest request;
};

TEST_F(ReportRoutines, SentByRecipientOnThePageInSummaryWithAndWithoutZeroValues)
{
    for (const bool zero : {false, true}) {
        request.zero = zero;
        const reports::ReportResult result = run(reports::SentByRecipient);
        const auto& header = result.document.header();
        ASSERT_EQ(header.size(), 3);
        EXPECT_EQ(header[0].cells[0].text,
                  u"Sent Message Report - By Recipient - "_s + reports::range_text(request.start, request.end));
        EXPECT_TRUE(header[0].centred && header[0].bold);
        EXPECT_EQ(header[1].cells[0].text, u"Report for recipients: all recipients"_s);
        EXPECT_TRUE(header[2].line_bottom && header[2].bold);
        EXPECT_EQ(header[2].cells[1], (reports::Cell{3000, u"Status"_s}));
        QStringList expected{u"Zed Ward 555"_s,
                             reports::general_date(at(22, 10, 1)) + u" | Failed | Call the desk"_s,
                             reports::general_date(at(23, 8, 0, 30)) + u" | Successful | Pump 3 down"_s,
                             u"Zed Ward Total: 2"_s,
                             {},
                             u"Amy O'Fox amy@example"_s,
                             reports::general_date(at(23, 9, 0, 10)) + u" | Successful | Shift change"_s,
                             u"Amy O'Fox Total: 1"_s,
                             {}};
        if (zero) {
            expected += {u"Nobody Home Total: 0"_s, {}, u"Operations Total: 0"_s, {}};
        }
        expected.append(u"Total Messages:3"_s);
        EXPECT_EQ(body_texts(result.document), expected);
        EXPECT_TRUE(result.document.body().at(0).bold);
        EXPECT_FALSE(result.document.body().at(1).bold);
    }
}

TEST_F(ReportRoutines, SentByRecipientDetailTotalsAndChosenRows)
{
    request.depth = Depth::Detail;
    request.selected = {u"Amy O'Fox"_s, u"Someone Deleted"_s};
    request.rows.append(u"Someone Deleted"_s);
    reports::ReportResult result = run(reports::SentByRecipient);
    EXPECT_EQ(result.document.header().size(), 2); // no heading row in detail
    EXPECT_EQ(result.document.header()[1].cells[0].text, u"Report for recipients: Amy O'Fox, Someone Deleted"_s);
    const QStringList rows = body_texts(result.document);
    EXPECT_EQ(rows.at(1), u"Status: Successful | Requested:"_s + reports::general_date(at(23, 9, 0)) + u" | Sent: "_s +
                              reports::general_date(at(23, 9, 0, 10)));
    EXPECT_EQ(rows.at(2),
              u"Repeat Interval - Days:1  Hours:2  Minutes:5 | Repeat Stop: "_s + reports::general_date(at(30, 9, 0)));
    EXPECT_EQ(rows.at(3), u"Message: Shift change"_s);
    EXPECT_EQ(rows.last(), u"Total Messages:1"_s);

    request.depth = Depth::Totals;
    request.which = Which::Bad;
    request.selected = {reports::kAllRow};
    result = run(reports::SentByRecipient);
    EXPECT_EQ(body_texts(result.document), (QStringList{u"Zed Ward Total: 1"_s, u"Total Messages:1"_s}));
}

TEST_F(ReportRoutines, ALongMessageCarriesOnInRowsOfItsOwnInDetail)
{
    QStringList words;
    for (int i = 0; i < 60; ++i) {
        words.append(u"word"_s + QString::number(i));
    }
    const QString text = words.join(u' ');
    add(u"amy"_s, u"MailNet"_s, at(23, 10, 0), at(23, 10, 1), false, text);
    request.depth = Depth::Detail;
    request.selected = {u"Amy O'Fox"_s};
    const reports::ReportResult result = run(reports::SentByRecipient);
    QStringList message_rows;
    for (const reports::Row& row : result.document.body()) {
        const reports::Cell& cell = row.cells.value(0);
        if (cell.text.startsWith(u"Message: word0 "_s) || (!message_rows.isEmpty() && cell.position == 900)) {
            message_rows.append(cell.text);
        }
    }
    ASSERT_GE(message_rows.size(), 3);
    EXPECT_EQ(message_rows.join(u' '), u"Message: "_s + text);
    for (const QString& line : message_rows) {
        EXPECT_LE(line.size(), 120);
    }
    EXPECT_EQ(reports::wrap_words(u"abcdefghijklmnop"_s, 10), (QStringList{u"abcdefghij"_s, u"klmnop"_s}));
}

TEST_F(ReportRoutines, SentByRecipientToFileInSummaryAndDetail)
{
    request.zero = true;
    QStringList lines = file_lines(reports::SentByRecipient);
    EXPECT_EQ(lines.at(0),
              u"\"Sent Message Report - By Recipient - "_s + reports::range_text(request.start, request.end) + u'"');
    EXPECT_EQ(lines.at(1), u"\"\""_s);
    EXPECT_EQ(lines.at(2), u"\"Report for recipients: all recipients\""_s);
    EXPECT_EQ(lines.at(4), u"\"Recipient\",\"Sent\",\"Status\",\"Message\""_s);
    EXPECT_EQ(lines.at(5),
              u"\"Zed Ward 555\",\""_s + reports::general_date(at(22, 10, 1)) + u"\",\"Failed\",\"Call the desk\""_s);
    EXPECT_EQ(lines.at(7), u"\"Zed Ward Total:\",2"_s);
    EXPECT_TRUE(lines.contains(u"\"Nobody Home Total:\",0"_s));
    EXPECT_FALSE(lines.last().contains(u"Total Messages"_s));

    request.depth = Depth::Detail;
    lines = file_lines(reports::SentByRecipient);
    EXPECT_EQ(lines.at(4), u"\"Recipient\",\"Requested\",\"Sent\",\"Status\",\"Message\",\"Repeat Days\","
                           "\"Repeat Hours\",\"Repeat Minutes\",\"Repeat Stop\""_s);
    EXPECT_TRUE(lines.at(7).endsWith(u"\"Shift change\",1,2,5,\""_s + reports::general_date(at(30, 9, 0)) + u'"'));
    EXPECT_FALSE(lines.join(u'\n').contains(u"Total:"_s));
}

TEST_F(ReportRoutines, SentByDateGroupsByDayWithPageBreaks)
{
    request.page_breaks = true;
    const reports::ReportResult result = run(reports::SentByDate);
    EXPECT_EQ(result.document.header().size(), 2); // title and headings, no subject line
    EXPECT_EQ(body_texts(result.document), (QStringList{reports::short_date(QDate(2026, 11, 22)),
                                                        u"zed | Failed | Call the desk"_s,
                                                        u"Total: 1"_s,
                                                        {},
                                                        reports::short_date(QDate(2026, 11, 23)),
                                                        u"zed | Successful | Pump 3 down"_s,
                                                        u"amy | Successful | Shift change"_s,
                                                        u"Total: 2"_s,
                                                        {},
                                                        u"Total Messages:3"_s}));
    EXPECT_EQ(result.document.page_count(), 3);

    const QStringList lines = file_lines(reports::SentByDate);
    EXPECT_EQ(lines.mid(lines.size() - 3),
              (QStringList{u"\"amy\",\"Successful\",\"Shift change\""_s.prepend(
                               u"\""_s + reports::general_date(at(23, 9, 0, 10)) + u"\","_s),
                           u"\"Total:\",2"_s, u"\"Total Messages:\",3"_s}));
}

TEST_F(ReportRoutines, ScheduledReportsTakeTheUnsentRowsUnderThePresentMoment)
{
    const reports::ReportResult result = run(reports::ScheduledByCarrier);
    EXPECT_EQ(result.title, u"Scheduled Message Report - By Carrier - "_s + reports::general_date(request.now));
    request.selected = {u"TapNet"_s};
    request.rows = {u"TapNet"_s, u"MailNet"_s};
    const QStringList rows = body_texts(run(reports::ScheduledByCarrier).document);
    EXPECT_EQ(rows, (QStringList{u"TapNet"_s,
                                 u"Recipient: Zed Ward | Message: Later"_s,
                                 u"Requested: "_s + reports::general_date(at(24, 12, 0)),
                                 u"TapNet Total: 1"_s,
                                 {},
                                 u"Total Messages:1"_s}));
}

TEST_F(ReportRoutines, StatisticsEdgeCases)
{
    struct Case
    {
        const char* name;
        QDateTime start, end;
        Which which;
        QStringList selected;
        QStringList expected_lines; // file lines that must be present
        QStringList absent;
    };
    const Case cases[] = {
        {"one message",
         at(23, 8, 0),
         at(23, 8, 59),
         Which::All,
         {u"Zed Ward"_s},
         {u"\"Longest Delivery Time:\",\"0(min) 30(sec)\""_s, u"\"Shortest Delivery Time:\",\"0(min) 30(sec)\""_s,
          u"\"Average Delivery Time:\",\"0(min) 30(sec)\""_s, u"\"Failure Rate:\",\"0%\""_s,
          u"\"Messages per day:\",1.00"_s, u"\"Messages per minute:\",0.02"_s},
         {}},
        {"no message",
         at(1, 0, 0),
         at(1, 0, 0, 30),
         Which::All,
         {reports::kAllRow},
         {u"\"Messages per day:\",0.00"_s, u"\"Messages per second:\",0.00"_s,
          u"\"Longest Delivery Time:\",\"0(min) 0(sec)\""_s, u"\"Shortest Delivery Time:\",\"0(min) 0(sec)\""_s,
          u"\"Average Delliver Time: 0(min) 0(sec)\""_s, u"\"Failure Rate:\",\"0\""_s},
         {}},
        {"bad only",
         at(20, 0, 0),
         at(23, 23, 0),
         Which::Bad,
         {reports::kAllRow},
         {u"\"Total messages:\",1"_s, u"\"Longest Delivery Time:\",\"1(min) 0(sec)\""_s},
         {u"Successful:"_s, u"Failed:"_s}},
        {"all of it",
         at(20, 0, 0),
         at(23, 23, 0),
         Which::All,
         {reports::kAllRow},
         {u"\"Total messages:\",3"_s, u"\"Successful:\",2"_s, u"\"Failed:\",1"_s,
          u"\"Failure Rate:\",\"33.3333333333333%\""_s, u"\"Average Delivery Time:\",\"0(min) 33(sec)\""_s,
          u"\"Messages per day:\",1.00"_s},
         {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        request.start = c.start;
        request.end = c.end;
        request.which = c.which;
        request.selected = c.selected;
        const QStringList lines = file_lines(reports::StatisticsByRecipient);
        for (const QString& line : c.expected_lines) {
            EXPECT_TRUE(lines.contains(line)) << line.toStdString() << "\n" << lines.join(u'\n').toStdString();
        }
        for (const QString& word : c.absent) {
            EXPECT_FALSE(lines.join(u'\n').contains(word)) << word.toStdString();
        }
    }
    // The page spells the empty lines its own way.
    request.start = at(1, 0, 0);
    request.end = at(1, 0, 0, 30);
    request.to_file = false;
    const QStringList rows = body_texts(run(reports::StatisticsByDate).document);
    EXPECT_TRUE(rows.contains(u"Average Delliver Time: 0(min) 0(sec)"_s));
    EXPECT_EQ(rows.last(), u"failure Rate: 0"_s);
}

TEST(StatisticsFigures, SpansNegativeTimesAndTimeTexts)
{
    const reports::Spans thirty = reports::spans_of(at(23, 10, 0, 10), at(23, 10, 0, 40));
    EXPECT_EQ((std::array{thirty.days, thirty.hours, thirty.minutes, thirty.seconds}),
              (std::array<qint64, 4>{1, 1, 1, 30}));
    const reports::Spans crossing = reports::spans_of(at(22, 23, 59, 50), at(23, 0, 0, 10));
    EXPECT_EQ((std::array{crossing.days, crossing.hours, crossing.minutes, crossing.seconds}),
              (std::array<qint64, 4>{1, 1, 1, 20}));
    EXPECT_EQ(reports::spans_of(at(20, 0, 0), at(23, 12, 0)).days, 3);

    reports::Statistics statistics;
    reports::add_delivery(statistics, 90, false);
    reports::add_delivery(statistics, -30, true);
    reports::finish(statistics);
    EXPECT_EQ(statistics.shortest, -30);
    EXPECT_EQ(statistics.longest, 90);
    EXPECT_EQ(reports::average_time_text(statistics), u"0(min) 30(sec)"_s);
    EXPECT_EQ(reports::extreme_time_text(125), u"2(min) 5(sec)"_s);
    EXPECT_EQ(reports::extreme_time_text(-30), u"0(min) -30(sec)"_s);
    reports::Statistics none;
    reports::finish(none);
    EXPECT_EQ(none.shortest, 0);
}

TEST_F(ReportRoutines, RecipientDetailsFileHasTenHeadingsOverEightFields)
{
    request.type = reports::RecipientList;
    request.depth = Depth::Detail;
    request.rows = {u"Zed Ward"_s, u"Missing Person"_s};
    const QStringList lines = file_lines(reports::RecipientList);
    EXPECT_EQ(lines.at(0), u"\"Recipient List - "_s + reports::general_date(request.now) + u'"');
    const ParsedFile parsed = parse_records(lines.mid(2).join(u"\r\n"_s) + u"\r\n"_s);
    ASSERT_EQ(parsed.records.size(), 2);
    EXPECT_EQ(parsed.records[0].size(), 10);
    EXPECT_EQ(parsed.records[0][8].text, u"Drop NonPrint"_s);
    EXPECT_EQ(lines.at(3), u"\"Zed Ward\",\"zed\",\"TapNet\",\"555\",#TRUE#,80,#FALSE#,#TRUE#"_s);
}

TEST_F(ReportRoutines, CarrierListWithItsRecipientsAndGroupListWithMembers)
{
    request.rows = {u"TapNet"_s, u"MailNet"_s, u"FaxSrv"_s};
    request.members = true;
    reports::ReportResult carriers = run(reports::CarrierList);
    EXPECT_EQ(carriers.document.header().at(1).cells.at(1), (reports::Cell{4000, u"Type:"_s}));
    EXPECT_EQ(body_texts(carriers.document), (QStringList{u"TapNet | TAP | 5551000 | 1200,e,7,1"_s,
                                                          u"Short Name :zed | Full Name: Zed Ward"_s,
                                                          u"Short Name :nob | Full Name: Nobody Home"_s,
                                                          {},
                                                          u"MailNet | SMTP | mail.example | 25"_s,
                                                          u"Short Name :amy | Full Name: Amy O'Fox"_s,
                                                          {},
                                                          u"FaxSrv |  | fax1 | "_s,
                                                          {}}));
    EXPECT_EQ(reports::carrier_kind(u"faxmodem"_s), u"FAX"_s);

    request.rows = {u"Operations"_s};
    request.depth = Depth::Detail;
    EXPECT_EQ(body_texts(run(reports::GroupList).document),
              (QStringList{u"Description: Operations | Short Name: ops | On-Call: True"_s,
                           u"Member: Zed Ward (zed)"_s,
                           u"Member: Amy O'Fox (amy)"_s,
                           {}}));
    const QStringList lines = file_lines(reports::GroupList);
    EXPECT_EQ(lines.mid(2),
              (QStringList{u"\"Description\",\"Short Name\",\"On-Call\""_s, u"\"Operations\",\"ops\",#TRUE#"_s,
                           u"\"Member:\",\"Zed Ward\""_s, u"\"Member:\",\"Amy O'Fox\""_s}));
}

} // namespace
} // namespace cvd::testing
