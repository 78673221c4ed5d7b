#include "platform/registry.h"
#include "support/test_environment.h"
#include "tools/cvdctl_runner.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::tools {
namespace {

const QString kMessages = u"SOFTWARE\\Halvern\\Transfer\\Messages\\job1"_s;

TEST(CvdctlReg, SetGetListAndDeleteLikeAnotherProgramWould)
{
    testing::TestEnvironment env;
    EXPECT_EQ(cvdctl({u"reg"_s, u"set"_s, kMessages, u"To"_s, u"bob"_s}).status, 0);
    EXPECT_EQ(cvdctl({u"reg"_s, u"set"_s, kMessages, u"Message"_s, u"Disk full on db1"_s}).status, 0);
    EXPECT_EQ(cvdctl({u"reg"_s, u"set"_s, u"--number"_s, kMessages, u"Ready"_s, u"1"_s}).status, 0);

    const CtlRun got = cvdctl({u"reg"_s, u"get"_s, kMessages, u"Message"_s});
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.out, u"Disk full on db1\n"_s);

    // What cvdctl wrote is what the program reads through its own store.
    platform::Registry registry(env.registry_root());
    EXPECT_EQ(registry.read_number(platform::Hive::LocalMachine, kMessages, u"Ready"_s), 1);

    const CtlRun listed = cvdctl({u"reg"_s, u"list"_s, u"SOFTWARE\\Halvern\\Transfer"_s});
    EXPECT_EQ(listed.status, 0);
    EXPECT_EQ(listed.out, u"Messages\\\n"_s);
    const CtlRun values = cvdctl({u"reg"_s, u"list"_s, kMessages});
    EXPECT_EQ(values.out, u"Message = Disk full on db1\nReady = 1\nTo = bob\n"_s);

    EXPECT_EQ(cvdctl({u"reg"_s, u"delete"_s, kMessages, u"To"_s}).status, 0);
    EXPECT_EQ(cvdctl({u"reg"_s, u"get"_s, kMessages, u"To"_s}).status, 1);
    EXPECT_EQ(cvdctl({u"reg"_s, u"delete"_s, kMessages}).status, 0);
    EXPECT_FALSE(registry.key_exists(platform::Hive::LocalMachine, kMessages));
}

TEST(CvdctlReg, HivesAreSeparateAndMistakesAreRefusedWithAReason)
{
    testing::TestEnvironment env;
    EXPECT_EQ(cvdctl({u"reg"_s, u"set"_s, u"--hive"_s, u"HKCU"_s, u"SOFTWARE\\Halvern"_s, u"Here"_s, u"1"_s}).status,
              0);
    EXPECT_EQ(cvdctl({u"reg"_s, u"get"_s, u"SOFTWARE\\Halvern"_s, u"Here"_s}).status, 1);
    EXPECT_EQ(cvdctl({u"reg"_s, u"get"_s, u"--hive"_s, u"hkey_current_user"_s, u"SOFTWARE\\Halvern"_s, u"Here"_s}).out,
              u"1\n"_s);

    const CtlRun not_a_number = cvdctl({u"reg"_s, u"set"_s, u"--number"_s, u"K"_s, u"N"_s, u"twelve"_s});
    EXPECT_EQ(not_a_number.status, 2);
    EXPECT_FALSE(not_a_number.err.isEmpty());
    EXPECT_EQ(cvdctl({u"reg"_s, u"get"_s, u"K"_s}).status, 2);
    EXPECT_EQ(cvdctl({u"reg"_s, u"list"_s, u"NoSuchKey"_s}).status, 1);
    EXPECT_EQ(cvdctl({u"reg"_s, u"get"_s, u"--hive"_s, u"HKXX"_s, u"K"_s, u"N"_s}).status, 2);
    EXPECT_EQ(cvdctl({u"frobnicate"_s}).status, 2);
    EXPECT_EQ(cvdctl({u"--help"_s}).status, 0);
    EXPECT_TRUE(cvdctl({u"--version"_s}).out.startsWith(u"cvdctl "_s));
}

} // namespace
} // namespace cvd::tools
