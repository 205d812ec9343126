// A crowd of processes that do nothing, in a process namespace of its own, so that a measurement
// sees as many as it wants and no others.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace Bench {

// They end with the first process of their namespace, the benchmark, which is one of them.
class IdleProcesses {
public:
    // Each opens so many descriptors beside those that it inherits.
    explicit IdleProcesses(int more_descriptors = 0);

    void grow_to(std::size_t count);

    const std::vector<std::string>& status_paths() const { return paths_; }

private:
    pid_t start_one() const;

    int more_descriptors_;
    std::vector<std::string> paths_;
};

// Makes the first process of a process namespace whose /proc shows that namespace alone, and leaves
// the measuring to it; what it returns is the result. It ends with us, and all that it has started
// ends with it. To be called as root, once, and when everything else is measured.
int in_private(const std::function<int()>& measure);

}  // namespace Bench
