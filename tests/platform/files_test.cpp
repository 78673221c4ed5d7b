#include "platform/files.h"
#include "platform_test_support.h"

#include <QFile>
#include <QTemporaryDir>
#include <cerrno>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace cvd::platform {
namespace {

using testing::all_entries;
using testing::run_with_file_size_limit;

void write_plain(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

QByteArray read_plain(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

mode_t permission_bits(const QString& path)
{
    struct stat info
    {
    };
    ::stat(QFile::encodeName(path).constData(), &info);
    return info.st_mode & 07777;
}

class FilesTest : public ::testing::Test
{
protected:
    QString path(const QString& relative) const { return m_dir.path() + u'/' + relative; }
    QTemporaryDir m_dir;
};

// Whether a path exists, is a folder, and is a folder with entries (hidden files count, dots do not).
TEST_F(FilesTest, ProbesTellFilesFoldersAndMissingPathsApart)
{
    write_plain(path(u"file"_s), "x");
    QDir(m_dir.path()).mkdir(u"folder"_s);
    QDir(m_dir.path()).mkdir(u"hidden"_s);
    write_plain(path(u"hidden/.only"_s), "");
    QFile::link(path(u"nowhere"_s), path(u"dangling"_s));

    struct Case
    {
        QString path;
        bool exists;
        bool directory;
        bool entries;
    };
    const Case cases[] = {
        {path(u"file"_s), true, false, false},      {path(u"folder"_s), true, true, false},
        {path(u"folder/"_s), true, true, false},    {path(u"hidden"_s), true, true, true},
        {path(u"missing"_s), false, false, false},  {path(u"file/below"_s), false, false, false},
        {path(u"dangling"_s), false, false, false}, {QString(), false, false, false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(path_exists(c.path), c.exists) << c.path.toStdString();
        EXPECT_EQ(is_directory(c.path), c.directory) << c.path.toStdString();
        EXPECT_EQ(directory_has_entries(c.path), c.entries) << c.path.toStdString();
    }
}

// Each step in order, with the errno it must report (0: it succeeds, -1: it fails for any reason).
TEST_F(FilesTest, MakeDirectoryRemoveAndRenameReportWhyTheyFailed)
{
    write_plain(path(u"a"_s), "first");
    write_plain(path(u"b"_s), "second");
    write_plain(path(u"d"_s), "doomed");
    const struct
    {
        const char* step;
        FileResult result;
        int error;
    } steps[] = {
        {"make", make_directory(path(u"level"_s)), 0},
        {"make again", make_directory(path(u"level"_s)), EEXIST},
        {"make two levels", make_directory(path(u"missing/level"_s)), ENOENT},
        {"make nothing", make_directory(QString()), -1},
        {"rename over b", rename_file(path(u"a"_s), path(u"b"_s)), 0},
        {"rename missing", rename_file(path(u"a"_s), path(u"c"_s)), ENOENT},
        {"remove", remove_file(path(u"d"_s)), 0},
        {"remove again", remove_file(path(u"d"_s)), ENOENT},
        {"remove a folder", remove_file(path(u"level"_s)), -1},
    };
    for (const auto& c : steps) {
        EXPECT_EQ(c.result.ok, c.error == 0) << c.step;
        if (c.error > 0) {
            EXPECT_EQ(c.result.error, c.error) << c.step;
        }
    }
    EXPECT_TRUE(is_directory(path(u"level"_s)));
    EXPECT_EQ(read_plain(path(u"b"_s)), "first");
    EXPECT_EQ(all_entries(m_dir.path()), (QStringList{u"b"_s, u"level"_s}));
    // The errno reads as its name.
    EXPECT_TRUE(error_text(ENOENT).contains(u"No such file or directory"_s)) << error_text(ENOENT).toStdString();
    EXPECT_TRUE(error_text(EACCES).contains(u"Permission denied"_s)) << error_text(EACCES).toStdString();
}

TEST_F(FilesTest, CopyFileCopiesBytesAndPermissionsOrLeavesTheTargetAsItWas)
{
    QByteArray content;
    for (int i = 0; i < 200000; ++i) {
        content += static_cast<char>(i % 251); // larger than one buffer, with NULs and high bytes
    }
    write_plain(path(u"source"_s), content);
    ::chmod(QFile::encodeName(path(u"source"_s)).constData(), 0750);
    write_plain(path(u"target"_s), "old target that is longer than nothing");
    const FileResult copied = copy_file(path(u"source"_s), path(u"target"_s));
    ASSERT_TRUE(copied.ok) << error_text(copied.error).toStdString();
    EXPECT_EQ(read_plain(path(u"target"_s)), content);
    EXPECT_EQ(permission_bits(path(u"target"_s)), 0750u);
    EXPECT_EQ(read_plain(path(u"source"_s)), content);

    write_plain(path(u"target"_s), "old");
    QDir(m_dir.path()).mkdir(u"folder"_s);
    const struct
    {
        QString from;
        QString to;
        int error;
    } failures[] = {{u"missing"_s, u"target"_s, ENOENT},
                    {u"folder"_s, u"target"_s, EISDIR},
                    {u"target"_s, u"nowhere/target"_s, ENOENT}};
    for (const auto& c : failures) {
        const FileResult failed = copy_file(path(c.from), path(c.to));
        EXPECT_FALSE(failed.ok) << c.from.toStdString();
        EXPECT_EQ(failed.error, c.error) << c.from.toStdString();
    }
    // A copy that breaks off part way (the file size limit stands in for a full disk).
    const int status = run_with_file_size_limit(1000, [&] {
        const FileResult result = copy_file(path(u"source"_s), path(u"target"_s));
        return result.ok ? 0 : result.error == EFBIG ? 1 : 2;
    });
    EXPECT_EQ(status, 1);
    EXPECT_EQ(read_plain(path(u"target"_s)), "old");
    EXPECT_EQ(all_entries(m_dir.path()), (QStringList{u"folder"_s, u"source"_s, u"target"_s}));
}

TEST_F(FilesTest, AtomicWriteReplacesWholeOrNotAtAll)
{
    const QByteArray binary("a\0b\nc\xff", 7);
    ASSERT_TRUE(write_file_atomically(path(u"value"_s), binary).ok);
    EXPECT_EQ(read_file_bytes(path(u"value"_s)), std::optional<QByteArray>(binary));

    ASSERT_TRUE(write_file_atomically(path(u"value"_s), "short").ok);
    EXPECT_EQ(read_file_bytes(path(u"value"_s)), std::optional<QByteArray>("short"));

    ASSERT_TRUE(write_file_atomically(path(u"empty"_s), QByteArray()).ok);
    EXPECT_EQ(read_file_bytes(path(u"empty"_s)), std::optional<QByteArray>(QByteArray()));

    const int status = run_with_file_size_limit(
        100, [&] { return write_file_atomically(path(u"value"_s), QByteArray(5000, 'z')).ok ? 0 : 1; });
    EXPECT_EQ(status, 1);
    EXPECT_EQ(read_file_bytes(path(u"value"_s)), std::optional<QByteArray>("short"));
    EXPECT_EQ(all_entries(m_dir.path()), (QStringList{u"empty"_s, u"value"_s}));

    const FileResult no_folder = write_file_atomically(path(u"missing/value"_s), "x");
    EXPECT_FALSE(no_folder.ok);
    EXPECT_EQ(no_folder.error, ENOENT);

    EXPECT_FALSE(read_file_bytes(path(u"missing"_s)).has_value());
    QDir(m_dir.path()).mkdir(u"folder"_s);
    EXPECT_FALSE(read_file_bytes(path(u"folder"_s)).has_value());
}

TEST_F(FilesTest, OnlyRegularFilesAreReadAndOnlyUpToTheCap)
{
    write_plain(path(u"five"_s), "12345");
    QDir(m_dir.path()).mkdir(u"folder"_s);
    ASSERT_EQ(::mkfifo(QFile::encodeName(path(u"fifo"_s)).constData(), 0600), 0);
    ASSERT_TRUE(QFile::link(u"/dev/zero"_s, path(u"zero"_s)));
    const struct
    {
        QString name;
        qint64 cap;
        ReadOutcome outcome;
    } cases[] = {
        {u"five"_s, 5, ReadOutcome::Ok},         {u"five"_s, 4, ReadOutcome::TooLarge},
        {u"missing"_s, 5, ReadOutcome::Missing}, {u"folder"_s, 5, ReadOutcome::NotRegular},
        {u"fifo"_s, 5, ReadOutcome::NotRegular}, {u"zero"_s, 5, ReadOutcome::NotRegular},
    };
    for (const auto& c : cases) {
        const CappedRead read = read_regular_file(QFile::encodeName(path(c.name)), c.cap);
        EXPECT_EQ(read.outcome, c.outcome) << c.name.toStdString() << " " << c.cap;
        EXPECT_EQ(read.bytes, c.outcome == ReadOutcome::Ok ? QByteArray("12345") : QByteArray());
    }
}

TEST(TextFromBytes, ReadsUtf8AndFallsBackToLatin1)
{
    const std::pair<QByteArray, QString> cases[] = {
        {"", u""_s},
        {"plain", u"plain"_s},
        {"Gr\xc3\xbc\xc3\x9f\x65", u"Grüße"_s},
        {"\xe2\x82\xac 5", u"€ 5"_s},
        {"caf\xe9", u"café"_s},                       // Latin-1 é
        {"\xc3", u"Ã"_s},                             // a sequence cut short is not UTF-8
        {"ok \xc3\xa9 then \xe9", u"ok Ã© then é"_s}, // one bad byte makes the whole text Latin-1
        {"\xef\xbb\xbfmark", u"\ufeffmark"_s},        // a byte order mark stays part of the text
    };
    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(text_from_bytes(bytes), text) << bytes.toHex().toStdString();
    }
}

} // namespace
} // namespace cvd::platform
