#include "plan/cli/messages.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>

#include "calc/arguments.h"
#include "kiln/files.h"
#include "kiln/owners.h"
#include "kiln/strings.h"
#include "plan/text/printable.h"

namespace {

bool write_to(int fd, const std::string& name, const std::string& text) {
    if (Kiln::write_all(fd, text.data(), text.size()) != 0) {
        say(name + " cannot be written: " + std::strerror(errno));
        return false;
    }
    return true;
}

bool read_scale(const char* option, const std::optional<std::string>& given, float& scale) {
    if (given) {
        const std::string& text = *given;
        switch (parse_scale(text.c_str(), &scale)) {
            case ScaleError::none:
                break;
            case ScaleError::not_a_number:
                say("Not a numeric value for " + std::string(option) + ": " + text);
                return false;
            case ScaleError::not_positive:
                say(std::string(option) + " must be positive: " + text);
                return false;
        }
    }
    return true;
}

}  // namespace

bool read_scales(const ScaleOptions& options, ConfigScales& scales) {
    return read_scale("--mem-scale", options.memory, scales.memory) &&
           read_scale("--disk-scale", options.disk, scales.disk);
}

bool write_result(const std::string& path, const std::string& text, mode_t mode) {
    if (path.empty()) {
        return write_to(STDOUT_FILENO, "standard output", text);
    }
    const Kiln::Descriptor fd(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode));
    if (!fd) {
        say(path + " cannot be opened: " + std::strerror(errno));
        return false;
    }
    return write_to(fd.get(), path, text);
}
