#include "console/frm_pp.h"

#include "console/console_context.h"
#include "console/controls.h"
#include "console/geometry.h"
#include "reports/page_painter.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

constexpr double kZoomStep = 1.25;

} // namespace

frmPP::frmPP(ConsoleContext& context, reports::ReportResult report, QPrinter& printer, QWidget* parent)
    : QDialog(parent), m_context(context), m_report(std::move(report)), m_printer(printer),
      m_page_count(m_report.document.page_count())
{
    setWindowTitle(u"Print Preview"_s);
    m_printer.setFullPage(true);
    build_controls();
    publish_accessibility(*this);
}

void frmPP::build_controls()
{
    SGP = make_control<QPrintPreviewWidget>(this, "SGP", &m_printer);
    btnFirst = make_control<QPushButton>(this, "btnFirst", u"|<"_s);
    btnPrevious = make_control<QPushButton>(this, "btnPrevious", u"<"_s);
    lblPage = make_control<QLabel>(this, "lblPage");
    btnNext = make_control<QPushButton>(this, "btnNext", u">"_s);
    btnLast = make_control<QPushButton>(this, "btnLast", u">|"_s);
    btnZoomOut = make_control<QPushButton>(this, "btnZoomOut", u"Zoom &Out"_s);
    btnZoomIn = make_control<QPushButton>(this, "btnZoomIn", u"Zoom &In"_s);
    btnFitWidth = make_control<QPushButton>(this, "btnFitWidth", u"Fit &Width"_s);
    btnPrint = make_control<QPushButton>(this, "btnPrint", u"&Print"_s);
    btnClose = make_control<QPushButton>(this, "btnClose", u"Close"_s);
    btnFirst->setToolTip(u"First page"_s);
    btnPrevious->setToolTip(u"Previous page"_s);
    btnNext->setToolTip(u"Next page"_s);
    btnLast->setToolTip(u"Last page"_s);

    auto* bar = new QHBoxLayout;
    for (QWidget* control : std::initializer_list<QWidget*>{btnFirst, btnPrevious, lblPage, btnNext, btnLast}) {
        bar->addWidget(control);
    }
    bar->addSpacing(16);
    for (QWidget* control : std::initializer_list<QWidget*>{btnZoomOut, btnZoomIn, btnFitWidth}) {
        bar->addWidget(control);
    }
    bar->addStretch();
    bar->addWidget(btnPrint);
    bar->addWidget(btnClose);
    auto* column = new QVBoxLayout(this);
    column->addLayout(bar);
    column->addWidget(SGP, 1);

    connect(SGP, &QPrintPreviewWidget::paintRequested, this, &frmPP::paint_pages);
    connect(SGP, &QPrintPreviewWidget::previewChanged, this, &frmPP::show_page_number);
    connect(btnFirst, &QPushButton::clicked, this, [this] { go_to(1); });
    connect(btnPrevious, &QPushButton::clicked, this, [this] { go_to(current_page() - 1); });
    connect(btnNext, &QPushButton::clicked, this, [this] { go_to(current_page() + 1); });
    connect(btnLast, &QPushButton::clicked, this, [this] { go_to(static_cast<int>(m_page_count)); });
    connect(btnZoomIn, &QPushButton::clicked, this, [this] { SGP->zoomIn(kZoomStep); });
    connect(btnZoomOut, &QPushButton::clicked, this, [this] { SGP->zoomOut(kZoomStep); });
    connect(btnFitWidth, &QPushButton::clicked, SGP, &QPrintPreviewWidget::fitToWidth);
    connect(btnPrint, &QPushButton::clicked, this, [this] {
        reports::render_pages(m_report.document, m_printer, 1, m_page_count);
        accept();
    });
    connect(btnClose, &QPushButton::clicked, this, &QDialog::reject);
    SGP->setViewMode(QPrintPreviewWidget::SinglePageView);
    SGP->fitToWidth();
    resize(900, 1000);
}

void frmPP::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (m_context.send_form != nullptr) {
        center_on_form(*this, m_context.send_form->window());
    }
}

void frmPP::paint_pages(QPrinter* printer)
{
    printer->setFullPage(true);
    reports::render_pages(m_report.document, *printer, 1, m_page_count);
}

int frmPP::current_page() const
{
    return SGP->currentPage();
}

void frmPP::go_to(int page)
{
    SGP->setCurrentPage(std::clamp(page, 1, static_cast<int>(std::max<qsizetype>(m_page_count, 1))));
    show_page_number();
}

void frmPP::show_page_number()
{
    lblPage->setText(u"Page "_s + QString::number(SGP->currentPage()) + u" of "_s + QString::number(m_page_count));
}

} // namespace cvd::console
