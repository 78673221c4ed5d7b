#pragma once

namespace cvd::store {

// True for failures that pass by themselves: another connection's lock, or a passing input/output fault
// while taking a lock. Such statements are worth running again.
bool is_transient_error(int extended_code);

} // namespace cvd::store
