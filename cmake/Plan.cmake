# The companion program needs headers and a script that an older system may lack: it is left out there, aloud.

option(TARN_PLAN "Build the companion tarnhwplan" ON)

# leave_out_plan(REASON): script/build passes the line on.
function(leave_out_plan reason)
  message(STATUS "tarnhwplan is left out: ${reason}")
  set(TARN_PLAN OFF PARENT_SCOPE)
endfunction()

if(TARN_PLAN AND EXISTS ${PROJECT_SOURCE_DIR}/plan/CMakeLists.txt)
  find_package(CLI11 2.1 CONFIG QUIET)
  find_package(nlohmann_json 3.10 CONFIG QUIET)
  find_file(TARN_CHART_JS chart.js PATHS /usr/share/javascript/chart.js NO_DEFAULT_PATH)
  set(chart_version "")
  if(TARN_CHART_JS)
    file(STRINGS ${TARN_CHART_JS} chart_version REGEX "Chart\\.js v[34]\\." LIMIT_COUNT 1)
  endif()
  if(NOT CLI11_FOUND)
    leave_out_plan("no CLI11 2.1 or newer (Debian: libcli11-dev)")
  elseif(NOT nlohmann_json_FOUND)
    leave_out_plan("no JSON for Modern C++ 3.10 or newer (Debian: nlohmann-json3-dev)")
  elseif(NOT chart_version)
    leave_out_plan("no Chart.js 3 or 4 (Debian: libjs-chart.js)")
  else()
    add_subdirectory(plan)
  endif()
endif()
