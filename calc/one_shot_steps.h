// The steps that a run takes once, after the last pass, in their order.
#pragma once

#include <cstddef>

enum class OneShotStep { quotas, interfaces, distribution, host_name, resolver, mounts };

struct OneShotStepRow {
    OneShotStep step;
    const char* name;  // for a person, and in recordings
};

inline constexpr OneShotStepRow one_shot_steps[] = {
    {OneShotStep::quotas, "quotas"},
    {OneShotStep::interfaces, "interfaces"},
    {OneShotStep::distribution, "distribution"},
    {OneShotStep::host_name, "host name"},
    {OneShotStep::resolver, "resolver"},
    {OneShotStep::mounts, "mounts"},
};

// The rows stand in the order of the enumeration.
constexpr const char* name_of(OneShotStep step) {
    return one_shot_steps[static_cast<std::size_t>(step)].name;
}
