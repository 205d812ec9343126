// LimitedCaller: a CallerExec whose child has a process group of its own and is killed, with that
// group, when it is told to stop or takes too long. What run_command is made of.
#pragma once

#include <chrono>
#include <list>
#include <string>

#include "kiln/caller_exec.h"
#include "kiln/runscript.h"

namespace Kiln {

class LimitedCaller : public CallerExec {
public:
    LimitedCaller(const char* program_name, const std::list<std::string>& arguments,
                  const std::list<std::string>& environment, const RunLimits& limits);

    // Kills the child that a failed call left.
    ~LimitedCaller() override;

    // After a call.
    CommandEnd end() const {
        return {how_, how_ == CommandEnd::exited ? getStatus() : -1, left_behind_};
    }

protected:
    void doMainLoop_() override;

private:
    using Clock = std::chrono::steady_clock;

    void awaitChild_(SigMask& mask);
    void awaitOutputs_(SigMask& mask);
    void awaitKilled_(SigMask& mask);
    void killGroup_() noexcept;
    bool passUntil_(SigMask& mask, Clock::time_point end);

    RunLimits limits_;
    CommandEnd::How how_ = CommandEnd::exited;
    bool left_behind_ = false;
};

}  // namespace Kiln
