# What is installed, and where. Three components, which the packages keep apart: program, library, development.

include(CMakePackageConfigHelpers)

set(docdir ${CMAKE_INSTALL_DATADIR}/doc/tarnhwcalc)
foreach(program tarnhwcalc tarnhwplan)
  if(TARGET ${program})
    install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR} COMPONENT program)
    install(FILES doc/${program}.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 COMPONENT program)
    install(FILES completions/${program}
      DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT program)
  endif()
endforeach()
install(FILES README.md LICENSE DESTINATION ${docdir} COMPONENT program)
install(FILES doc/report.png DESTINATION ${docdir}/doc COMPONENT program) # the README shows it
install(FILES examples/distdetect-common.sh DESTINATION ${docdir}/examples COMPONENT program)
install(PROGRAMS examples/with-detection DESTINATION ${docdir}/examples COMPONENT program)
if(TARGET tarnhwplan)
  install(FILES examples/systemd/tarnhwplan-record.service
    DESTINATION ${docdir}/examples/systemd COMPONENT program)
  install(DIRECTORY examples/prometheus DESTINATION ${docdir}/examples COMPONENT program)
  # Whoever records from here has results beside the playbooks.
  install(DIRECTORY examples/ansible DESTINATION ${docdir}/examples COMPONENT program
    FILES_MATCHING PATTERN "README.md" PATTERN "*.yml" PATTERN "*.ini" PATTERN "*.cfg" PATTERN "*.j2" PATTERN "*.sh"
    PATTERN results EXCLUDE)
endif()

install(TARGETS tarnnet_static tarnnet_shared EXPORT tarnnet
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES libtarnnet/include/tarnnet.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(FILES doc/tarnnet.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT development)

# find_package(tarnnet) gives tarnnet::tarnnet_shared and tarnnet::tarnnet_static.
set(packagedir ${CMAKE_INSTALL_LIBDIR}/cmake/tarnnet)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/tarnnet-config-version.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/tarnnet-config-version.cmake
  DESTINATION ${packagedir} COMPONENT development)
install(EXPORT tarnnet FILE tarnnet-targets.cmake NAMESPACE tarnnet::
  DESTINATION ${packagedir} COMPONENT development)
install(FILES cmake/tarnnet-config.cmake DESTINATION ${packagedir} COMPONENT development)

# The prefix in tarnnet.pc is given from the file's own place, so that an installed tree may be moved.
file(RELATIVE_PATH TARNNET_PC_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" TARNNET_PC_PREFIX "${TARNNET_PC_PREFIX}")
configure_file(cmake/tarnnet.pc.in ${CMAKE_BINARY_DIR}/tarnnet.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/tarnnet.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
