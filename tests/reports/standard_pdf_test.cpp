// Reports written as PDF in the standard fonts: a file every reader opens, the cells where the layout puts them,
// and Qt's engine for text the standard fonts cannot show.
#include "reports/page_painter.h"
#include "reports/standard_fonts.h"
#include "reports/standard_pdf.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtEndian>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::reports {
namespace {

// Reads a PDF through its cross-reference table, as a reader does, so that a wrong offset or length shows.
class PdfReader
{
public:
    explicit PdfReader(QByteArray bytes) : m_bytes(std::move(bytes))
    {
        const qsizetype start = m_bytes.lastIndexOf("startxref\n");
        if (start < 0) {
            return;
        }
        const qsizetype table = m_bytes.mid(start + 10).split('\n').value(0).toLongLong();
        if (m_bytes.mid(table, 5) != "xref\n") {
            return;
        }
        const QList<QByteArray> head = m_bytes.mid(table + 5, 20).split('\n').value(0).split(' ');
        const int count = head.value(1).toInt();
        const qsizetype entries = m_bytes.indexOf('\n', table + 5) + 1;
        for (int number = 0; number < count; ++number) {
            const QByteArray entry = m_bytes.mid(entries + 20LL * number, 20);
            m_offsets.append(entry.endsWith(" n \n") ? entry.left(10).toLongLong() : -1);
        }
        m_valid = count > 0 && m_bytes.mid(entries + 20LL * count, 8) == "trailer\n";
    }

    bool valid() const { return m_valid; }
    int object_count() const { return static_cast<int>(m_offsets.size()); }

    // The object's text from "obj" to "endobj"; empty when the table does not point at it.
    QByteArray object(int number) const
    {
        const qsizetype at = m_offsets.value(number, -1);
        const QByteArray opening = QByteArray::number(number) + " 0 obj\n";
        if (at < 0 || m_bytes.mid(at, opening.size()) != opening) {
            return {};
        }
        const qsizetype end = m_bytes.indexOf("endobj", at);
        return m_bytes.mid(at + opening.size(), end - at - opening.size());
    }

    // The inflated stream of the object, read by its /Length.
    QByteArray stream(int number) const
    {
        const QByteArray body = object(number);
        static const QRegularExpression length(u"/Length (\\d+)"_s);
        const QRegularExpressionMatch match = length.match(QString::fromLatin1(body));
        const qsizetype data = body.indexOf("stream\n") + 7;
        if (!match.hasMatch() || data < 7) {
            return {};
        }
        const QByteArray packed = body.mid(data, match.captured(1).toLongLong());
        if (body.mid(data + packed.size(), 10) != "\nendstream") {
            return {};
        }
        QByteArray sized(4, '\0');
        qToBigEndian<quint32>(1U << 20, sized.data());
        return qUncompress(sized + packed);
    }

    // The content streams of the pages, in the order of the page tree.
    QList<QByteArray> page_contents() const
    {
        QList<QByteArray> contents;
        static const QRegularExpression kids(u"/Kids \\[([^\\]]*)\\]"_s);
        static const QRegularExpression reference(u"(\\d+) 0 R"_s);
        static const QRegularExpression content(u"/Contents (\\d+) 0 R"_s);
        const QString pages = QString::fromLatin1(object(2));
        const QString kid_list = kids.match(pages).captured(1);
        for (const QRegularExpressionMatch& kid : reference.globalMatch(kid_list)) {
            const QString page = QString::fromLatin1(object(kid.captured(1).toInt()));
            contents.append(stream(content.match(page).captured(1).toInt()));
        }
        return contents;
    }

private:
    QByteArray m_bytes;
    QList<qint64> m_offsets;
    bool m_valid = false;
};

QByteArray read_file(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

TEST(StandardFonts, WindowsLatinTextIsEncodedAndMeasured)
{
    EXPECT_EQ(to_win_ansi(u"Grüße €5 – “ok”"), QByteArray("Gr\xFC\xDF"
                                                          "e \x80"
                                                          "5 \x96 \x93ok\x94"));
    EXPECT_EQ(to_win_ansi(u"a\tb\r\n"), QByteArray("a b  "));
    EXPECT_FALSE(to_win_ansi(u"Привет").has_value());
    EXPECT_FALSE(to_win_ansi(u"\u0081").has_value()); // a code the page leaves unassigned
    // Helvetica's advances: H 722, e 556, l 222, o 556; the bold face is wider.
    EXPECT_EQ(helvetica_width("Hello", false), 722 + 556 + 222 + 222 + 556);
    EXPECT_EQ(helvetica_width("Hello", true), 722 + 556 + 278 + 278 + 611);
    EXPECT_EQ(helvetica_width("\xE9\x80", false), 556 + 556);
}

TEST(StandardPdf, PagesHoldTheirCellsWhereTheLayoutPutsThem)
{
    QTemporaryDir dir;
    ReportDocument document;
    Row& title = document.add_header_row({u"Sent (by) Recipient\\"_s});
    title.centred = true;
    title.bold = true;
    title.line_bottom = true;
    document.add_body_row({u"#0#short"_s, u"#2000#"_s + QString(200, u'W'), u"#4000#next"_s});
    document.new_page();
    document.add_body_row({u"#0#second page"_s});
    const QString path = dir.filePath(u"r.pdf"_s);
    ASSERT_EQ(write_standard_pdf(document, path, u"Рапорт"_s, QDateTime::currentDateTimeUtc()),
              StandardPdfResult::Written);

    const PdfReader pdf(read_file(path));
    ASSERT_TRUE(pdf.valid());
    for (int number = 1; number < pdf.object_count(); ++number) {
        EXPECT_FALSE(pdf.object(number).isEmpty()) << "object " << number;
    }
    EXPECT_TRUE(pdf.object(2).contains("/Count 2"));
    EXPECT_TRUE(pdf.object(2).contains("/MediaBox [0 0 612 792 ]"));
    EXPECT_TRUE(pdf.object(5).contains("/Title <FEFF0420"));
    const QList<QByteArray> pages = pdf.page_contents();
    ASSERT_EQ(pages.size(), 2);
    const QByteArray& first = pages[0];
    // The title is bold, escaped, centred, and on both pages with its rule.
    for (const QByteArray& page : pages) {
        EXPECT_TRUE(page.contains("/F2 9 Tf")) << page.toStdString();
        EXPECT_TRUE(page.contains("(Sent \\(by\\) Recipient\\\\) Tj"));
        EXPECT_EQ(page.count(" l S"), 1);
    }
    // Only the cell wider than its room is clipped, to the room up to the next cell.
    EXPECT_EQ(first.count("re W n"), 1);
    const qsizetype clip = first.indexOf("re W n");
    EXPECT_EQ(first.lastIndexOf("q ", clip), first.lastIndexOf('\n', clip) + 1);
    EXPECT_TRUE(first.mid(first.lastIndexOf("q ", clip), clip).startsWith("q 119.5 "));
    EXPECT_TRUE(first.mid(clip, 400).contains("WWWW"));
    EXPECT_TRUE(first.contains("(next) Tj"));
    // "Page 1 of 2" ends at the right margin: 612 pt less 25 pt.
    const qsizetype number = first.indexOf("(Page 1 of 2) Tj");
    ASSERT_GT(number, 0);
    const QList<QByteArray> matrix = first.mid(first.lastIndexOf("1 0 0 1 ", number), 40).split(' ');
    const double width = helvetica_width("Page 1 of 2", false) * 9 / 1000.0;
    EXPECT_NEAR(matrix.value(4).toDouble() + width, 612 - 25, 0.01);
    EXPECT_TRUE(pages[1].contains("(second page) Tj"));
}

TEST(StandardPdf, TextBeyondTheFontsGoesThroughQtAndAFailedWriteKeepsTheOldFile)
{
    QTemporaryDir dir;
    ReportDocument document;
    document.add_body_row({u"#0#Lin Chen 林晨"_s});
    const QString path = dir.filePath(u"r.pdf"_s);
    {
        QFile old(path);
        ASSERT_TRUE(old.open(QIODevice::WriteOnly));
        old.write("yesterday's report");
    }
    EXPECT_EQ(write_standard_pdf(document, path, u"t"_s, QDateTime::currentDateTimeUtc()),
              StandardPdfResult::OutsideFontSet);
    EXPECT_EQ(read_file(path), "yesterday's report");
    ASSERT_TRUE(write_pdf(document, path, u"t"_s));
    const QByteArray written = read_file(path);
    EXPECT_TRUE(written.startsWith("%PDF"));
    EXPECT_TRUE(written.contains("/FontFile2")) << "the font that shows the name is embedded";

    EXPECT_EQ(write_standard_pdf(document, dir.filePath(u"missing/r.pdf"_s), u"t"_s, {}), StandardPdfResult::FileError);
}

} // namespace
} // namespace cvd::reports
