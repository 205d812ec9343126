// How long the name of an interface can be.
#pragma once

#include <net/if.h>
#include <stddef.h>

namespace tarnnet {

constexpr size_t if_name_size = IF_NAMESIZE;  // 15 characters and the NUL

}  // namespace tarnnet
