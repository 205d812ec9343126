// Finding a program on the search path of an environment that is yet to be given to it.
#pragma once

#include <list>
#include <string>

namespace Kiln {

// The path to start for `name`, given the NAME=value strings of the program's environment:
//   - "" for a name of fewer than two characters; no such program can be started;
//   - `name` itself when it begins with "/", when `env` has no PATH, or when no element holds it;
//   - else the first element of PATH that holds a file of that name, executable or not.
// An empty element between two others is not supported: std::out_of_range.
std::string get_full_name(const char* name, const std::list<std::string>& env);

}  // namespace Kiln
