// CallerBase: the order of the steps by which a program is called. CallerExec gives them their
// bodies.
#pragma once

#include <sys/types.h>

#include <list>
#include <string>
#include <vector>

#include "kiln/connector.h"

namespace Kiln {

class CallerBase {
public:
    // The arguments do not include the program's name; the environment is the whole environment of
    // the child, as NAME=value strings.
    CallerBase(const char* program_name, const std::list<std::string>& arguments,
               const std::list<std::string>& environment)
        : program(program_name), args(arguments), env(environment) {}

    CallerBase(const CallerBase&) = delete;
    CallerBase& operator=(const CallerBase&) = delete;

    // Starts the child and returns its process id.
    virtual int enter(std::vector<Connector*>& connectors);

    virtual void leave();

    // Runs the whole call. `connectors` has at least three entries, for the child's descriptors 0,
    // 1 and 2; a null one means that the child finds that descriptor closed. The connectors stay
    // the caller's. An exception from a step leaves the remaining steps undone.
    virtual void call(std::vector<Connector*>& connectors);

    virtual ~CallerBase() = default;

    // After a call: the exit status of the child, or -1 when it did not exit by itself.
    int getStatus() const { return status; }

protected:
    virtual void prepareMainLoop_() = 0;
    virtual void doMainLoop_() = 0;
    virtual void finishMainLoop_() = 0;

    std::string program;
    std::list<std::string> args;
    std::list<std::string> env;
    pid_t pid = 0;
    int status = 0;
    bool running = false;  // inside call()
    bool entered = false;  // between enter() and leave()
};

}  // namespace Kiln
