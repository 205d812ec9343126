// The line that shows on a terminal how far a long scan is.
#pragma once

#include <cstddef>
#include <string>

#include "calc/scan_observer.h"

// The line for a terminal of so many columns, at most one column less wide, without any newline.
// Parts that do not fit are left out, the bar first.
std::string format_progress(const ScanProgress& progress, int columns);

// Rewrites one line in place on the terminal behind a descriptor, and wipes it when the scan is
// over.
class ProgressLine : public ScanObserver {
public:
    // The descriptor is not owned.
    explicit ProgressLine(int terminal_fd) : fd_(terminal_fd) {}

    void progress(const ScanProgress& progress) override;
    void finished() override;

private:
    std::size_t shown_within(int columns) const;
    void write(const std::string& text) const;

    int fd_;
    std::size_t shown_ = 0;  // how long the line on the screen is
};
