// The device tools: the modem scan against modem doubles on socat pseudo-terminals, the port scan against
// listeners on 127.0.0.1.
#include "console/device_windows.h"
#include "console/frm_modem_scan.h"
#include "console/frm_port_scan.h"
#include "console_test.h"
#include "core/setting_keys.h"
#include "core/settings.h"
#include "devices/comm.h"
#include "support/line_server.h"
#include "support/modem_double.h"
#include "support/pty_pair.h"
#include "support/scoped_environment.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QEventLoop>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

// Runs the event loop until `done` holds, at most five seconds; the answer is whether it holds.
bool wait_until(const std::function<bool()>& done)
{
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&loop, &done] {
        if (done()) {
            loop.quit();
        }
    });
    poll.start(5);
    QTimer::singleShot(5000, &loop, &QEventLoop::quit);
    loop.exec();
    return done();
}

class DeviceWindows : public ConsoleTest
{
protected:
    // Ports 1 and 2 on the near ends of two pairs; every other port on a device that does not exist, so that
    // no serial port of the machine is touched.
    void use_pairs(const PtyPair& first, const PtyPair& second)
    {
        environment.set("CVD_COM1", first.near_end());
        environment.set("CVD_COM2", second.near_end());
        for (int port = 3; port <= console::frmModemScan::kPortCount; ++port) {
            environment.set(qPrintable(u"CVD_COM%1"_s.arg(port)), nowhere.filePath(u"tty%1"_s.arg(port)));
        }
    }

    QCheckBox& box(QWidget& window, const char* name) { return control<QCheckBox>(window, name); }

    ScopedEnvironment environment;
    QTemporaryDir nowhere;
};

TEST_F(DeviceWindows, ModemScanTicksThePortWhereAModemAnswered)
{
    if (!PtyPair::socat_installed()) {
        GTEST_SKIP() << "socat is not installed";
    }
    PtyPair answering;
    PtyPair silent;
    ASSERT_TRUE(answering.ready() && silent.ready());
    ModemDouble modem(answering.far_end(), ModemDouble::Answer::Ok);
    ModemDouble mute(silent.far_end(), ModemDouble::Answer::Silent);
    use_pairs(answering, silent);

    console::frmModemScan scan(*context, &send_form.window(), 50);
    scan.show();
    EXPECT_EQ(scan.windowTitle(), u"Scan for Modems"_s);
    EXPECT_EQ(control<QLabel>(scan, "lblDevice1").text(), answering.near_end());
    box(scan, "chkCom2").setChecked(true); // an old mark goes when the scan starts
    auto& run = control<QPushButton>(scan, "btnScan");
    QTest::mouseClick(&run, Qt::LeftButton);
    EXPECT_FALSE(run.isEnabled());
    EXPECT_FALSE(control<QPushButton>(scan, "btnClose").isEnabled());
    EXPECT_FALSE(box(scan, "ChkCom13").isEnabled());
    EXPECT_FALSE(box(scan, "chkCom2").isChecked());

    ASSERT_TRUE(wait_until([&run] { return run.isEnabled(); }));
    EXPECT_TRUE(box(scan, "chkCom1").isChecked());
    for (int port = 2; port <= console::frmModemScan::kPortCount; ++port) {
        const QByteArray name = (port == 13 ? "ChkCom"_ba : "chkCom"_ba) + QByteArray::number(port);
        EXPECT_FALSE(box(scan, name.constData()).isChecked()) << name.constData();
        EXPECT_TRUE(box(scan, name.constData()).isEnabled()) << name.constData();
    }
    EXPECT_EQ(modem.heard(), QByteArray("AT\r"));
    EXPECT_EQ(mute.heard(), QByteArray("AT\r"));
}

TEST_F(DeviceWindows, ClosingTheModemScanStopsItAndFreesThePort)
{
    if (!PtyPair::socat_installed()) {
        GTEST_SKIP() << "socat is not installed";
    }
    PtyPair first;
    PtyPair second;
    ASSERT_TRUE(first.ready() && second.ready());
    ModemDouble mute(first.far_end(), ModemDouble::Answer::Silent);
    use_pairs(first, second);

    console::frmModemScan scan(*context, &send_form.window());
    scan.show();
    QTest::mouseClick(&control<QPushButton>(scan, "btnScan"), Qt::LeftButton);
    ASSERT_TRUE(wait_until([&mute] { return !mute.heard().isEmpty(); }));
    // The window answers while it waits for the modem: Escape closes it at once.
    QTest::keyClick(&scan, Qt::Key_Escape);
    EXPECT_FALSE(scan.isVisible());
    devices::modCOMM comm;
    EXPECT_EQ(comm.CommOpen(1, first.near_end(), devices::ModemScan::kSettings), 0)
        << comm.last_error().message.toStdString();
    EXPECT_TRUE(control<QPushButton>(scan, "btnScan").isEnabled());
}

TEST_F(DeviceWindows, PortScanTriesTheSetEndpointsAndExplainsTheMissingOne)
{
    LineServer mail("220-mail ready\r\n220 welcome\r\n");
    quint16 closed_port = 0;
    {
        LineServer gone("");
        closed_port = gone.port();
    }
    SettingsStore& settings = state->settings;
    settings.put_setting(setting_keys::connector::scan_smtp_host, u"127.0.0.1:%1"_s.arg(mail.port()));
    settings.put_setting(setting_keys::connector::scan_wctp_host, u""_s);
    settings.put_setting(setting_keys::connector::scan_snpp_host, u"127.0.0.1:%1"_s.arg(closed_port));

    console::frmPortScan scan(*context, &send_form.window());
    scan.set_limits({2000, 2000});
    scan.show();
    EXPECT_EQ(scan.windowTitle(), u"Port Scan"_s);
    QCheckBox& wctp = box(scan, "chkWctp");
    EXPECT_FALSE(wctp.isChecked());
    EXPECT_FALSE(wctp.isEnabled());
    EXPECT_TRUE(wctp.toolTip().contains(u"scan_wctp_host"_s));
    EXPECT_TRUE(control<QLabel>(scan, "lblNote").text().contains(u"Settings > Connection"_s));
    EXPECT_EQ(box(scan, "chkSmtp").toolTip(), u"Tries 127.0.0.1 port %1."_s.arg(mail.port()));
    EXPECT_EQ(box(scan, "chkSslTls").toolTip(), u"Tries 127.0.0.1 port 465."_s);
    // The operator leaves the encrypted routes out; nothing listens for them here.
    for (const char* left_out : {"chkSslTls", "chkStartTls"}) {
        QTest::keyClick(&box(scan, left_out), Qt::Key_Space);
        EXPECT_FALSE(box(scan, left_out).isChecked());
    }

    auto& run = control<QPushButton>(scan, "btnScan");
    QTest::mouseClick(&run, Qt::LeftButton);
    EXPECT_FALSE(box(scan, "chkSmtp").isEnabled());
    EXPECT_EQ(control<QLabel>(scan, "lblNote").text(), u"Trying Port 25 (SMTP) ..."_s);
    ASSERT_TRUE(wait_until([&run] { return run.isEnabled(); }));
    EXPECT_TRUE(box(scan, "chkSmtp").isChecked());
    EXPECT_FALSE(box(scan, "chkSnpp").isChecked());
    EXPECT_FALSE(box(scan, "chkSnpp").toolTip().isEmpty());
    EXPECT_FALSE(box(scan, "chkSslTls").isChecked());
    EXPECT_FALSE(wctp.isEnabled());
    EXPECT_TRUE(control<QLabel>(scan, "lblNote").text().contains(u"Settings > Connection"_s));
}

TEST_F(DeviceWindows, TheCatalogOpensBothToolsModally)
{
    console::register_device_windows(*context);
    const std::pair<QString, QString> entries[] = {{u"modem_scan"_s, u"Scan for Modems"_s},
                                                   {u"port_scan"_s, u"Port Scan"_s}};
    for (const auto& [entry, title] : entries) {
        ASSERT_TRUE(context->catalog.has(entry));
        QString seen;
        when_modal([&seen](QWidget& modal) {
            seen = modal.windowTitle();
            // Screen readers and automation find each control by its caption and by its name.
            for (const auto* button : modal.findChildren<QAbstractButton*>()) {
                EXPECT_EQ(button->accessibleDescription(), button->objectName());
                EXPECT_EQ(button->accessibleName(), QString(button->text()).remove(u'&'));
            }
            QTest::keyClick(&modal, Qt::Key_Escape);
        });
        context->catalog.open(entry, &send_form.window());
        EXPECT_EQ(seen, title);
    }
}

} // namespace
} // namespace cvd::testing
