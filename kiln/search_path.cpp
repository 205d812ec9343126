#include "kiln/search_path.h"

#include <unistd.h>

#include <cstring>
#include <vector>

#include "kiln/strings.h"

namespace Kiln {

namespace {

constexpr char path_prefix[] = "PATH=";

bool is_path(const std::string& entry) {
    return entry.rfind(path_prefix, 0) == 0;
}

const std::string* find_path(const std::list<std::string>& env) {
    for (const std::string& entry : env) {
        if (is_path(entry)) {
            return &entry;
        }
    }
    return nullptr;
}

// `element` is a directory, the first one still behind the variable's name: the entry
// PATH=/usr/local/bin/:/usr/bin falls into "PATH=/usr/local/bin/" and "/usr/bin".
std::string candidate(std::string element, const char* name) {
    // Checked access: an empty element is refused here.
    if (element.at(element.size() - 1) == '/') {
        element.pop_back();
    }
    if (is_path(element)) {
        element.erase(0, std::strlen(path_prefix));
    }
    return element + "/" + name;
}

}  // namespace

std::string get_full_name(const char* name, const std::list<std::string>& env) {
    if (std::strlen(name) < 2) {
        return {};  // such a program cannot be started, "[" neither: the contract says so
    }
    if (name[0] == '/') {
        return name;
    }
    const std::string* path = find_path(env);
    if (path == nullptr) {
        return name;
    }
    for (const std::string& element : split(":", *path, 0)) {
        std::string full_name = candidate(element, name);
        if (access(full_name.c_str(), F_OK) == 0) {
            return full_name;
        }
    }
    return name;
}

}  // namespace Kiln
