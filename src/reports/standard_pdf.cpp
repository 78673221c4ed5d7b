#include "reports/standard_pdf.h"

#include "reports/standard_fonts.h"

#include <QSaveFile>
#include <algorithm>
#include <cmath>
#include <optional>

using namespace Qt::StringLiterals;

namespace cvd::reports {

namespace {

constexpr int kRuleWidth = 15;     // twips
constexpr int kTwipsPerPoint = 20; // and 1000 font units make the font size
constexpr int kCompression = 6;    // zlib's default; the fastest level saves a tenth of the time for 3 % more bytes

// Font units of the 9-point face as twips.
double units_to_twips(int units)
{
    return units * kReportPointSize * kTwipsPerPoint / 1000.0;
}

// A length in twips as points with at most two decimals: a twip is five hundredths of a point, so hundredths
// hold every position the layout gives and the numbers stay short.
void append_points(QByteArray& out, double twips)
{
    long long hundredths = std::llround(twips * 100 / kTwipsPerPoint);
    if (hundredths < 0) {
        out += '-';
        hundredths = -hundredths;
    }
    out += QByteArray::number(hundredths / 100);
    const auto fraction = static_cast<int>(hundredths % 100);
    if (fraction != 0) {
        out += '.';
        out += static_cast<char>('0' + fraction / 10);
        if (fraction % 10 != 0) {
            out += static_cast<char>('0' + fraction % 10);
        }
    }
    out += ' ';
}

void append_string(QByteArray& out, const QByteArray& win_ansi)
{
    out += '(';
    for (const char c : win_ansi) {
        if (c == '(' || c == ')' || c == '\\') {
            out += '\\';
        }
        out += c;
    }
    out += ')';
}

// The content stream of one page: text runs grouped into text objects, a clip only around a cell whose text is
// wider than the cell, and the rules at the end, as the painter draws them.
class PageContent
{
public:
    explicit PageContent(int sheet_height) : m_sheet_height(sheet_height) {}

    bool add_cell(const PlacedCell& cell)
    {
        const std::optional<QByteArray> text = to_win_ansi(cell.text);
        if (!text) {
            return false;
        }
        const int inset = cell.centred ? 0 : kCellTextInset;
        const double left = cell.left + inset;
        const double width = cell.width - inset;
        const double text_width = units_to_twips(helvetica_width(*text, cell.bold));
        const double baseline =
            cell.top + (cell.height + units_to_twips(kHelveticaAscent) - units_to_twips(kHelveticaDescent)) / 2;
        if (cell.right) {
            show_text(left + width - text_width, baseline, *text, cell.bold);
        } else if (cell.centred) {
            show_text(left + std::max(0.0, (width - text_width) / 2), baseline, *text, cell.bold);
        } else if (text_width <= width) {
            show_text(left, baseline, *text, cell.bold);
        } else {
            show_clipped_text(left, cell.top, width, cell.height, baseline, *text, cell.bold);
        }
        return true;
    }

    void add_rules(const QList<Rule>& rules)
    {
        end_text();
        if (rules.isEmpty()) {
            return;
        }
        append_points(m_out, kRuleWidth);
        m_out += "w\n";
        for (const Rule& rule : rules) {
            append_points(m_out, rule.left);
            append_points(m_out, flipped(rule.y));
            m_out += "m ";
            append_points(m_out, rule.right);
            append_points(m_out, flipped(rule.y));
            m_out += "l S\n";
        }
    }

    QByteArray take()
    {
        end_text();
        return std::move(m_out);
    }

private:
    // PDF measures up from the bottom edge, the layout down from the top.
    double flipped(double y) const { return m_sheet_height - y; }

    void show_text(double x, double baseline, const QByteArray& text, bool bold)
    {
        begin_text();
        select_font(bold);
        m_out += "1 0 0 1 ";
        append_points(m_out, x);
        append_points(m_out, flipped(baseline));
        m_out += "Tm ";
        append_string(m_out, text);
        m_out += " Tj\n";
    }

    void show_clipped_text(double x, double top, double width, double height, double baseline, const QByteArray& text,
                           bool bold)
    {
        end_text();
        m_out += "q ";
        append_points(m_out, x);
        append_points(m_out, flipped(top + height));
        append_points(m_out, width);
        append_points(m_out, height);
        m_out += "re W n\n";
        const int font_outside = m_font;
        show_text(x, baseline, text, bold);
        end_text();
        m_out += "Q\n";
        m_font = font_outside; // the font belongs to the graphics state the Q restored
    }

    void begin_text()
    {
        if (!m_in_text) {
            m_out += "BT\n";
            m_in_text = true;
        }
    }

    void end_text()
    {
        if (m_in_text) {
            m_out += "ET\n";
            m_in_text = false;
        }
    }

    void select_font(bool bold)
    {
        const int font = bold ? 1 : 0;
        if (font != m_font) {
            m_out += bold ? "/F2 " : "/F1 ";
            m_out += QByteArray::number(kReportPointSize);
            m_out += " Tf\n";
            m_font = font;
        }
    }

    int m_sheet_height;
    QByteArray m_out;
    bool m_in_text = false;
    int m_font = -1; // none chosen yet on this page
};

// A PDF string in UTF-16 with its byte-order mark, the form that holds any title.
QByteArray text_string(const QString& text)
{
    QByteArray hex = "<FEFF";
    for (const QChar c : text) {
        hex += QByteArray::number(c.unicode() + 0x10000, 16).mid(1).toUpper();
    }
    return hex + '>';
}

// Writes numbered objects in order and keeps where each starts, for the cross-reference table.
class ObjectWriter
{
public:
    // Objects are numbered 1 to `last_object`.
    ObjectWriter(QSaveFile& file, int last_object) : m_file(file), m_offsets(last_object + 1, 0) {}

    void write(const QByteArray& bytes)
    {
        m_file.write(bytes);
        m_position += bytes.size();
    }

    void object(int number, const QByteArray& body)
    {
        m_offsets[number] = m_position;
        write(QByteArray::number(number) + " 0 obj\n" + body + "\nendobj\n");
    }

    void stream(int number, const QByteArray& content)
    {
        // qCompress puts the length in four bytes before the zlib stream that FlateDecode reads.
        const QByteArray packed = qCompress(content, kCompression).mid(4);
        m_offsets[number] = m_position;
        write(QByteArray::number(number) + " 0 obj\n<< /Length " + QByteArray::number(packed.size()) +
              " /Filter /FlateDecode >>\nstream\n");
        write(packed);
        write("\nendstream\nendobj\n");
    }

    void finish(int root, int info)
    {
        const qint64 table = m_position;
        QByteArray xref = "xref\n0 " + QByteArray::number(m_offsets.size()) + "\n0000000000 65535 f \n";
        for (qsizetype number = 1; number < m_offsets.size(); ++number) {
            xref += QByteArray::number(m_offsets[number]).rightJustified(10, '0') + " 00000 n \n";
        }
        xref += "trailer\n<< /Size " + QByteArray::number(m_offsets.size()) + " /Root " + QByteArray::number(root) +
                " 0 R /Info " + QByteArray::number(info) + " 0 R >>\nstartxref\n" + QByteArray::number(table) +
                "\n%%EOF\n";
        write(xref);
    }

private:
    QSaveFile& m_file;
    QList<qint64> m_offsets;
    qint64 m_position = 0;
};

// Object numbers: the fixed ones first, then each page followed by its content.
constexpr int kCatalog = 1;
constexpr int kPages = 2;
constexpr int kRegularFont = 3;
constexpr int kBoldFont = 4;
constexpr int kInfo = 5;
constexpr int kFirstPage = 6;

int page_object(qsizetype page)
{
    return kFirstPage + 2 * static_cast<int>(page);
}

QByteArray font_object(const char* base_font)
{
    return QByteArray("<< /Type /Font /Subtype /Type1 /BaseFont /") + base_font + " /Encoding /WinAnsiEncoding >>";
}

void write_fixed_objects(ObjectWriter& writer, const ReportDocument& document, qsizetype page_count,
                         const QString& title, const QDateTime& created)
{
    writer.object(kCatalog, "<< /Type /Catalog /Pages " + QByteArray::number(kPages) + " 0 R >>");
    QByteArray kids;
    for (qsizetype page = 0; page < page_count; ++page) {
        kids += QByteArray::number(page_object(page)) + " 0 R ";
    }
    QByteArray media_box = "[0 0 ";
    append_points(media_box, document.setup().width);
    append_points(media_box, document.setup().height);
    media_box += ']';
    writer.object(kPages, "<< /Type /Pages /Kids [" + kids + "] /Count " + QByteArray::number(page_count) +
                              " /MediaBox " + media_box + " /Resources << /Font << /F1 " +
                              QByteArray::number(kRegularFont) + " 0 R /F2 " + QByteArray::number(kBoldFont) +
                              " 0 R >> >> >>");
    writer.object(kRegularFont, font_object("Helvetica"));
    writer.object(kBoldFont, font_object("Helvetica-Bold"));
    QByteArray info = "<< /Title " + text_string(title) + " /Creator " + text_string(u"Corvane Desk"_s);
    if (created.isValid()) {
        info += " /CreationDate (D:" + created.toUTC().toString(u"yyyyMMddHHmmss"_s).toLatin1() + "Z)";
    }
    writer.object(kInfo, info + " >>");
}

} // namespace

StandardPdfResult write_standard_pdf(const ReportDocument& document, const QString& path, const QString& title,
                                     const QDateTime& created)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return StandardPdfResult::FileError;
    }
    const QList<qsizetype> starts = document.page_starts();
    const qsizetype page_count = std::max<qsizetype>(starts.size(), 1);
    ObjectWriter writer(file, page_object(page_count) - 1);
    writer.write("%PDF-1.4\n%\xE2\xE3\xCF\xD3\n");
    write_fixed_objects(writer, document, page_count, title, created);
    for (qsizetype page = 0; page < page_count; ++page) {
        const LaidOutPage laid_out = document.lay_out_page(page, starts);
        PageContent content(document.setup().height);
        for (const PlacedCell& cell : laid_out.cells) {
            if (!content.add_cell(cell)) {
                file.cancelWriting();
                return StandardPdfResult::OutsideFontSet;
            }
        }
        content.add_rules(laid_out.rules);
        writer.object(page_object(page), "<< /Type /Page /Parent " + QByteArray::number(kPages) + " 0 R /Contents " +
                                             QByteArray::number(page_object(page) + 1) + " 0 R >>");
        writer.stream(page_object(page) + 1, content.take());
    }
    writer.finish(kCatalog, kInfo);
    return file.commit() ? StandardPdfResult::Written : StandardPdfResult::FileError;
}

} // namespace cvd::reports
