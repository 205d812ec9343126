// What one unit of a count costs, where one line of the configuration is made from another.
#pragma once

#include <cstdint>

constexpr float files_per_process = 32.0F;
constexpr std::int64_t dentry_bytes_per_file = 384;
constexpr std::int64_t kernel_bytes_per_process = std::int64_t{15} * 4096;
constexpr std::int64_t socket_buffer_bytes = 65536;
