// The resource controls of a systemd unit; for the drop-ins.
#pragma once

#include "plan/limits/commented_text.h"

void add_unit_limits(CommentedText& text);

// The two limits of each process, in a unit's section of its own or in a .nspawn file's.
void add_process_limits(CommentedText& text);

// "1804:524288", the soft limit and a hard one that is at least as large.
std::string descriptor_range(std::int64_t soft);

std::string bytes_of_mib(std::int64_t mib);

// 100 for each core, within what a weight can be.
std::string cpu_weight(std::int64_t hundredths_of_core);
