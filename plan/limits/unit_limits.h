// The resource controls of a systemd unit; for the drop-ins.
#pragma once

#include "plan/limits/commented_text.h"

void add_unit_limits(CommentedText& text);

// The two limits of each process, in a unit's section of its own or in a .nspawn file's.
void add_process_limits(CommentedText& text);

// At least as large as the soft limit that it stands beside.
std::int64_t hard_descriptor_limit(std::int64_t soft);

// 100 for each core, within what a weight can be.
std::int64_t cpu_weight(std::int64_t hundredths_of_core);
