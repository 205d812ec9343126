// Closing every descriptor that a command must not inherit. For a child between fork and exec.
#pragma once

namespace Kiln {

// Closes all descriptors from `first` up, whoever opened them. `listing` is the directory that
// names the process's descriptors, for kernels that have no single call for it.
void close_descriptors_from(int first, const char* listing);

// The way of those kernels. Without the directory every number up to the limit is closed.
void close_descriptors_one_by_one(int first, const char* listing);

}  // namespace Kiln
