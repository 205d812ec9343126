# What every target of this project shares: warnings, floating-point rules, sanitizers, protections.

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

if(TARN_HARDEN)
  include(CheckCXXCompilerFlag)
  include(CheckCXXSourceCompiles)
  check_cxx_source_compiles("
    #if !__has_builtin(__builtin_dynamic_object_size)
    #error
    #endif
    int main() {}" TARN_HAS_FORTIFY_3)
  # No file tells where it was built, either: the same sources give the same bytes in any folder.
  target_compile_options(tarn_options INTERFACE
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}/= -fstack-protector-strong
    -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=$<IF:$<BOOL:${TARN_HAS_FORTIFY_3}>,3,2> -D_GLIBCXX_ASSERTIONS)
  # Each where the processor and the compiler have it. What restricts jumps and returns marks every object of ours; a
  # whole program gets the mark only where the C library's start files have it too, and Debian's have not.
  foreach(flag -fstack-clash-protection -fcf-protection -mbranch-protection=standard)
    string(MAKE_C_IDENTIFIER "TARN_HAS${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    target_compile_options(tarn_options INTERFACE $<$<BOOL:${${known}}>:${flag}>)
  endforeach()
  target_link_options(tarn_options INTERFACE LINKER:-z,relro,-z,now,-z,noexecstack)
endif()
if(TARN_STATIC)
  target_compile_options(tarn_options INTERFACE -ffunction-sections -fdata-sections)
endif()

# tarn_program(NAME SOURCES...): a program that is installed; "programs" builds them all.
add_custom_target(programs)
function(tarn_program name)
  add_executable(${name} ${ARGN})
  add_dependencies(programs ${name})
  target_link_libraries(${name} PRIVATE tarn_options)
  if(TARN_STATIC)
    target_link_options(${name} PRIVATE -static-pie LINKER:--gc-sections)
  elseif(NOT TARN_SANITIZE)
    # The C++ library goes along: the server's own may be older, and with fewer libraries mapped each fork for a command
    # has less to copy, which a whole run notices. Its unused parts, and the compiler's library if it came along too,
    # would ask for a newer C library than the program does.
    target_link_options(${name} PRIVATE -pie -static-libstdc++ LINKER:--gc-sections)
  endif()
endfunction()

# tarn_test(NAME SOURCES a.cpp ... LIBS x ...): one GoogleTest program, each of its cases known to ctest. The prefix
# tells the same case of several builds apart.
set(TARN_TEST_PREFIX "" CACHE STRING "Put before every test's name")
function(tarn_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE tarn_options ${ARG_LIBS} GTest::gtest GTest::gtest_main)
  target_compile_options(${name} PRIVATE $<$<CONFIG:RelWithDebInfo>:-O0>) # what is tested is optimised, not the test
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 TEST_PREFIX "${TARN_TEST_PREFIX}" PROPERTIES TIMEOUT 300)
endfunction()

# tarn_script_test(NAME SECONDS LABEL COMMAND...): a test that is a command, has this long, and may skip itself.
function(tarn_script_test name seconds label)
  add_test(NAME ${TARN_TEST_PREFIX}${name} COMMAND ${ARGN})
  set_tests_properties(${TARN_TEST_PREFIX}${name} PROPERTIES
    TIMEOUT ${seconds} LABELS "${label}" SKIP_RETURN_CODE 77)
endfunction()
