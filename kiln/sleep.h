// Sleeping through signals.
#pragma once

namespace Kiln {

// Sleeps the whole time, resuming after every interruption. Returns at once unless `seconds` > 0.
void sleep_full(int seconds);

}  // namespace Kiln
