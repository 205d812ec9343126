// The environment of this process, as a list that can be handed to a program.
#pragma once

#include <list>
#include <string>

namespace Kiln {

// A copy of the whole environment, NAME=value strings in their order; empty when there is none.
std::list<std::string> current_environment();

}  // namespace Kiln
