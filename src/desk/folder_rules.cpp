#include "desk/folder_rules.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace cvd::desk {

namespace {

constexpr int kGridMarginWidth = 240;
constexpr int kGridMarginHeight = 800;
constexpr int kLowestClientHeight = 1500;
constexpr int kCountedClientHeight = 1700;
constexpr int kNarrowestClient = 5400;
constexpr int kNarrowestScheduledClient = 6300;

constexpr SettingKey kSchedSort{u"display", u"sched_sort_order"};
constexpr SettingKey kPendSort{u"display", u"pend_sort_order"};
constexpr SettingKey kSentSort{u"display", u"sent_sort_order"};
constexpr SettingKey kBadSort{u"display", u"bad_sort_order"};
constexpr SettingKey kListSort{u"display", u"list_sort_order"};

bool by_requested(queue::Folder folder)
{
    return folder == queue::Folder::Scheduled || folder == queue::Folder::Pending;
}

} // namespace

const FolderFace& folder_face(queue::Folder folder)
{
    static const std::array<FolderFace, 4> faces{{
        {u"sched_form"_s, u"Scheduled Messages"_s, u"Scheduled"_s, u"sent as float"_s, u"sched_"_s, 1},
        {u"pending_form"_s, u"Pending Messages"_s, u"Requested"_s, u"requested as float"_s, u"pend_"_s, 2},
        {u"sent_form"_s, u"Sent Messages"_s, u"Sent"_s, u"sent as float"_s, u"sent_"_s, 3},
        {u"bad_form"_s, u"Bad Messages"_s, u"Requested"_s, u"requested as float"_s, u"bad_"_s, 4},
    }};
    return faces.at(static_cast<std::size_t>(folder));
}

std::array<SortRoutine, 6> sort_routines(queue::Folder folder)
{
    const QString date = by_requested(folder) ? u"Requested"_s : u"Sent"_s;
    return {{
        {u"SortBy"_s + date + u"Ascending"_s, kDateNumberColumn, kDateColumn, true, false},
        {u"SortBy"_s + date + u"Descending"_s, kDateNumberColumn, kDateColumn, true, true},
        {u"SortByToAscending"_s, kToColumn, kToColumn, false, false},
        {u"SortByToDescending"_s, kToColumn, kToColumn, false, true},
        {u"SortByMessageAscending"_s, kMessageColumn, kMessageColumn, false, false},
        {u"SortByMessageDescending"_s, kMessageColumn, kMessageColumn, false, true},
    }};
}

std::optional<SortRoutine> find_sort_routine(queue::Folder folder, const QString& name)
{
    for (const SortRoutine& routine : sort_routines(folder)) {
        if (routine.name == name) {
            return routine;
        }
    }
    return std::nullopt;
}

SettingKey sort_key_written(queue::Folder folder)
{
    switch (folder) {
    case queue::Folder::Scheduled:
        return kSchedSort;
    case queue::Folder::Pending:
        return kPendSort;
    case queue::Folder::Sent:
        return kSentSort;
    case queue::Folder::Bad:
        return kBadSort;
    }
    return kSentSort;
}

SettingKey sort_key_read_on_refresh(queue::Folder /*folder*/)
{
    return kSentSort;
}

SettingKey sort_key_read_on_heading(queue::Folder folder)
{
    return folder == queue::Folder::Sent ? kSentSort : kListSort;
}

std::optional<SortRoutine> heading_click_routine(queue::Folder folder, int column, const QString& key_value)
{
    if (column != kDateColumn && column != kToColumn && column != kMessageColumn) {
        return std::nullopt;
    }
    const std::array<SortRoutine, 6> routines = sort_routines(folder);
    const auto ascending = std::find_if(routines.begin(), routines.end(), [column](const SortRoutine& routine) {
        return routine.marked_heading == column && !routine.descending;
    });
    // The descending routine follows its ascending one.
    return key_value == ascending->name ? *(ascending + 1) : *ascending;
}

GridSize folder_grid_size(queue::Folder folder, int client_width, int client_height)
{
    const GridSize client = folder_minimum_client(folder);
    const int height = client_height < kLowestClientHeight ? kCountedClientHeight : client_height;
    const int width = std::max(client_width, client.width);
    return {width - kGridMarginWidth, height - kGridMarginHeight};
}

GridSize folder_minimum_client(queue::Folder folder)
{
    return {folder == queue::Folder::Scheduled ? kNarrowestScheduledClient : kNarrowestClient, kCountedClientHeight};
}

int whole_row_height(int available, int header_height, int row_height, int frame)
{
    if (row_height <= 0) {
        return available;
    }
    const int rows = std::max(1, (available - header_height - frame) / row_height);
    return header_height + rows * row_height + frame;
}

} // namespace cvd::desk
