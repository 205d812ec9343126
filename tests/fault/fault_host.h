// The made-up host of the fault test and one run of the program on it.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

extern "C" {
#include "tests/fault/fault_page.h"
}

struct Outcome {
    int status = 0;   // exit status, or -1 for an end by a signal or by the time limit
    std::string out;  // standard output
    std::string err;  // standard error
};

bool operator<(const Outcome& left, const Outcome& right);
bool operator==(const Outcome& left, const Outcome& right);
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

// Which call fails, see fault_page.
struct Fault {
    fault_call call = FAULT_NONE;
    int at = 0;
    int error = 0;
    bool in_child = false;
};

class FaultHost {
public:
    // The program, the preloaded library and the shell are read while their files can still be
    // seen, that is before the host is entered.
    FaultHost();

    // Lays out the host's files and links. Returns false where the machine refuses that.
    bool raise();

    // Runs the program with that environment and those arguments, and expects of every run that it
    // ends in time by its own exit, gives every descriptor back but `kept`, and leaves no process.
    Outcome run(const Fault& fault, const std::vector<std::string>& arguments = {},
                const std::vector<std::string>& environment = {}, int kept = 0);

    // The outcome of a run on the host without that file or directory.
    Outcome run_without(const std::string& path);

    // What the preloaded library has noted about the last run.
    const fault_page& page() const { return *page_; }
    void set_alarms(int microseconds) { page_->alarm_usec = microseconds; }

private:
    void write_page(const Fault& fault);
    [[noreturn]] void start_program(const std::vector<std::string>& arguments,
                                    const std::vector<std::string>& environment) const;

    std::string program_;
    std::string library_;
    std::string shell_;
    fault_page* page_ = nullptr;
};
