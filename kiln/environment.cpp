#include "kiln/environment.h"

#include <unistd.h>

namespace Kiln {

std::list<std::string> current_environment() {
    std::list<std::string> entries;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        entries.emplace_back(*entry);
    }
    return entries;
}

}  // namespace Kiln
