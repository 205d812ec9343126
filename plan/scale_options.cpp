// The options of the two factors, which several commands have.
#include "plan/commands.h"

void add_scale_options(CLI::App& app, ScaleOptions& options) {
    app.add_option("--mem-scale", options.memory, "Factor for counts and memory, 1.2");
    app.add_option("--disk-scale", options.disk, "Factor for the disk, 1.5");
}
