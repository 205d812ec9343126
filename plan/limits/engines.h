// The limits in the words of an engine that people run, and what it has no words for. Pure.
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

// The lines of the calculator's configuration without an equivalent, in their order.
std::vector<LinesOfReason> lacking_lines(Engine engine);

// One writer for each engine. For limits_text() alone.
LimitsText write_systemd(const LimitSheet& sheet);
LimitsText write_nspawn(const LimitSheet& sheet);
LimitsText write_lxc(const LimitSheet& sheet);
LimitsText write_podman(const LimitSheet& sheet);
LimitsText write_kubernetes(const LimitSheet& sheet);
LimitsText write_rsync(const LimitSheet& sheet);
