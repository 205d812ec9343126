// SIGXFSZ: a process that writes results wants a write beyond its file size limit to fail instead
// of ending it; the commands that it runs want what was there before.
#pragma once

namespace Kiln {

// From now on such a write fails with EFBIG. The command runner gives every command the disposition
// that was found here.
void ignore_file_size_signal();

// For a child that is about to become another program. Nothing, unless the signal is ignored by the
// function above.
void restore_file_size_signal();

}  // namespace Kiln
