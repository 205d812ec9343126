// Whether a text can stand in a command line as one word that the shell hands on as it is. Used
// before a name from the host's tables becomes part of a command.
#pragma once

#include <string_view>

// `text` is a field of a mount table as it is written there. The backslash of a table's escape
// (three octal digits, "\040") is let through: the shell drops it and acts on nothing.
bool is_plain_shell_word(std::string_view text);
