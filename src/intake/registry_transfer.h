#pragma once

#include "platform/runtime.h"

#include <QString>
#include <memory>

namespace cvd {

struct AppState;

namespace intake {

// The machine-store key where other programs of this machine meet the program (HKEY_LOCAL_MACHINE), and its
// subkeys.
QString transfer_key();
QString messages_key();
QString recipients_key();
QString groups_key();

// What the program holds on to between calls of the transfer routines.
struct IntegrationState
{
    // A shared lock on HalvernIsRunning in the runtime folder, held while `Running` says 1: other programs
    // test it with `flock -n` to see that the program runs.
    std::unique_ptr<platform::FileLock> running_marker;
    // The path of the bound local channel, published as `Socket` so that others can reach the program.
    QString socket_path;

    bool marker_held() const { return running_marker != nullptr; }
};

// Creates the transfer key and its three subkeys and publishes where the program lives, how to start it, how
// to reach it, and `Stop` 0 (which also clears a stop request left behind by an earlier run).
void UpdateIntegrationSettings(AppState& state, IntegrationState& integration);

// Writes `Running`; takes the running marker on 1 and lets it go on anything else.
void UpdateIntegrationRunning(AppState& state, IntegrationState& integration, int value);

// True when another program has asked the program to end (`Stop` is 1). A missing value is no request.
bool IntegrationStopRequest(AppState& state);

// Rebuild the `Recipients` and `Groups` keys: one numeric 0 value per name. Failures are passed over; the
// lists are a courtesy to other programs and must never stop the console.
void publish_recipients(AppState& state);
void publish_groups(AppState& state);
// Both lists, published on a worker thread of their own, so that a list of tens of thousands of names never
// holds up the window that changed it. The worker reads the names through its own connection when it runs,
// so it publishes what is committed by then; publications, these and the ones above, run one at a time.
void publish_lists_later(AppState& state);
// Waits until every publication asked for is written: before a program ends, and in tests.
void wait_for_publishing();

// Takes in the complete messages that other programs left under `Messages`: one Waiting row per subkey for a
// known recipient, and the subkey deleted; incomplete subkeys stay for a later tick.
void check_registry(AppState& state);

} // namespace intake
} // namespace cvd
