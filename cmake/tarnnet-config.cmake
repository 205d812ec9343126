# What find_package(tarnnet) reads: the targets, and what the static one is linked with.
include(CMakeFindDependencyMacro)
set(THREADS_PREFER_PTHREAD_FLAG ON)
find_dependency(Threads)
include(${CMAKE_CURRENT_LIST_DIR}/tarnnet-targets.cmake)
