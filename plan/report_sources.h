// The files that a report is made of.
#pragma once

#include <string>
#include <vector>

// A recording, or the file in which stands why there is none.
struct ReportSource {
    std::string path;
    std::string server;  // the file's name without its ending
    bool is_failure = false;
};

// The sources behind the paths: a file is a recording; of a folder it is every file whose name ends
// in ".jsonl", and for each ".failed" the reason why that server has none; in the order of their
// names. A server that has both is there twice: with what was recorded, and with the reason.
// A path that is not there is a source as well; reading it says why not. Returns what went wrong
// with a folder, or an empty text.
std::string find_report_sources(const std::vector<std::string>& paths,
                                std::vector<ReportSource>& sources);
