// The limits in the words of an engine that people run. Pure; for the command.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "plan/limits/limits.h"

enum class Engine { systemd, nspawn, lxc, podman, kubernetes, rsync };
constexpr std::size_t engine_count = 6;

const char* name_of(Engine engine);
std::optional<Engine> engine_called(const std::string& name);

// Text in the engine's own format that says where each line of it comes from and what is not in it.
// The complaints are those of the sheet, and what of the host's texts the format cannot carry; the
// text has them, too.
struct LimitsText {
    std::string text;
    std::vector<std::string> complaints;
};
LimitsText limits_text(Engine engine, const LimitSheet& sheet);
