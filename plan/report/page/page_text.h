// The page as it was put together at build time, with "@data@" where the data goes. Nothing but
// that where Chart.js was not found.
#pragma once

#include <string_view>

std::string_view page_text();
