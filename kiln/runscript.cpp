#include "kiln/runscript.h"

#include <utility>
#include <vector>

#include "kiln/caller_exec.h"
#include "kiln/connector.h"
#include "kiln/environment.h"
#include "kiln/error.h"

int runscript(std::string command, std::string& out, std::string& err) {
    Kiln::CtoDynaBuf out_buffer;
    Kiln::CtoDynaBuf err_buffer;
    std::vector<Kiln::Connector*> connectors = {nullptr, &out_buffer, &err_buffer};
    Kiln::CallerExec shell("sh", {"-c", std::move(command)}, Kiln::current_environment(), {});
    try {
        shell.call(connectors);
    } catch (const Kiln::Error& error) {
        out.clear();  // what has come until then is not the whole
        err = error.what();
        return -1;
    }
    out = std::move(out_buffer.buffer);
    err = std::move(err_buffer.buffer);
    return shell.getStatus();
}
