#include "kiln/caller.h"

namespace Kiln {

int CallerBase::enter(std::vector<Connector*>& /*connectors*/) {
    entered = true;
    return pid;
}

void CallerBase::leave() {
    entered = false;
}

void CallerBase::call(std::vector<Connector*>& connectors) {
    running = true;
    enter(connectors);
    prepareMainLoop_();
    doMainLoop_();
    finishMainLoop_();
    leave();
    running = false;
}

}  // namespace Kiln
