#pragma once

namespace cvd::store {

// True for failures that pass by themselves: another connection's lock, or a passing input/output fault
// while taking a lock. Such statements are worth running again.
bool is_transient_error(int extended_code);

// True for failures that say the file's content is broken: a damaged page or record, or a file that does not
// read as a database (which, for a file already accepted as one, means its first page is damaged).
bool is_damage_error(int extended_code);

} // namespace cvd::store
