// The quota step: how many users and groups of the host have quota records.
#pragma once

#include <cstdint>

#include "inspect/host.h"
#include "kiln/result.h"

// The number of ids, modulo 2^32; 0 without quotas. A device whose quotas cannot be read adds
// nothing, after logging why. The reason names the mount table when that cannot be read.
Kiln::Result<std::uint32_t> count_quota_ids(const Host& host);
