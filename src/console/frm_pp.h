#pragma once

#include "reports/report_request.h"

#include <QDialog>

class QLabel;
class QPrintPreviewWidget;
class QPrinter;
class QPushButton;

namespace cvd::console {

struct ConsoleContext;

// "Print Preview": the pages of one report, with zoom, page turning and printing.
class frmPP : public QDialog
{
    Q_OBJECT

public:
    frmPP(ConsoleContext& context, reports::ReportResult report, QPrinter& printer, QWidget* parent);

    qsizetype page_count() const { return m_page_count; }
    int current_page() const;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void build_controls();
    void paint_pages(QPrinter* printer);
    void go_to(int page);
    void show_page_number();

    ConsoleContext& m_context;
    reports::ReportResult m_report;
    QPrinter& m_printer;
    qsizetype m_page_count = 0;
    QPrintPreviewWidget* SGP = nullptr;
    QPushButton* btnFirst = nullptr;
    QPushButton* btnPrevious = nullptr;
    QPushButton* btnNext = nullptr;
    QPushButton* btnLast = nullptr;
    QLabel* lblPage = nullptr;
    QPushButton* btnZoomIn = nullptr;
    QPushButton* btnZoomOut = nullptr;
    QPushButton* btnFitWidth = nullptr;
    QPushButton* btnPrint = nullptr;
    QPushButton* btnClose = nullptr;
};

} // namespace cvd::console
