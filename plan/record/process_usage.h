// What the processes use beside the memory scan's own figures, found while that scan reads them.
// Used for the passes that are recorded.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "calc/process_observer.h"
#include "plan/record/figures.h"
#include "plan/recording/usage.h"

// The largest of many figures, and whose it is.
class LargestFigure {
public:
    // Nothing: a figure that is there, but cannot be known. It could be the largest.
    void add(Figure figure, std::string_view name);

    // Nothing when none was added or one is not known. Nobody is named for 0.
    std::optional<ProcessFigure> largest() const;

private:
    std::optional<ProcessFigure> largest_;
    bool is_known_ = true;
};

// Of one pass: hand a new one to the memory scan for each.
class ProcessUsage : public ProcessObserver {
public:
    void saw_process(int proc_fd, std::int32_t pid, const std::string& status_text) override;

    // Threads of all processes that have memory of their own; nothing when no process was seen.
    Figure tasks() const { return is_empty_ ? Figure() : tasks_; }
    // Nothing when no process was seen, or one of them does not let us look.
    std::optional<ProcessFigure> descriptors() const { return descriptors_.largest(); }
    std::optional<ProcessFigure> locked_kib() const { return locked_kib_.largest(); }

private:
    Figure descriptors_of(int proc_fd, std::int32_t pid);

    std::optional<bool> kernel_counts_;  // the descriptors, as the size of the folder of them
    bool is_empty_ = true;
    Figure tasks_ = 0;
    LargestFigure descriptors_;
    LargestFigure locked_kib_;
};
