#pragma once

#include "desk/log_search.h"

#include <QPointer>
#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;

namespace cvd::console {

struct ConsoleContext;
class SearchableLog;

// "Find": a small search window over one of the two logs. It stays on top, and goes when its log goes.
class frmFind : public QWidget
{
    Q_OBJECT

public:
    frmFind(ConsoleContext& context, SearchableLog& target);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void find(desk::FindDirection direction);

    ConsoleContext& m_context;
    SearchableLog& m_target;
    QLabel* lblFind = nullptr;
    QLineEdit* txtFind = nullptr;
    QPushButton* btnFindNext = nullptr;
    QPushButton* btnFindPrev = nullptr;
    QPushButton* btnCancel = nullptr;
};

} // namespace cvd::console
