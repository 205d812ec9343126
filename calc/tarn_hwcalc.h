// TarnHWCalc: the calculator. It holds the settings of a run and its last error text, and has every
// step of the calculation as a member: each calls the function that does the work, stores what it
// found in the profile and turns the reason of a failure into a code.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "calc/config_scales.h"
#include "calc/env_config.h"
#include "calc/host_profile.h"
#include "calc/scan_clock.h"
#include "inspect/host.h"

class ScanObserver;

class TarnHWCalc {
public:
    using PhysParams = ::PhysParams;
    using NSAttrs = ::NSAttrs;

    // What a failing step returns; it becomes the exit status of the program.
    enum ec_t : int {
        ERR_NETCONF = 1,  // the network interfaces could not be listed
        ERR_EXEC = 2,     // a sampling command failed
        ERR_PROC = 3,     // the process directory could not be read
        ERR_MTAB = 4,     // the mount table could not be read
    };

    using Warnings = std::vector<TarnACalculateHWNodeWarning>;
    using Excludes = std::vector<TarnAExcludePath>;

    // Settings, written by the option parser.
    std::int32_t scan_time = 0;    // seconds to keep sampling
    std::int32_t scan_period = 0;  // seconds between two passes
    float mem_scale = ConfigScales().memory;
    float disk_scale = ConfigScales().disk;
    std::vector<std::string> dist_detect_scripts;  // tried before the default script

    // The text of the last error; nothing prints it.
    char error_text[4096] = "";

    // What the steps read, and the time that a scan goes by. These members stand behind the six
    // above, whose order is fixed.
    Host host;
    Clock clock;

    // Told how a scan goes on; null for nobody. Not owned, must outlive the run.
    ScanObserver* scan_observer = nullptr;

    // Stage 1: fills the profile in a fixed order. Returns 0, or the ec_t of the first step that
    // failed; the profile then keeps what the steps before it had stored.
    int calcPhysParams(PhysParams* params);

    // Stage 2: appends the configuration that can carry what `params` holds. Always returns 0.
    int calcVPSConf(const PhysParams& params, EnvConfig& config) const;

    // The steps of stage 1, in their order. Those that return an int return 0 or an ec_t.
    int calcProcParams(PhysParams* params);
    int calcQuotaUGIDLimit(PhysParams* params);
    int getNetIfaces(Warnings& warnings, NetIfaceList& ifaces);
    std::string getDistribution(Warnings& warnings) const;
    NSAttrs getNSAttrs(Warnings& warnings) const;
    Excludes calcExcludes(PhysParams* params, Warnings& warnings) const;

    // One snapshot of the memory of all processes: raises privvmpages and lockedpages of the
    // profile. Returns 0 or an ec_t; on failure the profile is unchanged.
    // Part of the interface; nothing in this project calls it.
    int calcMemInfoByVmSize(PhysParams* params);

    // Returns an empty list. Part of the interface; nothing in this project calls it.
    Excludes compressExcludes(const Excludes& excludes) const;

    // Dumps the profile to standard output, for debugging.
    // Part of the interface; nothing in this project calls it.
    void printPhysParams(const PhysParams& params) const;

    // Raises `counter` to `value` if it is lower; signed comparison.
    // Part of the interface; nothing in this project calls it.
    static void set_max(std::int32_t& counter, std::int32_t value);

    // `value` truncated toward zero, kept within 32 signed bits: 2147483647 from 2^31 up,
    // -2147483648 for a NaN or anything too low. The name is not used: nothing is reported.
    // Part of the interface; nothing in this project calls it.
    static int check_overflow_parameter(const char* name, float value);

    // Formats the error text (cut to the buffer) and returns the code. Writes to no stream.
    int setError(ec_t code, const char* format, ...) __attribute__((format(printf, 3, 4)));
};
