// The files that a report is made of.
#pragma once

#include <string>
#include <vector>

#include "kiln/result.h"

// What there is of one server: a recording, a file that says why it was not done, or both.
struct ReportSource {
    std::string server;     // the file's name, without .jsonl or .failed
    std::string recording;  // paths; empty where there is none
    std::string reason;
};

// The sources behind the paths. A folder gives one for every name that has a file NAME.jsonl (its
// recording) or NAME.failed (the reason), in the order of the names; any other path is a recording,
// whether or not it is there. The reason says what is wrong with a folder, or that there is
// nothing in it.
Kiln::Result<std::vector<ReportSource>> find_report_sources(const std::vector<std::string>& paths);
