# What every target of this project shares: warnings, floating-point rules, sanitizers.

add_library(tarn_options INTERFACE)

# The numbers must not depend on the compiler or the processor: no fused multiply-add anywhere.
target_compile_options(tarn_options INTERFACE
  -ffp-contract=off
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wformat=2 -Wundef
  -Wcast-align -Wcast-qual -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual -Wvla)

# The warnings above that mean nothing to a C compiler are dropped for C sources.
add_library(tarn_c_options INTERFACE)
target_compile_options(tarn_c_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)

foreach(options tarn_options tarn_c_options)
  if(TARN_WERROR)
    target_compile_options(${options} INTERFACE -Werror)
  endif()
  if(TARN_SANITIZE)
    target_compile_options(${options} INTERFACE
      -fsanitize=${TARN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${options} INTERFACE -fsanitize=${TARN_SANITIZE})
  endif()
  if(TARN_FUZZ)
    # Everything tells the fuzzer where it went; only the fuzz targets link it.
    target_compile_options(${options} INTERFACE -fsanitize=fuzzer-no-link)
    target_link_options(${options} INTERFACE -fsanitize=fuzzer-no-link)
  endif()
endforeach()

# tarn_test(NAME SOURCES a.cpp ... LIBS x ...): one GoogleTest program, each of its cases known to ctest. The prefix
# tells the same case of several builds apart.
set(TARN_TEST_PREFIX "" CACHE STRING "Put before every test's name")
function(tarn_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE tarn_options ${ARG_LIBS} GTest::gtest GTest::gtest_main)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 TEST_PREFIX "${TARN_TEST_PREFIX}" PROPERTIES TIMEOUT 300)
endfunction()
