// The main of every test executable. It makes a plain `ctest` as deterministic as scripts/test.sh: the time
// zone, the locale, the Qt platform and a private runtime folder are set when the caller left them unset,
// and the application object the suite needs exists for the whole run.
#include <QCoreApplication>
#include <QTemporaryDir>
#include <cstdlib>
#include <ctime>
#include <gmock/gmock.h>

#if CVD_TEST_APPLICATION >= 1
#include "core/halt_barrier.h"
#endif
#if CVD_TEST_APPLICATION == 2
#include <QApplication>
#endif

namespace {

void set_unless_set(const char* name, const char* value)
{
    const char* current = std::getenv(name);
    if (current == nullptr || *current == '\0') {
        ::setenv(name, value, 1);
    }
}

} // namespace

int main(int argc, char** argv)
{
    set_unless_set("TZ", "Europe/Berlin");
    set_unless_set("LANG", "C.UTF-8");
    set_unless_set("LC_ALL", "C.UTF-8");
    set_unless_set("QT_QPA_PLATFORM", "offscreen");
    ::tzset();
    // Qt warns without a runtime folder; the tests' own folders come from their fixtures.
    QTemporaryDir runtime_dir;
    if (runtime_dir.isValid()) {
        set_unless_set("XDG_RUNTIME_DIR", runtime_dir.path().toLocal8Bit().constData());
    }
    ::testing::InitGoogleMock(&argc, argv);
#if CVD_TEST_APPLICATION == 2
    cvd::HaltBarrier<QApplication> application(argc, argv);
#elif CVD_TEST_APPLICATION == 1
    cvd::HaltBarrier<QCoreApplication> application(argc, argv);
#else
    QCoreApplication application(argc, argv);
#endif
    return RUN_ALL_TESTS();
}
