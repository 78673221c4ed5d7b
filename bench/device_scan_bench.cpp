// The device tools' own work, apart from the waits they make: the per-tick work of the modem scan (parity
// stripping and the trigger search over what a port sent), the port scan's judging of a long multi-line reply,
// and a write and read back through the serial layer over a socat pseudo-terminal pair.
#include "devices/comm.h"
#include "devices/modem_scan.h"
#include "devices/port_scan.h"
#include "support/pty_pair.h"

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

void BM_ModemAnswerTick(benchmark::State& state)
{
    QByteArray received(1000, '\xC1');
    received.append("\r\nOK\r\n");
    cvd::devices::WaitTriggers triggers;
    triggers.SetWaitTrigger(u"OK"_s);
    triggers.SetWaitTrigger(u"0"_s);
    for (auto _ : state) {
        benchmark::DoNotOptimize(triggers.find(cvd::devices::StripParity(received)));
    }
}
BENCHMARK(BM_ModemAnswerTick);

void BM_TcpReplyJudging(benchmark::State& state)
{
    QByteArray reply;
    for (int line = 0; line < 50; ++line) {
        reply += "250-EXTENSION" + QByteArray::number(line) + "\r\n";
    }
    reply += "250 SIZE 10240000\r\n";
    for (auto _ : state) {
        benchmark::DoNotOptimize(cvd::devices::GetTCPResponse(reply, {250, 250}));
    }
}
BENCHMARK(BM_TcpReplyJudging);

// The benchmark main makes no application object, so the ports' notifiers cannot start and say so on every
// open; the layer reads by polling the device, which needs no notifier, so that one warning is dropped here.
void quiet_notifier_warning(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (!message.startsWith(u"QSocketNotifier: Can only be used with threads started with QThread"_s)) {
        qt_message_output(type, context, message);
    }
}

void run_round_trips(benchmark::State& state)
{
    cvd::testing::PtyPair pair;
    if (!pair.ready()) {
        state.SkipWithError("socat is not installed or did not start");
        return;
    }
    cvd::devices::modCOMM comm;
    if (comm.CommOpen(1, pair.near_end(), cvd::devices::ModemScan::kSettings) != 0 ||
        comm.CommOpen(2, pair.far_end(), cvd::devices::ModemScan::kSettings) != 0) {
        state.SkipWithError("the pseudo-terminals did not open");
        return;
    }
    QByteArray part;
    for (auto _ : state) {
        comm.CommWrite(1, "AT\r");
        qsizetype got = 0;
        while (got < 3) {
            const int count = comm.CommRead(2, part, 1000);
            if (count < 0) {
                state.SkipWithError("read failed");
                return;
            }
            got += count;
        }
    }
}

void BM_CommRoundTrip(benchmark::State& state)
{
    const QtMessageHandler previous = qInstallMessageHandler(quiet_notifier_warning);
    run_round_trips(state);
    qInstallMessageHandler(previous);
}

BENCHMARK(BM_CommRoundTrip)->Unit(benchmark::kMicrosecond);

} // namespace
