// Who wants to know more of the processes than the memory scan does looks over its shoulder, in the
// scan's own walk. The calculator itself has no such observer.
#pragma once

#include <cstdint>
#include <string>

class ProcessObserver {
public:
    virtual ~ProcessObserver() = default;

    // A process whose status file has just been read, with the file's text. The folder of all
    // processes is open as `proc_fd`. Both are the scan's, and only for the time of the call.
    virtual void saw_process(int proc_fd, std::int32_t pid, const std::string& status_text) = 0;
};
