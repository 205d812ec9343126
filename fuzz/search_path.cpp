// The search for a program on the PATH of an environment.
#include "kiln/search_path.h"

#include <sstream>
#include <stdexcept>

#include "fuzz/support.h"

namespace {

constexpr const char* refused = "an empty element";

// The same search over the text as it stands; `path` begins with the variable's name.
std::string search(const std::string& name, std::string path) {
    path.erase(path.find_last_not_of(':') + 1);
    std::istringstream elements(path);
    for (std::string element; std::getline(elements, element, ':');) {
        if (element.empty()) {
            return refused;
        }
        element.erase(element.size() - (element.back() == '/'));
        element.erase(0, element.compare(0, 5, "PATH=") == 0 ? 5 : 0);
        const std::string candidate = element.append("/").append(name);
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
    const auto path = std::find_if(env.begin(), env.end(), [](const std::string& entry) {
        return entry.compare(0, 5, "PATH=") == 0;
    });
    return path == env.end() ? name : search(name, *path);
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
void try_input(fuzz::Input input) {
    const std::vector<std::string> parts = input.sections(2);
    const std::string name = std::string(parts[0].c_str()).substr(0, parts[0].find('\n'));
    std::list<std::string> env;
    std::istringstream lines(parts[1]);
    for (std::string line; std::getline(lines, line);) {
        env.push_back(line);
    }
    require(found(name, env) == expected(name, env), "the first element that has it");
}
