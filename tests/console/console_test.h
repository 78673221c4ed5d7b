#pragma once

#include "console/activity_log.h"
#include "console/console_context.h"
#include "console/window_owner.h"
#include "support/database_test.h"

#include <QList>
#include <QWidget>
#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace cvd::testing {

// Stands in for the send window where another window is tested alone, and records what it was asked.
class RecordingSendForm : public console::SendFormPort
{
public:
    QWidget& window() override { return m_window; }
    void show_users() override { ++show_users_calls; }
    void fill_unpicked(const QList<addressbook::PickerEntry>& entries) override { unpicked = entries; }
    void use_preset(const addressbook::Preset& preset) override { used_presets.append(preset); }
    void update_prog_captions() override { ++prog_caption_updates; }
    void monitor_closed() override { ++monitor_closings; }
    void update_counters() override { ++counter_updates; }
    void note_counters_changed() override { ++counters_changed_notes; }
    bool load_message(const QString& recipient, const QString& text) override
    {
        loaded_messages.append({recipient, text});
        return load_message_result;
    }
    void apply_display_options() override { ++display_applications; }

    int show_users_calls = 0;
    QList<addressbook::PickerEntry> unpicked;
    QList<addressbook::Preset> used_presets;
    int prog_caption_updates = 0;
    int monitor_closings = 0;
    int counter_updates = 0;
    int counters_changed_notes = 0;
    QList<std::pair<QString, QString>> loaded_messages; // recipient, text
    bool load_message_result = true;
    int display_applications = 0;

private:
    QWidget m_window;
};

// The fixture of the window suites: a program state with loaded settings in a private environment, the
// console's shared state, and a recording stand-in for the send window.
class ConsoleTest : public DatabaseTest
{
protected:
    ConsoleTest() : DatabaseTest(Start::LoadSettings) {}
    void SetUp() override;
    void TearDown() override;

    // The control of that objectName inside the window; fails the test when there is none.
    template <typename Control> Control& control(QWidget& window, const char* name)
    {
        auto* found = window.findChild<Control*>(QString::fromLatin1(name));
        if (found == nullptr) {
            throw std::runtime_error(std::string("no control ") + name);
        }
        return *found;
    }

    // Runs `act` on the modal dialog that the next exec() opens, as soon as it is shown.
    static void when_modal(std::function<void(QWidget&)> act);

    console::ConsoleState shared;
    console::WindowOwner windows;
    console::ActivityLog activity;
    RecordingSendForm send_form;
    std::unique_ptr<console::ConsoleContext> context;
};

} // namespace cvd::testing
