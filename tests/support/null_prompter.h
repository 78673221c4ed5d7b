#pragma once

#include "core/prompter.h"

#include <cstdio>

namespace cvd::testing {

// Answers nothing: for benchmarks, where any box means the set-up went wrong, so it is named on stderr.
class NullPrompter : public Prompter
{
public:
    BoxAnswer show_box(const Notice& notice) override
    {
        std::fprintf(stderr, "%s: %s\n", qUtf8Printable(notice.title), qUtf8Printable(notice.text));
        return BoxAnswer::No;
    }
    std::optional<QString> ask_password(PasswordKind, const QString&) override { return std::nullopt; }
    std::optional<QString> choose_open_file(const FileChoice&) override { return std::nullopt; }
    std::optional<QString> choose_save_file(const FileChoice&) override { return std::nullopt; }
};

} // namespace cvd::testing
