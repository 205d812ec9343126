// The search for a program on the PATH of an environment.
#include "kiln/search_path.h"

#include <unistd.h>

#include <sstream>
#include <stdexcept>

#include "fuzz/support.h"

namespace {

constexpr const char* refused = "an empty element";

std::string without_name(const std::string& element) {
    return element.compare(0, 5, "PATH=") == 0 ? element.substr(5) : element;
}

// The same search over the text as it stands; `path` begins with the variable's name.
std::string search(const std::string& name, std::string path) {
    path.erase(path.find_last_not_of(':') + 1);
    std::istringstream elements(path);
    for (std::string element; std::getline(elements, element, ':');) {
        if (element.empty()) {
            return refused;
        }
        const bool slash = element.back() == '/';
        const std::string directory = without_name(element.substr(0, element.size() - slash));
        const std::string candidate = std::string(directory).append("/").append(name);
        if (access(candidate.c_str(), F_OK) == 0) {
            return candidate;
        }
    }
    return name;
}

std::string expected(const std::string& name, const std::list<std::string>& env) {
    if (name.size() < 2 || name.front() == '/') {
        return name.size() < 2 ? "" : name;
    }
    for (const std::string& entry : env) {
        if (entry.compare(0, 5, "PATH=") == 0) {
            return search(name, entry);
        }
    }
    return name;
}

std::string found(const std::string& name, const std::list<std::string>& env) {
    try {
        return Kiln::get_full_name(name.c_str(), env);
    } catch (const std::out_of_range&) {
        return refused;
    }
}

}  // namespace

// Input: the name, the environment, one entry a line.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> parts = fuzz::sections(data, size, 2);
    const std::string name = std::string(parts[0].c_str()).substr(0, parts[0].find('\n'));
    std::list<std::string> env;
    std::istringstream lines(parts[1]);
    for (std::string line; std::getline(lines, line);) {
        env.push_back(line);
    }
    fuzz::require(found(name, env) == expected(name, env), "the first element that has it");
    return 0;
}
