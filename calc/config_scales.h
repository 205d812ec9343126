// The two factors that a run may be given, and what they are when it is not.
#pragma once

struct ConfigScales {
    float memory = 1.2F;  // for counts and memory
    float disk = 1.5F;
};
