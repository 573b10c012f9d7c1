# What is installed, in four components: the library that programs run with, what they are compiled with, the command-line
# host, the server for development.

# kest_install_library(<target>): the library, its header, its CMake package and its pkg-config file. None of the files
# names the folder that it was installed into, so that the whole can be moved.
function(kest_install_library target)
  install(TARGETS ${target} EXPORT kestapi
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(FILES ${PROJECT_SOURCE_DIR}/include/kestapi.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

  set(package ${CMAKE_INSTALL_LIBDIR}/cmake/kestapi)
  install(EXPORT kestapi NAMESPACE kestapi:: FILE kestapi-config.cmake DESTINATION ${package} COMPONENT development)
  write_basic_package_version_file(${CMAKE_BINARY_DIR}/kestapi-config-version.cmake COMPATIBILITY SameMinorVersion)
  install(FILES ${CMAKE_BINARY_DIR}/kestapi-config-version.cmake DESTINATION ${package} COMPONENT development)

  file(RELATIVE_PATH KEST_PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" KEST_PREFIX_FROM_PC ${KEST_PREFIX_FROM_PC})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/kestapi.pc.in ${CMAKE_BINARY_DIR}/kestapi.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/kestapi.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()
