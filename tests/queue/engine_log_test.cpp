#include "engine_link/engine_log.h"
#include "support/printers.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::engine_link {
namespace {

class EngineLogTest : public ::testing::Test
{
protected:
    QString path() const { return engine_log_path(m_dir.path()); }

    // `lines` lines of 99 characters and a LF each, numbered, then `extra` more bytes on a last line.
    void write_log(int lines, const QByteArray& extra = {})
    {
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        for (int line = 0; line < lines; ++line) {
            QByteArray text = QByteArray::number(line).leftJustified(99, 'x');
            text.append('\n');
            file.write(text);
        }
        file.write(extra);
    }

private:
    QTemporaryDir m_dir;
};

TEST_F(EngineLogTest, AFileOfExactlyTheLimitLoadsWholeAndOneByteMoreLosesTheFirstLine)
{
    write_log(80000);
    ASSERT_EQ(QFileInfo(path()).size(), kEngineLogShownBytes);
    QStringList lines = read_engine_log_tail(path());
    ASSERT_EQ(lines.size(), 80000);
    EXPECT_TRUE(lines.front().startsWith(u"0x"_s));

    write_log(80000, "!");
    lines = read_engine_log_tail(path());
    ASSERT_EQ(lines.size(), 80000);
    EXPECT_TRUE(lines.front().startsWith(u"1x"_s));
    EXPECT_EQ(lines.back(), u"!"_s);
    // Printing reads the whole file.
    EXPECT_EQ(read_engine_log_lines(path()).size(), 80001);
}

TEST_F(EngineLogTest, DropsLinesCountingThemWithoutTheirLineEnds)
{
    {
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("aaaa\r\nbbbb\r\ncc\r\n"); // 16 bytes, 10 without line ends
    }
    // 16 > 12: "aaaa" goes and 12 remain, which is not above the limit.
    EXPECT_EQ(read_engine_log_tail(path(), 12), (QStringList{u"bbbb"_s, u"cc"_s}));
    // 16 > 8, 12 > 8, 8 is not: two lines go although fewer bytes would have done.
    EXPECT_EQ(read_engine_log_tail(path(), 8), (QStringList{u"cc"_s}));
    EXPECT_EQ(read_engine_log_tail(path(), 100), (QStringList{u"aaaa"_s, u"bbbb"_s, u"cc"_s}));
}

TEST_F(EngineLogTest, AMissingLogIsEmptyAndPurgeRemovesTheFile)
{
    EXPECT_TRUE(read_engine_log_tail(path()).isEmpty());
    EXPECT_EQ(purge_engine_log(path()), 0);
    write_log(3);
    EXPECT_EQ(purge_engine_log(path()), 0);
    EXPECT_FALSE(QFile::exists(path()));
}

} // namespace
} // namespace cvd::engine_link
