#pragma once

#include "exchange/text_exchange.h"

#include <QDialog>

class QGroupBox;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QVBoxLayout;

namespace cvd::console {

struct ConsoleContext;

// What the export and import windows share: the four kinds as option buttons, the file box with its browse
// button, and Apply and Close. Each window names its captions and does its own Apply.
class TextExchangeForm : public QDialog
{
protected:
    struct Captions
    {
        QString window;
        QString options_title; // over the option buttons
        QString file_label;    // over the file box
        QString apply;
        QString (*option)(exchange::ExchangeKind);
    };

    TextExchangeForm(ConsoleContext& context, const Captions& captions, QWidget* parent);

    exchange::ExchangeKind chosen_kind() const;
    // The chooser of the window: the save chooser for an export, the open chooser for an import.
    virtual std::optional<QString> choose_file(const FileChoice& choice) = 0;
    virtual void on_apply() = 0;
    // Where a window puts controls of its own, under the file box.
    QVBoxLayout& extra_rows() { return *m_extra_rows; }
    // Called by the window once its own controls are built.
    void finish();

    ConsoleContext& m_context;
    QLineEdit* fFile;
    QPushButton* btnBrowse;
    QPushButton* btnApply;
    QPushButton* btnClose;

private:
    void browse();

    QList<std::pair<exchange::ExchangeKind, QRadioButton*>> m_options;
    QString (*m_option_caption)(exchange::ExchangeKind);
    QVBoxLayout* m_extra_rows;
};

} // namespace cvd::console
