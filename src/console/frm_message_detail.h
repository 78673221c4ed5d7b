#pragma once

#include <QDialog>

class QPlainTextEdit;
class QPushButton;

namespace cvd::console {

struct ConsoleContext;

// One message of a folder or of the history as plain text. The asking window leaves its number and the id of
// the row it showed selected in the shared state; the row itself is read here.
class frmMessageDetail : public QDialog
{
    Q_OBJECT

public:
    frmMessageDetail(ConsoleContext& context, QWidget* parent);

private:
    ConsoleContext& m_context;
    QPlainTextEdit* txtDetails = nullptr;
    QPushButton* btnClose = nullptr;
};

} // namespace cvd::console
