// The page as it was put together at build time: everything before the data and everything after.
// Both empty where Chart.js was not found.
#pragma once

#include <string_view>

std::string_view page_head();
std::string_view page_tail();
