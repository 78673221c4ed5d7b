// How fast reports come out: SentByDateReport over 100,000 sent messages to a PDF (goal: under 3 s) and to the
// text file (goal: under 1 s), and the preview of a 1,000-page report up to its first page (goal: under 2 s).
#include "bench_program.h"
#include "console/frm_pp.h"
#include "offscreen_application.h"
#include "reports/page_painter.h"
#include "reports/report_request.h"

#include <QApplication>
#include <QFile>
#include <QPrinter>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

// A history of 100,000 sent messages over 50 days, one in twenty failed.
struct HistoryFixture : BenchProgram<>
{
    HistoryFixture()
    {
        open_fresh_global_database();
        cvd::store::Transaction commit(state.global_db);
        cvd::store::Statement insert = state.global_db.prepare(
            u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_carrier, cv_message, cv_date_time_requested, "
            "cv_date_time_sent, cv_sent, cv_scheduled, cv_error, cv_repeat_interval) "
            "VALUES (?1, ?2, 'TapNet', ?3, ?4, ?5, -1, -1, ?6, 0)"_s);
        const QDateTime first(QDate(2026, 10, 1), QTime(0, 0));
        for (int i = 0; i < kMessages; ++i) {
            const QDateTime requested = first.addSecs(static_cast<qint64>(i) * 43);
            insert.reset();
            insert.bind(1, u"r"_s + QString::number(i % 200))
                .bind(2, QString::number(5550000 + i % 200))
                .bind(3, u"Alarm "_s + QString::number(i) + u" at pump station, call the desk")
                .bind(4, requested)
                .bind(5, requested.addSecs(20 + i % 90))
                .bind_bool(6, i % 20 == 0);
            insert.exec();
        }
        commit.commit();
        request.type = cvd::reports::SentByDate;
        request.start = first;
        request.end = first.addDays(60);
        request.now = first.addDays(60);
    }

    static constexpr int kMessages = 100000;
    cvd::reports::ReportRequest request;
};

HistoryFixture& history()
{
    static HistoryFixture fixture;
    return fixture;
}

void BM_SentByDateToPdf(benchmark::State& bench)
{
    offscreen_application();
    HistoryFixture& fixture = history();
    const QString path = fixture.dir.path() + u"/report.pdf"_s;
    qsizetype pages = 0;
    for (auto _ : bench) {
        const cvd::reports::ReportResult result = cvd::reports::build_report(fixture.state.global_db, fixture.request);
        pages = result.document.page_count();
        cvd::reports::write_pdf(result.document, path, result.title);
    }
    bench.counters["pages"] = static_cast<double>(pages);
    bench.counters["MB"] = static_cast<double>(QFile(path).size()) / 1e6;
}
BENCHMARK(BM_SentByDateToPdf)->Unit(benchmark::kMillisecond)->Iterations(2);

// The same report up to its laid-out pages, without painting: what the query and the rows cost of the PDF.
void BM_SentByDateBuildOnly(benchmark::State& bench)
{
    HistoryFixture& fixture = history();
    qsizetype pages = 0;
    for (auto _ : bench) {
        const cvd::reports::ReportResult result = cvd::reports::build_report(fixture.state.global_db, fixture.request);
        pages = result.document.page_count();
    }
    bench.counters["pages"] = static_cast<double>(pages);
}
BENCHMARK(BM_SentByDateBuildOnly)->Unit(benchmark::kMillisecond)->Iterations(2);

void BM_SentByDateToTextFile(benchmark::State& bench)
{
    HistoryFixture& fixture = history();
    cvd::reports::ReportRequest request = fixture.request;
    request.to_file = true;
    const QString path = fixture.dir.path() + u"/report.txt"_s;
    for (auto _ : bench) {
        const cvd::reports::ReportResult result = cvd::reports::build_report(fixture.state.global_db, request);
        QFile file(path);
        if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            file.write(result.file_text.toUtf8());
        }
    }
    bench.counters["MB"] = static_cast<double>(QFile(path).size()) / 1e6;
}
BENCHMARK(BM_SentByDateToTextFile)->Unit(benchmark::kMillisecond)->Iterations(3);

// From a laid-out report of 1,000 pages to the preview window shown with its first page.
void BM_PreviewThousandPages(benchmark::State& bench)
{
    offscreen_application();
    cvd::reports::ReportResult report;
    report.document.add_header_row({u"Sent Message Report - By Date/Time"_s}).centred = true;
    report.document.add_header_row({u"#500#Recipient"_s, u"#3500#Status"_s, u"#5000#Message"_s}).line_bottom = true;
    for (int page = 0; page < 1000; ++page) {
        for (int row = 0; row < 40; ++row) {
            report.document.add_body_row({u"#500#r"_s + QString::number(row), u"#3500#Successful"_s,
                                          u"#5000#Alarm at pump station "_s + QString::number(page)});
        }
        report.document.new_page();
    }
    HistoryFixture& fixture = history();
    BenchConsole console(fixture.state);
    cvd::console::ConsoleContext& context = console.context;
    qsizetype pages = 0;
    for (auto _ : bench) {
        QPrinter printer(QPrinter::HighResolution);
        cvd::console::frmPP preview(context, report, printer, nullptr);
        preview.show();
        QApplication::processEvents();
        pages = preview.page_count();
    }
    bench.counters["pages"] = static_cast<double>(pages);
}
BENCHMARK(BM_PreviewThousandPages)->Unit(benchmark::kMillisecond)->Iterations(2);

} // namespace
