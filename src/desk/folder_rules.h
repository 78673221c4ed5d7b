#pragma once

#include "core/settings.h"
#include "queue/folders.h"

#include <QString>
#include <array>
#include <optional>

namespace cvd::desk {

// The grid's columns: the hidden id, the date, "Sent To", "Message" and the hidden date number.
inline constexpr int kIdColumn = 0;
inline constexpr int kDateColumn = 1;
inline constexpr int kToColumn = 2;
inline constexpr int kMessageColumn = 3;
inline constexpr int kDateNumberColumn = 4;

// What a folder's window is called and what it shows.
struct FolderFace
{
    QString window_name;     // "sched_form"
    QString title;           // "Scheduled Messages"
    QString date_heading;    // "Scheduled", "Requested" or "Sent"
    QString number_heading;  // "sent as float" or "requested as float"
    QString geometry_prefix; // "sched_" for sched_top, sched_left ...
    int detail_source = 0;   // 1 to 4
};
const FolderFace& folder_face(queue::Folder folder);

// One of the six sort routines of a folder; its name is also the value the sort keys hold.
struct SortRoutine
{
    QString name;
    int column = 0;         // the grid column sorted by
    int marked_heading = 0; // the heading that shows the order
    bool numeric = false;
    bool descending = false;
};
std::array<SortRoutine, 6> sort_routines(queue::Folder folder);
// The routine of that name in this folder; nullopt for a name the folder has no routine for.
std::optional<SortRoutine> find_sort_routine(queue::Folder folder, const QString& name);

// The keys each folder uses, odd as they are: every folder writes its own key, but a refresh of any folder
// reads the sent folder's, and a heading click reads the history window's except in the sent folder, which
// alone reads back what it writes.
SettingKey sort_key_written(queue::Folder folder);
SettingKey sort_key_read_on_refresh(queue::Folder folder);
SettingKey sort_key_read_on_heading(queue::Folder folder);

// The routine a click on a heading runs, given the value of the heading key: descending when the key names the
// column's ascending routine, ascending otherwise. nullopt for the hidden columns and for clicks outside the
// headings (a negative column).
std::optional<SortRoutine> heading_click_routine(queue::Folder folder, int column, const QString& key_value);

// The grid's size in twips for a client area: 240 narrower and 800 lower, with a client below 1500 high
// counted as 1700 and one narrower than the button row (5400, 6300 in the scheduled folder with its extra
// button) counted as that.
struct GridSize
{
    int width = 0;
    int height = 0;
};
GridSize folder_grid_size(queue::Folder folder, int client_width, int client_height);
// The smallest client area a folder is laid out for, in twips.
GridSize folder_minimum_client(queue::Folder folder);
// The height a grid really takes to show whole rows: the heading and as many whole rows as fit, plus its
// frame; never less than the heading and one row.
int whole_row_height(int available, int header_height, int row_height, int frame);

} // namespace cvd::desk
