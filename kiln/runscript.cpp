#include "kiln/runscript.h"

#include <list>
#include <utility>
#include <vector>

#include "kiln/caller_exec.h"
#include "kiln/connector.h"
#include "kiln/environment.h"
#include "kiln/error.h"

int runscript(std::string command, std::string& out, std::string& err) {
    const std::list<std::string> arguments = {"-c", std::move(command)};
    Kiln::CtoDynaBuf out_buffer;
    Kiln::CtoDynaBuf err_buffer;
    std::vector<Kiln::Connector*> connectors = {nullptr, &out_buffer, &err_buffer};
    try {
        Kiln::CallerExec shell("sh", arguments, Kiln::current_environment(), {});
        shell.call(connectors);
        out = std::move(out_buffer.buffer);
        err = std::move(err_buffer.buffer);
        return shell.getStatus();
    } catch (const Kiln::Error& error) {
        out.clear();
        err = error.what();
        return -1;
    }
}
