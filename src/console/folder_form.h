#pragma once

#include "queue/folders.h"

#include <QList>
#include <QWidget>

class QPushButton;
class QTableView;

namespace cvd::console {

struct ConsoleContext;
class FolderGridModel;

// The family of the four queue folders: one grid of five columns, the same buttons, the same refresh and sort
// machinery. The windows differ in the view they show, the keys they keep and which buttons they have.
class FolderForm : public QWidget
{
    Q_OBJECT

public:
    // Reloads the grid when the sum of the ids it shows changed, and only then.
    void refresh();
    // Runs the sort routine of that name; a name the window has no routine for does nothing.
    void sort_by(const QString& routine);

    queue::Folder folder() const { return m_folder; }
    QTableView& grid() const { return *Status_Grid; }
    FolderGridModel& model() const { return *m_model; }

protected:
    // The buttons beside Details, Close and Refresh: the cancel or requeue button's name, and whether the window
    // has a btnCopy beside its btnEdit.
    struct Buttons
    {
        const char* cancel_name = nullptr;  // "btnDelete" or "Command1"
        const char* requeue_name = nullptr; // "Command2"
        bool has_copy = false;
    };
    FolderForm(ConsoleContext& context, queue::Folder folder, Buttons buttons);

    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void build_controls(const Buttons& buttons);
    void lay_out();
    void place_first_time();
    void heading_clicked(int column);
    QList<qint64> selected_ids() const;
    void show_details();
    void load_into_send_form(bool hold);
    void cancel_selected();
    void requeue_selected();
    void reload_after_change();

    ConsoleContext& m_context;
    queue::Folder m_folder;
    FolderGridModel* m_model = nullptr;
    QTableView* Status_Grid = nullptr;
    QWidget* m_button_row = nullptr;
    QPushButton* btnDetails = nullptr;
    QPushButton* btnEdit = nullptr;
    QPushButton* btnCopy = nullptr;
    QPushButton* m_cancel = nullptr;
    QPushButton* m_requeue = nullptr;
    QPushButton* btnClose = nullptr;
    QPushButton* refresh_button = nullptr;

    bool m_first_show = true;
    qint64 m_remembered_total = -1;
    queue::ContentMark m_mark; // the database's content at the last change test
    bool m_busy = false;
    bool m_snapping = false;
};

} // namespace cvd::console
