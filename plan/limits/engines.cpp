#include "plan/limits/engines.h"

#include <array>

#include "plan/limits/writers.h"

namespace {

struct EngineRow {
    const char* name;
    LimitsText (*write)(const LimitSheet&);
};

// In the order of Engine.
constexpr std::array<EngineRow, engine_count> engines = {{
    {"systemd", write_systemd},
    {"nspawn", write_nspawn},
    {"lxc", write_lxc},
    {"podman", write_podman},
    {"kubernetes", write_kubernetes},
    {"rsync", write_rsync},
}};

}  // namespace

const char* name_of(Engine engine) {
    return engines[static_cast<std::size_t>(engine)].name;
}

std::optional<Engine> engine_called(const std::string& name) {
    for (std::size_t i = 0; i < engines.size(); ++i) {
        if (engines[i].name == name) {
            return static_cast<Engine>(i);
        }
    }
    return {};
}

LimitsText limits_text(Engine engine, const LimitSheet& sheet) {
    return engines[static_cast<std::size_t>(engine)].write(sheet);
}
