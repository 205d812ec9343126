#include "netinfo/record_state.h"

namespace tarnnet {

record_state netinfo;

}  // namespace tarnnet
