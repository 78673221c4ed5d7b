#pragma once

namespace cvd::console {

struct ConsoleContext;

// Help -> Contents: the bundled help in the desktop's browser, or the box "Help Not Available".
void help_contents(ConsoleContext& context);
// Help -> Website: the maker's site in the desktop's browser, or the box "Browser Not Found" with its address.
void help_website(ConsoleContext& context);

} // namespace cvd::console
