#include "core/halt_barrier.h"

namespace cvd {

namespace {

// One event loop runs per process, so one noted halt is enough.
std::optional<QString>& halt_slot()
{
    static std::optional<QString> halt;
    return halt;
}

} // namespace

std::optional<QString> noted_halt()
{
    return halt_slot();
}

void note_halt(const QString& text)
{
    // The first halt is the one whose box the operator saw; a later one while unwinding adds nothing.
    if (!halt_slot()) {
        halt_slot() = text;
    }
}

void clear_noted_halt()
{
    halt_slot().reset();
}

} // namespace cvd
