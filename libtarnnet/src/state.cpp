#include "state.h"

namespace tarnnet {

library_state state;

}  // namespace tarnnet
