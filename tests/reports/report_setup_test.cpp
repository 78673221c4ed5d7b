// The decisions behind the report windows: which groups each family offers, Apply's refusals, and the
// queuing of a report as a message.
#include "reports/report_setup.h"
#include "reports/send_report.h"
#include "support/database_test.h"
#include "support/printers.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

TEST(ReportSetup, FamiliesOfferTheirOwnGroups)
{
    struct Case
    {
        int type;
        QString list_caption;
        bool dates, depth, which, zero, page_breaks, send;
    };
    const Case cases[] = {
        {1, u"Recipient(s)"_s, true, true, true, true, true, false},
        {2, {}, true, true, true, false, true, true},
        {3, u" Carrier(s)"_s, true, true, true, true, true, false},
        {12, {}, false, true, false, false, true, true},
        {13, u" Carrier(s)"_s, false, true, false, true, true, false},
        {21, u"Recipient(s)"_s, true, false, true, false, false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.type);
        const reports::ReportsSetup setup = reports::reports_setup(c.type);
        EXPECT_EQ(setup.list_caption, c.list_caption);
        EXPECT_EQ((std::array{setup.dates, setup.depth, setup.which, setup.zero, setup.page_breaks, setup.send}),
                  (std::array{c.dates, c.depth, c.which, c.zero, c.page_breaks, c.send}));
    }
    EXPECT_EQ(reports::reports_setup(11).routine, u"ShowRecipients"_s);
    EXPECT_EQ(reports::reports_setup(13).routine, u"ShowScheduledByCarrier"_s);
    EXPECT_EQ(reports::list_setup(32).members_caption, u"Members"_s);
    EXPECT_TRUE(reports::list_setup(31).members_caption.isEmpty());
}

TEST(ReportSetup, ApplyRefusesOnlyWhatItMust)
{
    struct Case
    {
        int type;
        bool selected, to_file;
        QString file;
        QString refusal;
    };
    const Case cases[] = {
        {1, false, false, {}, u"No recipients were selected"_s},
        {3, false, true, u"x.txt"_s, u"No carriers were selected"_s},
        {21, false, false, {}, {}}, // statistics run with nothing selected
        {2, true, true, u"  "_s, u"No file name was specified"_s},
        {2, true, false, {}, {}}, // a blank name matters only when writing a file
        {33, true, true, u"list.pdf"_s, {}},
    };
    for (const Case& c : cases) {
        const std::optional<Notice> refusal = reports::apply_refusal(c.type, c.selected, c.to_file, c.file);
        EXPECT_EQ(refusal.value_or(Notice{}).text, c.refusal) << c.type;
        if (refusal) {
            EXPECT_EQ(refusal->title, u"Can't Generate Report"_s);
        }
    }
    EXPECT_TRUE(reports::is_pdf_name(u"/tmp/Report.PDF "_s));
    EXPECT_FALSE(reports::is_pdf_name(u"/tmp/report.pdf.txt"_s));
    const reports::DateRange range = reports::default_range(QDateTime(QDate(2026, 11, 23), QTime(9, 30, 15)));
    EXPECT_EQ(range.start, QDateTime(QDate(2026, 11, 23), QTime(0, 0)));
    EXPECT_EQ(range.end.time(), QTime(9, 30, 15));
}

TEST(ReportSetup, AllWithSingleRowsListsEverythingOnceAndChosenRowsKeepTheListOrder)
{
    reports::ReportRequest request;
    request.rows = {u"Amy"_s, u"Bo"_s, u"Cy"_s};
    request.selected = {u"Cy"_s, reports::kAllRow, u"Amy"_s};
    EXPECT_EQ(reports::rows_to_report(request), request.rows);
    request.selected = {u"Cy"_s, u"Amy"_s, u"Cy"_s};
    EXPECT_EQ(reports::rows_to_report(request), (QStringList{u"Amy"_s, u"Cy"_s}));
    request.selected.clear();
    EXPECT_TRUE(reports::rows_to_report(request).isEmpty());
}

class SendReport : public DatabaseTest
{
};

TEST_F(SendReport, TheWholeReportGoesWhenItFitsAndTheAddresseesAreMailAndFaxOnly)
{
    db().exec(u"INSERT INTO cv_carriers (cv_name, cv_dial_type) VALUES ('TapNet', 'tap'), ('MailNet', 'eml'), "
              "('Fax', 'fax'), ('FaxSrv', 'fxs')"_s);
    db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_carrier, cv_maxchars, cv_group) VALUES "
              "('zed', 'Zed', 'TapNet', 0, 0), ('amy', 'Amy', 'MailNet', 0, 0), ('bo', 'Bo', 'Fax', 5, 0), "
              "('cy', 'Cy', 'FaxSrv', 0, 0), ('all', 'All', 'MailNet', 0, -1)"_s);
    const QList<reports::ReportAddressee> addressees = reports::report_addressees(db());
    QStringList names;
    for (const reports::ReportAddressee& a : addressees) {
        names.append(a.name);
    }
    EXPECT_EQ(names, (QStringList{u"amy"_s, u"bo"_s, u"cy"_s}));
    const reports::SentReport whole = reports::queue_report(*state, addressees.at(0), u"line one\r\nline two"_s);
    EXPECT_FALSE(whole.cut);
    EXPECT_EQ(whole.characters, 18);
    EXPECT_TRUE(whole.notice.text.contains(u"The whole report went."_s));
    const reports::SentReport cut = reports::queue_report(*state, addressees.at(1), u"abcdefgh"_s);
    EXPECT_TRUE(cut.cut);
    store::Statement rows = db().prepare(u"SELECT cv_recipient, cv_message, cv_sent, cv_scheduled, cv_error, "
                                         "cv_transaction FROM cv_messages ORDER BY cv_message_id"_s);
    ASSERT_TRUE(rows.step());
    EXPECT_EQ(rows.text(1), u"line one\r\nline two"_s);
    EXPECT_GT(rows.integer(5).value_or(0), 0);
    ASSERT_TRUE(rows.step());
    EXPECT_EQ(rows.text(0), u"bo"_s);
    EXPECT_EQ(rows.text(1), u"abcde"_s);
    EXPECT_FALSE(rows.flag(2) || rows.flag(3) || rows.flag(4));
}

} // namespace
} // namespace cvd::testing
