// What the tests of kiln share: a process of a test's own, what a process has open.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/in_child.h"

// For what changes the whole process; a failed expectation there fails the test.
template <class Body>
void in_own_process(const Body& body) {
    EXPECT_EQ(in_child([&body] { return body(), testing::Test::HasFailure() ? 1 : 0; }), 0);
}

// How many there are, with the one that is open to count them.
inline long open_descriptors() {
    using Entries = std::filesystem::directory_iterator;
    return std::distance(Entries("/proc/self/fd"), Entries());
}
