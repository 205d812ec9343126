#include "driver/options.h"

#include <getopt.h>

#include <cstdio>

#include "calc/arguments.h"

namespace {

// What parse_args returns.
constexpr int go_on = 0;
constexpr int nothing_to_do = 1;
constexpr int usage_error = -1;

// The two scale options have no short form.
constexpr int mem_scale_option = 'M';
constexpr int disk_scale_option = 'D';

// "?" is an option of its own, and also what the library returns for one that it does not know:
// both show the usage text.
constexpr const char* short_options = "?ht:p:d:vo:";

const option long_options[] = {
    {"help", no_argument, nullptr, 'h'},
    {"scan-time", required_argument, nullptr, 't'},
    {"scan-period", required_argument, nullptr, 'p'},
    {"mem-scale", required_argument, nullptr, mem_scale_option},
    {"disk-scale", required_argument, nullptr, disk_scale_option},
    {"dist-detect", required_argument, nullptr, 'd'},
    {"version", no_argument, nullptr, 'v'},
    {"out", required_argument, nullptr, 'o'},
    {nullptr, 0, nullptr, 0},
};

int set_span(const char* name, const char* arg, int* seconds) {
    if (parse_time(arg, seconds) == 0) {
        return go_on;
    }
    std::fprintf(stderr, "Bad time spec specified for --%s: %s\n", name, arg);
    return usage_error;
}

int set_scale(const char* name, const char* arg, float* scale) {
    switch (parse_scale(arg, scale)) {
        case ScaleError::none:
            return go_on;
        case ScaleError::not_a_number:
            std::fprintf(stderr, "Not a numeric value for --%s: %s\n", name, arg);
            break;
        case ScaleError::not_positive:
            std::fprintf(stderr, "--%s must be positive: %s\n", name, arg);
            break;
    }
    return usage_error;
}

// A repeated option replaces what the earlier one set; the first that fails ends the parsing.
int apply_option(int code, const char* arg, const char* progname, TarnHWCalc* calc,
                 std::string& out_path) {
    switch (code) {
        case 't':
            return set_span("scan-time", arg, &calc->scan_time);
        case 'p':
            return set_span("scan-period", arg, &calc->scan_period);
        case mem_scale_option:
            return set_scale("mem-scale", arg, &calc->mem_scale);
        case disk_scale_option:
            return set_scale("disk-scale", arg, &calc->disk_scale);
        case 'd':
            return go_on;  // accepted and ignored: detection keeps its default script
        case 'v':
            print_version();
            return nothing_to_do;
        case 'o':
            out_path = arg;
            return go_on;
        default:
            // Help, but also an unknown option or a missing argument: the status is lenient.
            print_usage(progname);
            return nothing_to_do;
    }
}

// The checks that need the whole command line.
int check_settings(const TarnHWCalc& calc) {
    if (calc.scan_period == 0 && calc.scan_time > 0) {
        std::fputs("--scan-period is 0 while --scan-time is not\n", stderr);
        return usage_error;
    }
    // Not alike: 0 is refused for the memory scale alone; that is the rule.
    if (0 >= calc.mem_scale || 0 > calc.disk_scale) {
        std::fputs("--mem-scale and --disk-scale must be positive\n", stderr);
        return usage_error;
    }
    return go_on;
}

}  // namespace

int parse_args(int argc, char** argv, TarnHWCalc* calc, std::string& out_path) {
    const char* progname = argc > 0 ? argv[0] : "tarnhwcalc";
    optind = 0;  // a fresh start for every command line, not only the first
    for (;;) {
        const int code = getopt_long(argc, argv, short_options, long_options, nullptr);
        if (code == -1) {
            break;
        }
        const int result = apply_option(code, optarg, progname, calc, out_path);
        if (result != go_on) {
            return result;
        }
    }
    if (optind != argc) {
        std::fputs("No extra arguments allowed\n", stderr);
        print_usage(progname);
        return usage_error;
    }
    return check_settings(*calc);
}

// The spelling and the default file name are the text's own.
void print_usage(const char* progname) {
    std::fprintf(stderr,
                 "\nUsage: %s [options]\n\n"
                 "    -h | -?, --help     print this text\n"
                 "    -v, --version       print version\n"
                 "    -o, --out           resulting VPS config file path\n"
                 "                        'vps.conf' by default\n"
                 "    -t, --scan-time     how long to scan for parameters\n"
                 "                        ([DDd][HHh][MMm][SSs], e.g. 1h30m)\n"
                 "    -p, --scan-period   time interval between scans\n"
                 "                        ([DDd] [HHh] [MMm] [SSs])\n"
                 "    --mem-scale         memory consumption enlagement factor\n"
                 "    --disk-scale        disk consumption enlagement factor\n"
                 "    -d, --dist-detect   path to distribution detection script\n",
                 progname);
}

void print_version() {
    std::printf("Corvane hardware configuration calculator v. %s\n", TARN_VERSION);
}
