#pragma once

#include "console/text_exchange_form.h"

namespace cvd::console {

// Writes one kind of address data to a text file for another installation.
class frmExportText : public TextExchangeForm
{
public:
    frmExportText(ConsoleContext& context, QWidget* parent);

private:
    std::optional<QString> choose_file(const FileChoice& choice) override;
    void on_apply() override;
};

} // namespace cvd::console
