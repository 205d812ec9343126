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

LimitsText limits_text(Engine engine, const LimitSheet& sheet);
