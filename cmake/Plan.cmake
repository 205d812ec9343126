# The companion program needs headers that an older system may lack: it is left out there, aloud (script/build passes
# the line on).

option(TARN_PLAN "Build the companion tarnhwplan" ON)
if(TARN_PLAN)
  find_package(CLI11 2.1 CONFIG QUIET)
  find_package(nlohmann_json 3.10 CONFIG QUIET)
  if(CLI11_FOUND AND nlohmann_json_FOUND)
    add_subdirectory(plan)
  else()
    message(STATUS "tarnhwplan is left out: it needs CLI11 2.1 and nlohmann-json 3.10 "
      "(Debian: libcli11-dev, nlohmann-json3-dev)")
    set(TARN_PLAN OFF)
  endif()
endif()
