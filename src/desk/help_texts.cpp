#include "desk/help_texts.h"

using namespace Qt::StringLiterals;

namespace cvd::desk {

namespace {

struct ShortcutLine
{
    const char16_t* description;
    int tabs;
    const char16_t* key;
};

constexpr ShortcutLine kKeyboard[] = {
    {u"Abort All Messages", 3, u"Ctrl-A"},
    {u"Send Message", 3, u"Alt-Enter"},
    {u"Send Message", 3, u"Ctrl-S"},
    {u"Erase Recipients and Message", 2, u"Ctrl-E"},
    {u"Set Focus to Recipient List", 2, u"Ctrl-R"},
    {u"Set Focus to Message Text", 2, u"Ctrl-T"},
    {u"Show All Preset Messages", 2, u"Ctrl-P"},
    {u"Select Preset Message (1-9)", 2, u"Ctrl-(1-9)"},
    {u"Filter Recipients", 3, u"Ctrl-F"},
};

constexpr ShortcutLine kMouse[] = {
    {u"Abort All Messages", 3, u"Right-Click on Pend"},
    {u"View Scheduled Messages", 2, u"Click on Sched"},
    {u"View Pending Messages", 2, u"Click on Pend"},
    {u"View Sent Messages", 3, u"Click on Sent"},
    {u"View Bad Messages", 3, u"Click on Bad"},
    {u"Program Preset Message", 2, u"Right-Click on Prog1-Prog5"},
    {u"Filter Recipient List", 3, u"Right-Click on Recipient List"},
    {u"Show Recipient Details", 2, u"Shift-Click on Recipient"},
    {u"Show Group Details", 3, u"Shift-Click on Group"},
    {u"Spell Check Message", 3, u"Double-Click on Message Text"},
    {u"Set Focus to Recipient List", 2, u"Click on Recipients Heading"},
    {u"Autoscroll Monitor Log", 2, u"Right-Click in Activity Monitor"},
};

template <std::size_t N> QString shortcut_text(const ShortcutLine (&lines)[N])
{
    QString text;
    for (const ShortcutLine& line : lines) {
        text +=
            QString::fromUtf16(line.description) + QString(line.tabs, u'\t') + QString::fromUtf16(line.key) + u"\r\n"_s;
    }
    return text;
}

} // namespace

Notice keyboard_shortcuts_notice()
{
    return {shortcut_text(kKeyboard), u"Keyboard Shortcuts"_s};
}

Notice mouse_shortcuts_notice()
{
    return {shortcut_text(kMouse), u"Mouse Shortcuts"_s};
}

} // namespace cvd::desk
