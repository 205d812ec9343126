// What a writer of limits makes.
#pragma once

#include <string>
#include <vector>

// Text in the engine's own format that says where each line of it comes from and what is not in it.
// The complaints are those of the sheet, and what of the host's texts the format cannot carry; the
// text has them, too.
struct LimitsText {
    std::string text;
    std::vector<std::string> complaints;
};
