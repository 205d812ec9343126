// CallerExec: runs a program as a child process, moving bytes between it and up to three connectors
// until it has ended. One object serves one call. Not re-entrant: a call replaces the process's
// dispositions of SIGPIPE and SIGCHLD and uses its one flag that says "some child ended", so there
// is one call at a time, by one thread, and none from a connector or a signal handler.
#pragma once

#include <poll.h>

#include <csignal>
#include <list>
#include <string>
#include <vector>

#include "kiln/caller.h"
#include "kiln/connector.h"
#include "kiln/owners.h"
#include "kiln/paths.h"

namespace Kiln {

class SigMask;

class CallerExec : public CallerBase {
public:
    struct Intrinsics {
        std::string work_dir;  // where the child runs; empty for where the caller runs
        // End with the child, even when others still hold its pipes open.
        bool stop_on_exit = false;
        Paths paths = {};
    };

    CallerExec(const char* program_name, const std::list<std::string>& arguments,
               const std::list<std::string>& environment, Intrinsics options);

    // Gives back what the call left open: the pipes, and after a failed one the child, which is
    // waited for.
    ~CallerExec() override;

    // Makes the pipes and forks. All failures of the calling side, here and in the loop, are a
    // Kiln::Error with the code CallerGenericError. A failed enter() undoes nothing: the pipes stay
    // open until the object goes away, and the signal dispositions stay replaced.
    int enter(std::vector<Connector*>& connector_list) override;

    void leave() override;

    // The file that the kernel wrote when a signal ended the child with a core dump, or "".
    // Part of the interface; nothing in this project calls it.
    std::string getCoreDumpName() const;

    // The handler of SIGCHLD while a child runs; it does no more than set the flag.
    static void handle_CHLD(int signal_number);
    static volatile std::sig_atomic_t sigchld_received;

protected:
    void prepareMainLoop_() override {}

    // A failure inside the loop leaves the dispositions replaced and the child not waited for; only
    // the blocked-signal mask is restored.
    void doMainLoop_() override;
    void finishMainLoop_() override;

    void analyzeExitStatus_();

    int wait_status = 0;           // as waitpid() stores it
    bool exited_normally = false;  // the child ended by exit
    int term_signal = 0;           // the signal that ended the child, 0 for none
    bool reaped = false;           // the loop need not wait for the child any more
    unsigned nfds = 0;             // pipes that are still open

private:
    static constexpr unsigned fd_count = 3;
    enum PipeEnd { parent_end = 0, child_end = 1 };

    void openPipes_();
    void installDispositions_();
    void restoreDispositions_() const;
    void doDad_();

    [[noreturn]] void doKid_() noexcept;
    void connectKid_();
    void execKid_();

    void passLoop_(SigMask& mask);
    int pollEntries_(const SigMask& mask);
    void serveEntries_();
    void dropEntry_(unsigned index);
    bool askForChild_(int wait_flags) noexcept;
    void collectChild_(int wait_flags);
    void closePipes_() noexcept;

    Connector* connectors[fd_count] = {};
    pollfd pollfds[fd_count] = {};
    Descriptor pipes[fd_count][2];
    Connector* slot_connectors[fd_count] = {};
    struct sigaction old_sigpipe = {};
    struct sigaction old_sigchld = {};
    Intrinsics intrinsics;

    bool missed_ = false;     // the kernel has said once that there is no such child
    bool collected_ = false;  // the child is gone, its status known as far as it can be
};

}  // namespace Kiln
