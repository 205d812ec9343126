// What a count is, one row each for the whole house: its name, what a person calls it, its unit,
// where the profile keeps it, and how it becomes what the container shall have.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "calc/host_profile.h"

// What one of a number is.
enum class Unit {
    thing,
    byte,
    kib,
    page_of_4_kib,   // whatever the system's pages are
    page_of_system,  // as large as the page size says
};

// What one of it is in bytes; 0 for a thing.
constexpr std::int64_t bytes_of(Unit unit, std::int32_t page_size) {
    switch (unit) {
        case Unit::byte:
            return 1;
        case Unit::kib:
            return 1024;
        case Unit::page_of_4_kib:
            return 4096;
        case Unit::page_of_system:
            return page_size;
        case Unit::thing:
            break;
    }
    return 0;
}

enum class Factor { none, memory, disk, two };

// What every container gets at least: before the factor, or behind it.
struct Floor {
    enum class Place { none, before_factor, behind_factor };
    Place place;
    std::int32_t value;
};

constexpr Floor no_floor = {Floor::Place::none, INT32_MIN};

constexpr Floor floor_before_factor(std::int32_t value) {
    return {Floor::Place::before_factor, value};
}

constexpr Floor floor_behind_factor(std::int32_t value) {
    return {Floor::Place::behind_factor, value};
}

using CountField = std::int32_t PhysParams::*;

// A row has every cell: the constructor has no defaults.
struct Count {
    constexpr Count(const char* its_name, const char* its_label, Unit its_unit,
                    const char* its_line, CountField its_field, Floor its_floor, Factor its_factor)
        : name(its_name),
          label(its_label),
          unit(its_unit),
          line(its_line),
          field(its_field),
          floor(its_floor),
          factor(its_factor) {}

    const char* name;   // the profile's
    const char* label;  // for a person
    Unit unit;
    const char* line;  // of the configuration, that it gives its size
    CountField field;  // null for the average, which is a float
    Floor floor;
    Factor factor;
};

// What every pass counts, in the order of a recording. The largest of each is kept.
inline constexpr Count sampled_counts[] = {
    {"numproc", "processes", Unit::thing, "NUMPROC", &PhysParams::numproc, floor_before_factor(240),
     Factor::memory},
    {"numtcpsock", "TCP sockets", Unit::thing, "NUMTCPSOCK", &PhysParams::numtcpsock,
     floor_before_factor(360), Factor::memory},
    {"numothersock", "other sockets", Unit::thing, "NUMOTHERSOCK", &PhysParams::numothersock,
     floor_before_factor(360), Factor::memory},
    {"numfile", "open files", Unit::thing, "NUMFILE", &PhysParams::numfile,
     floor_before_factor(9312), Factor::memory},
    // The floor after the scaling, unlike the other counts; that is the rule.
    {"privvmpages", "private memory", Unit::page_of_4_kib, "PRIVVMPAGES", &PhysParams::privvmpages,
     floor_behind_factor(65536), Factor::memory},
    {"lockedpages", "locked memory", Unit::page_of_4_kib, "LOCKEDPAGES", &PhysParams::lockedpages,
     floor_before_factor(256), Factor::memory},
    {"shmpages", "shared memory", Unit::page_of_system, "SHMPAGES", &PhysParams::shmpages,
     floor_before_factor(21504), Factor::memory},
    {"numflock", "file locks", Unit::thing, "NUMFLOCK", &PhysParams::numflock,
     floor_before_factor(188), Factor::memory},
    {"numiptent", "packet filter rules and routes", Unit::thing, "NUMIPTENT",
     &PhysParams::numiptent, floor_before_factor(128), Factor::memory},
    {"diskspace", "disk space in use", Unit::kib, "DISKSPACE", &PhysParams::diskspace, no_floor,
     Factor::disk},
    {"diskinodes", "inodes in use", Unit::thing, "DISKINODES", &PhysParams::diskinodes, no_floor,
     Factor::disk},
};

constexpr std::size_t sampled_count_number = std::size(sampled_counts);

// The running average of the processes.
inline constexpr Count average_count = {
    "avnumproc", "processes on average",   Unit::thing,   "AVNUMPROC",
    nullptr,     floor_behind_factor(180), Factor::memory};

// Never measured.
inline constexpr Count terminal_count = {"numpty",    "terminals",         Unit::thing,
                                         "NUMPTY",    &PhysParams::numpty, floor_before_factor(255),
                                         Factor::none};

// Where there are quotas at all: 0 stays 0.
inline constexpr Count quota_count = {
    "quotaugidlimit", "users and groups with quotas", Unit::thing,
    "QUOTAUGIDLIMIT", &PhysParams::quotaugidlimit,    floor_behind_factor(1024),
    Factor::two};

// The place of a field among the sampled counts; sampled_count_number for one that is none of them.
constexpr std::size_t place_of(CountField field) {
    std::size_t place = 0;
    while (place < sampled_count_number && sampled_counts[place].field != field) {
        ++place;
    }
    return place;
}

// The sampled count that the profile keeps there.
constexpr const Count& count_of(CountField field) {
    return sampled_counts[place_of(field)];
}
