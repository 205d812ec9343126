// The library's own log file. Every part of the library writes here; only failures of netlink are
// printed as well, by those who meet them.
#pragma once

namespace tarnnet {

// Formats one message (cut to 1023 characters) and appends it to the log file as one line: seconds
// since the epoch, process id, parent process id, message. The file is opened and closed for each
// message; when it cannot be opened, or something else than a file has its name, the message is
// dropped, as every message is while tarnnet_set_log() has the log off. errno is left as it was.
void tarnnetlog(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace tarnnet
