// Words that were meant to be commands. Pure.
#pragma once

#include <string>
#include <vector>

// "no command is called reprot; did you mean report?" The nearest of the names is suggested where
// no more than two letters, and fewer than the word has, must be put in, left out, exchanged or
// swapped with the next.
std::string unknown_command(const std::string& word, const std::vector<std::string>& names);
