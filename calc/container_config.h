// The computation of the container configuration: a pure function of the profile, the two scales
// and the system's page size.
#pragma once

#include "calc/env_config.h"
#include "calc/host_profile.h"

// Appends every line of the configuration that can carry what `profile` holds, in the fixed order.
// The profile is left as it is. Cannot fail; every float, NaN included, has a defined result.
void add_container_config(const PhysParams& profile, float mem_scale, float disk_scale,
                          EnvConfig& config);
