#include "platform/files.h"
#include "platform/registry.h"
#include "platform_test_support.h"

#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>

using namespace Qt::StringLiterals;

namespace cvd::platform {
namespace {

using testing::all_entries;
using testing::run_with_file_size_limit;
using testing::ScopedEnvironment;

const QString kKey = u"SOFTWARE\\Halvern\\CorvaneDesk"_s;

class RegistryTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(m_registry.create_key(Hive::LocalMachine, kKey)); }

    QString folder() const { return m_registry.key_folder(Hive::LocalMachine, kKey); }

    // A value file written by hand, as an administrator with a shell would.
    void write_by_hand(const QString& file_name, const QByteArray& bytes)
    {
        QFile file(folder() + u'/' + file_name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QTemporaryDir m_dir;
    Registry m_registry{m_dir.path() + u"/registry"_s};
};

TEST_F(RegistryTest, KeysAreNestedFoldersBelowTheHiveFolder)
{
    EXPECT_EQ(folder(), m_dir.path() + u"/registry/HKEY_LOCAL_MACHINE/SOFTWARE/Halvern/CorvaneDesk"_s);
    EXPECT_TRUE(is_directory(folder()));
    EXPECT_EQ(m_registry.key_folder(Hive::CurrentUser, u"SOFTWARE/Halvern\\Transfer\\"_s),
              m_dir.path() + u"/registry/HKEY_CURRENT_USER/SOFTWARE/Halvern/Transfer"_s);

    EXPECT_TRUE(m_registry.key_exists(Hive::LocalMachine, u"SOFTWARE/Halvern"_s));
    EXPECT_FALSE(m_registry.key_exists(Hive::CurrentUser, kKey)) << "the hives are apart";
    EXPECT_FALSE(m_registry.key_exists(Hive::LocalMachine, u"SOFTWARE\\Halvern\\Transfer"_s));

    // Dot levels are names like any other and stay inside the hive.
    ASSERT_TRUE(m_registry.create_key(Hive::CurrentUser, u"..\\..\\.\\escape"_s));
    EXPECT_EQ(all_entries(m_dir.path()), QStringList{u"registry"_s});
    EXPECT_EQ(m_registry.subkeys(Hive::CurrentUser, QString()), (QStringList{u".."_s}));
    EXPECT_EQ(m_registry.subkeys(Hive::CurrentUser, u".."_s), (QStringList{u".."_s}));
}

TEST_F(RegistryTest, TextValuesRoundTripWhateverTheirNameAndContent)
{
    const QString names[] = {u"To"_s,  u"Ready"_s,   u"DB_Password"_s, u"a/b"_s,       u"50%"_s,
                             u"%2F"_s, u".hidden"_s, u".."_s,          u"."_s,         u""_s,
                             u"x.y"_s, u"Grüße"_s,   u"back\\slash"_s, u"with space"_s};
    const QString values[] = {u"bob"_s, u""_s, u"two\nlines"_s, u"ends in newline\n"_s, u"\n"_s, u"€uro"_s};
    for (const QString& name : names) {
        for (const QString& value : values) {
            ASSERT_TRUE(m_registry.write_text(Hive::LocalMachine, kKey, name, value)) << name.toStdString();
            EXPECT_EQ(m_registry.read_text(Hive::LocalMachine, kKey, name), std::optional<QString>(value))
                << name.toStdString() << " = " << value.toStdString();
        }
    }
    QStringList sorted(std::begin(names), std::end(names));
    std::sort(sorted.begin(), sorted.end(), [](const QString& a, const QString& b) { return a.toUtf8() < b.toUtf8(); });
    EXPECT_EQ(m_registry.value_names(Hive::LocalMachine, kKey), sorted);
    EXPECT_TRUE(m_registry.subkeys(Hive::LocalMachine, kKey).isEmpty());
}

TEST_F(RegistryTest, OrdinaryNamesAreFileNamesAndOthersAreEscaped)
{
    const QString names[] = {
        u"To"_s, u"DB_Password"_s,          u"x.y"_s, u"Grüße"_s, u"a/b"_s, u"50%"_s, u"%2F"_s, u".hidden"_s, u".."_s,
        u""_s,   QString(QChar(0)) + u"x"_s};
    const QByteArray file_names[] = {"To",    "DB_Password", "x.y",   "Gr\xc3\xbc\xc3\x9f\x65",
                                     "a%2Fb", "50%25",       "%252F", "%2Ehidden",
                                     "%2E.",  "%",           "%00x"};
    for (int i = 0; i < std::ssize(names); ++i) {
        EXPECT_EQ(Registry::encode_name(names[i]), file_names[i]) << names[i].toStdString();
        EXPECT_EQ(Registry::decode_name(file_names[i]), std::optional<QString>(names[i]))
            << file_names[i].toStdString();
    }
    ASSERT_TRUE(m_registry.write_text(Hive::LocalMachine, kKey, u"Ready"_s, u"1"_s));
    ASSERT_TRUE(m_registry.write_text(Hive::LocalMachine, kKey, u"a/b"_s, u"2"_s));
    EXPECT_EQ(all_entries(folder()), (QStringList{u"Ready"_s, u"a%2Fb"_s}));

    // Names in no form that encode_name gives: temporary files, hidden files, other spellings.
    const QByteArray foreign[] = {".cvdtmp-1f2e", ".profile", "%41", "%2e.", "%2f", "50%", "%2", "bad\xff", "%%"};
    for (const QByteArray& file_name : foreign) {
        EXPECT_FALSE(Registry::decode_name(file_name).has_value()) << file_name.toStdString();
    }
}

TEST_F(RegistryTest, HandWrittenFilesReadWithOneNewlineDropped)
{
    const std::pair<QByteArray, QString> cases[] = {
        {"bob\n", u"bob"_s}, {"bob", u"bob"_s},       {"bob\n\n", u"bob\n"_s},  {"\n", u""_s},
        {"", u""_s},         {"bob\r\n", u"bob\r"_s}, {"caf\xe9\n", u"café"_s}, // not UTF-8: read as Latin-1
    };
    for (const auto& [bytes, text] : cases) {
        write_by_hand(u"To"_s, bytes);
        EXPECT_EQ(m_registry.read_text(Hive::LocalMachine, kKey, u"To"_s), std::optional<QString>(text))
            << bytes.toStdString();
    }
}

TEST_F(RegistryTest, NumbersAreDecimalTextWithOptionalBlanksAndSign)
{
    ASSERT_TRUE(m_registry.write_number(Hive::LocalMachine, kKey, u"Handle"_s, -15));
    EXPECT_EQ(read_file_bytes(folder() + u"/Handle"_s), std::optional<QByteArray>("-15"));
    EXPECT_EQ(m_registry.read_number(Hive::LocalMachine, kKey, u"Handle"_s), std::optional<qint64>(-15));

    const QByteArray valid[] = {"42", " 42 \n", "\t+7", "-0", "007", "9223372036854775807", "-9223372036854775808"};
    const qint64 values[] = {42, 42, 7, 0, 7, std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min()};
    for (int i = 0; i < std::ssize(valid); ++i) {
        write_by_hand(u"Number"_s, valid[i]);
        EXPECT_EQ(m_registry.read_number(Hive::LocalMachine, kKey, u"Number"_s), values[i]) << valid[i].toStdString();
    }
    for (const char* bytes :
         {"9223372036854775808", "-9223372036854775809", "", "-", "4x", "1 2", "0x10", "1.5", "+-1"}) {
        write_by_hand(u"Number"_s, bytes);
        EXPECT_EQ(m_registry.read_number(Hive::LocalMachine, kKey, u"Number"_s), std::nullopt) << bytes;
    }
}

TEST_F(RegistryTest, MissingKeysAndValuesReadAsNothingWritesNeedTheKeyAndDeletesTakeBoth)
{
    EXPECT_EQ(m_registry.read_text(Hive::LocalMachine, kKey, u"To"_s), std::nullopt);
    EXPECT_EQ(m_registry.read_number(Hive::LocalMachine, kKey, u"To"_s), std::nullopt);
    EXPECT_EQ(m_registry.read_text(Hive::LocalMachine, u"SOFTWARE\\Nobody"_s, u"To"_s), std::nullopt);
    EXPECT_EQ(m_registry.read_text(Hive::CurrentUser, kKey, u"To"_s), std::nullopt);

    EXPECT_FALSE(m_registry.write_text(Hive::LocalMachine, u"SOFTWARE\\Nobody"_s, u"To"_s, u"x"_s));
    EXPECT_FALSE(m_registry.write_number(Hive::CurrentUser, kKey, u"To"_s, 1));
    EXPECT_FALSE(m_registry.key_exists(Hive::LocalMachine, u"SOFTWARE\\Nobody"_s));
    EXPECT_FALSE(m_registry.key_exists(Hive::CurrentUser, kKey));

    // A subkey is not a value, even when a value of that name is asked for.
    ASSERT_TRUE(m_registry.create_key(Hive::LocalMachine, kKey + u"\\Window"_s));
    EXPECT_EQ(m_registry.read_text(Hive::LocalMachine, kKey, u"Window"_s), std::nullopt);
    EXPECT_FALSE(m_registry.write_text(Hive::LocalMachine, kKey, u"Window"_s, u"x"_s));
    EXPECT_FALSE(m_registry.delete_value(Hive::LocalMachine, kKey, u"Window"_s));
    EXPECT_TRUE(m_registry.key_exists(Hive::LocalMachine, kKey + u"\\Window"_s));
    EXPECT_EQ(all_entries(folder()), QStringList{u"Window"_s});

    // Deleting values and keys; what is gone already counts as deleted.
    const QString child = kKey + u"\\Window"_s;
    ASSERT_TRUE(m_registry.create_key(Hive::LocalMachine, child + u"\\Deep\\Deeper"_s));
    ASSERT_TRUE(m_registry.write_text(Hive::LocalMachine, child, u"Left"_s, u"10"_s));
    ASSERT_TRUE(m_registry.write_text(Hive::LocalMachine, child + u"\\Deep\\Deeper"_s, u"x"_s, u"y"_s));
    ASSERT_TRUE(m_registry.write_text(Hive::LocalMachine, kKey, u"To"_s, u"bob"_s));
    ASSERT_TRUE(m_registry.write_text(Hive::LocalMachine, kKey, u"Ready"_s, u"1"_s));

    EXPECT_TRUE(m_registry.delete_value(Hive::LocalMachine, kKey, u"To"_s));
    EXPECT_EQ(m_registry.read_text(Hive::LocalMachine, kKey, u"To"_s), std::nullopt);
    EXPECT_TRUE(m_registry.delete_value(Hive::LocalMachine, kKey, u"To"_s)) << "already gone counts as gone";
    EXPECT_EQ(m_registry.value_names(Hive::LocalMachine, kKey), QStringList{u"Ready"_s});

    EXPECT_TRUE(m_registry.delete_key(Hive::LocalMachine, child));
    EXPECT_FALSE(m_registry.key_exists(Hive::LocalMachine, child));
    EXPECT_FALSE(path_exists(m_registry.key_folder(Hive::LocalMachine, child)));
    EXPECT_TRUE(m_registry.subkeys(Hive::LocalMachine, kKey).isEmpty());
    EXPECT_EQ(m_registry.read_text(Hive::LocalMachine, kKey, u"Ready"_s), std::optional<QString>(u"1"_s));
    EXPECT_TRUE(m_registry.delete_key(Hive::LocalMachine, child)) << "a missing key is gone already";

    EXPECT_FALSE(m_registry.delete_key(Hive::LocalMachine, QString())) << "a hive is not deleted";
    EXPECT_FALSE(m_registry.delete_key(Hive::LocalMachine, u"\\"_s));
    EXPECT_TRUE(m_registry.key_exists(Hive::LocalMachine, kKey));
}

TEST_F(RegistryTest, EnumerationIsInByteOrderAndSeparatesSubkeysFromValues)
{
    // "😀" sorts before "Ａ" in UTF-16 but after it in UTF-8.
    const QStringList names{u"b"_s, u"😀"_s, u"ä"_s, u"B"_s, u"Ａ"_s, u"a"_s, u"Z"_s, u"_"_s, u"10"_s, u"9"_s};
    const QStringList byte_order{u"10"_s, u"9"_s, u"B"_s, u"Z"_s, u"_"_s, u"a"_s, u"b"_s, u"ä"_s, u"Ａ"_s, u"😀"_s};
    for (const QString& name : names) {
        ASSERT_TRUE(m_registry.create_key(Hive::LocalMachine, kKey + u'\\' + name + u"\\Deeper"_s));
        ASSERT_TRUE(m_registry.write_text(Hive::LocalMachine, kKey, u"v"_s + name, name));
    }
    write_by_hand(u".cvdtmp-abandoned"_s, "half");
    write_by_hand(u"%41"_s, "not ours");
    QDir(folder()).mkdir(u".git"_s);
    for (const QString& unreachable : {u"%"_s, u"x%2Fy"_s, u"x\\y"_s}) { // no key path can name these
        QDir(folder()).mkdir(unreachable);
    }

    EXPECT_EQ(m_registry.subkeys(Hive::LocalMachine, kKey), byte_order);
    for (int i = 0; i < byte_order.size(); ++i) {
        EXPECT_EQ(m_registry.subkey_at(Hive::LocalMachine, kKey, i), byte_order.at(i)) << i;
    }
    EXPECT_EQ(m_registry.subkey_at(Hive::LocalMachine, kKey, byte_order.size()), QString());
    EXPECT_EQ(m_registry.subkey_at(Hive::LocalMachine, kKey, -1), QString());
    EXPECT_EQ(m_registry.subkey_at(Hive::LocalMachine, u"SOFTWARE\\Nobody"_s, 0), QString());

    QStringList value_order;
    QList<std::pair<QString, QString>> pairs;
    for (const QString& name : byte_order) {
        value_order.append(u"v"_s + name);
        pairs.append({u"v"_s + name, name});
    }
    EXPECT_EQ(m_registry.value_names(Hive::LocalMachine, kKey), value_order);
    EXPECT_EQ(m_registry.values(Hive::LocalMachine, kKey), pairs);
    EXPECT_TRUE(m_registry.values(Hive::LocalMachine, u"SOFTWARE\\Nobody"_s).isEmpty());
}

TEST_F(RegistryTest, AFailedWriteLeavesTheOldValue)
{
    ASSERT_TRUE(m_registry.write_text(Hive::LocalMachine, kKey, u"To"_s, u"bob"_s));
    const int status = run_with_file_size_limit(
        64, [&] { return m_registry.write_text(Hive::LocalMachine, kKey, u"To"_s, QString(4096, u'x')) ? 0 : 1; });
    EXPECT_EQ(status, 1);
    EXPECT_EQ(m_registry.read_text(Hive::LocalMachine, kKey, u"To"_s), std::optional<QString>(u"bob"_s));
    EXPECT_EQ(all_entries(folder()), QStringList{u"To"_s}) << "no temporary file is left behind";
}

TEST_F(RegistryTest, AReplacedKeyHoldsExactlyTheNewValuesAndLeavesNoHiddenFolder)
{
    ASSERT_TRUE(m_registry.write_text(Hive::LocalMachine, kKey, u"old"_s, u"1"_s));
    ASSERT_TRUE(m_registry.create_key(Hive::LocalMachine, kKey + u"\\Sub"_s));
    const QList<std::pair<QString, QString>> values = {{u"ann"_s, u"0"_s}, {u"a/b"_s, u"line\n"_s}, {u"ann"_s, u"0"_s}};
    ASSERT_TRUE(m_registry.replace_key(Hive::LocalMachine, kKey, values));
    EXPECT_EQ(m_registry.values(Hive::LocalMachine, kKey),
              (QList<std::pair<QString, QString>>{{u"a/b"_s, u"line\n"_s}, {u"ann"_s, u"0"_s}}));
    EXPECT_TRUE(m_registry.subkeys(Hive::LocalMachine, kKey).isEmpty());
    EXPECT_EQ(all_entries(m_registry.key_folder(Hive::LocalMachine, u"SOFTWARE\\Halvern"_s)),
              QStringList{u"CorvaneDesk"_s});

    // A key that was not there is made with its parents; an empty list leaves an empty key.
    ASSERT_TRUE(m_registry.replace_key(Hive::CurrentUser, u"New\\List"_s, {}));
    EXPECT_TRUE(m_registry.key_exists(Hive::CurrentUser, u"New\\List"_s));
    EXPECT_FALSE(m_registry.replace_key(Hive::CurrentUser, QString(), values)) << "a hive is not a key";
}

TEST(RegistryRoot, VariableThenMachineFolderThenStateFolder)
{
    QTemporaryDir dir;
    const QString base = dir.path();
    QFile blocker(base + u"/file"_s);
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    ScopedEnvironment environment;
    environment.set("XDG_STATE_HOME", base + u"/state"_s);
    environment.set("HOME", base + u"/home"_s);

    environment.set("CVD_REGISTRY_ROOT", base + u"/configured"_s);
    EXPECT_EQ(Registry::default_root(base + u"/machine"_s), base + u"/configured"_s);

    environment.unset("CVD_REGISTRY_ROOT");
    EXPECT_EQ(Registry::default_root(base + u"/machine/halvern/registry"_s), base + u"/machine/halvern/registry"_s)
        << "missing, but its folders can be made";
    EXPECT_FALSE(path_exists(base + u"/machine"_s)) << "choosing a root creates nothing";
    EXPECT_EQ(Registry::default_root(base + u"/file/halvern/registry"_s), base + u"/state/halvern/registry"_s);

    environment.set("CVD_REGISTRY_ROOT", QString());
    environment.unset("XDG_STATE_HOME");
    EXPECT_EQ(Registry::default_root(base + u"/file/registry"_s), base + u"/home/.local/state/halvern/registry"_s);
}

TEST(ParseHive, AcceptsShortAndLongNamesInAnyCase)
{
    for (const QString& text : {u"HKLM"_s, u"hklm"_s, u"HKEY_LOCAL_MACHINE"_s, u"hkey_local_machine"_s}) {
        EXPECT_EQ(parse_hive(text), Hive::LocalMachine) << text.toStdString();
    }
    for (const QString& text : {u"HKCU"_s, u"HKEY_CURRENT_USER"_s, u"Hkey_Current_User"_s}) {
        EXPECT_EQ(parse_hive(text), Hive::CurrentUser) << text.toStdString();
    }
    for (const QString& text : {u"HKCR"_s, u""_s, u"HKLM\\SOFTWARE"_s}) {
        EXPECT_EQ(parse_hive(text), std::nullopt) << text.toStdString();
    }
}

} // namespace
} // namespace cvd::platform
