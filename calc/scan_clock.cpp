#include "calc/scan_clock.h"

#include <algorithm>
#include <ctime>

std::int64_t system_seconds() {
    return static_cast<std::int64_t>(std::time(nullptr));
}

ScanSchedule make_schedule(std::int64_t start, std::int32_t scan_time, std::int32_t scan_period) {
    return {start + scan_time, std::min(scan_time, scan_period), scan_time == 0};
}

std::int32_t next_sleep(ScanSchedule& schedule, std::int64_t now) {
    if (schedule.one_pass || now >= schedule.end_time) {
        return -1;
    }
    if (schedule.interval + now > schedule.end_time) {
        schedule.interval = static_cast<std::int32_t>(schedule.end_time - now);
    }
    return std::max(schedule.interval, 0);  // a negative period is none
}
