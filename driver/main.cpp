// The entry of tarnhwcalc: parse, measure, compute, write, list.
#include <unistd.h>

#include <exception>
#include <string>

#include "calc/env_config.h"
#include "calc/host_profile.h"
#include "calc/progress_line.h"
#include "calc/tarn_hwcalc.h"
#include "driver/options.h"
#include "driver/output.h"
#include "kiln/log.h"
#include "kiln/process_setup.h"

namespace {

int run(int argc, char** argv) {
    std::string out_path;
    TarnHWCalc calc;
    const int parsed = parse_args(argc, argv, &calc, out_path);
    if (parsed != 0) {
        return parsed > 0 ? 0 : 1;
    }
    // One pass is over before a line could tell anything.
    ProgressLine progress_line(STDERR_FILENO);
    if (calc.scan_time > 0 && isatty(STDERR_FILENO) == 1) {
        calc.scan_observer = &progress_line;
    }

    PhysParams profile;
    EnvConfig config;
    int code = calc.calcPhysParams(&profile);
    if (code == 0) {
        code = calc.calcVPSConf(profile, config);
    }
    if (code != 0) {
        return code;  // without a word; the calculator keeps its text to itself
    }
    if (write_configuration(out_path, config.text()) != 0) {
        return 0;  // reported already; the status is lenient
    }
    list_notes(profile.notes);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    prepare_process();
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {  // out of memory
        return err(1, 0, "%s", error.what());
    }
}
