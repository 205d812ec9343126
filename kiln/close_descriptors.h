// Closing every descriptor that a command must not inherit. For a child between fork and exec.
#pragma once

namespace Kiln {

// Closes all descriptors from `first` up, whoever opened them.
void close_descriptors_from(int first);

// The same for kernels that have no single call for it.
void close_descriptors_one_by_one(int first);

}  // namespace Kiln
