# The Debian packages, one for each component of what is installed: libkestapi0, libkestapi-dev, kestapi-tools and
# kest-sandbox. scripts/package-linux makes them.
set(KEST_DEBIAN ${PROJECT_SOURCE_DIR}/cmake/debian)

# kest_compress(<file>): FILE.gz in the build folder, the same bytes every time.
function(kest_compress path)
  get_filename_component(file ${path} NAME)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${path})
  execute_process(COMMAND gzip -9nc ${path} OUTPUT_FILE ${CMAKE_BINARY_DIR}/${file}.gz COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# kest_package(<component> <name> SECTION <section> SUMMARY <line> TEXT <lines...> [DEPENDS <packages>] [HEADERS <packages...>]
# [DOCS <files...>] [PAGES <files...>]): HEADERS are the Debian packages whose headers are compiled into the programs of
# this one, PAGES its man pages of section 1.
macro(kest_package component name)
  cmake_parse_arguments(PACKAGE "" "SECTION;SUMMARY;DEPENDS" "TEXT;HEADERS;DOCS;PAGES" ${ARGN})
  string(TOUPPER ${component} upper)
  list(JOIN PACKAGE_TEXT "\n" text)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${PACKAGE_SECTION})
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${PACKAGE_SUMMARY}\n${text}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${PACKAGE_DEPENDS}")
  list(APPEND CPACK_COMPONENTS_ALL ${component})

  set(folder ${CMAKE_INSTALL_DATAROOTDIR}/doc/${name})
  install(FILES ${KEST_DEBIAN}/copyright ${CMAKE_BINARY_DIR}/changelog.gz DESTINATION ${folder} COMPONENT ${component})
  if(PACKAGE_DOCS)
    install(FILES ${PACKAGE_DOCS} DESTINATION ${folder} COMPONENT ${component})
  endif()
  foreach(page ${PACKAGE_PAGES})
    kest_compress(${page})
    get_filename_component(file ${page} NAME)
    install(FILES ${CMAKE_BINARY_DIR}/${file}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component})
  endforeach()
  foreach(package ${PACKAGE_HEADERS})
    install(FILES /usr/share/doc/${package}/copyright RENAME copyright.${package} DESTINATION ${folder} COMPONENT ${component})
  endforeach()
endmacro()

kest_compress(${KEST_DEBIAN}/changelog)

# The functions' man pages are made from theirs in docs/.
file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/functions/*.md)
add_custom_command(OUTPUT ${CMAKE_BINARY_DIR}/man.stamp
  COMMAND rm -rf ${CMAKE_BINARY_DIR}/man
  COMMAND ${PROJECT_SOURCE_DIR}/scripts/make-man ${CMAKE_BINARY_DIR}/man
  COMMAND gzip -9nr ${CMAKE_BINARY_DIR}/man
  COMMAND touch ${CMAKE_BINARY_DIR}/man.stamp
  DEPENDS ${pages} ${PROJECT_SOURCE_DIR}/scripts/make-man VERBATIM)
add_custom_target(kest_man DEPENDS ${CMAKE_BINARY_DIR}/man.stamp)
install(DIRECTORY ${CMAKE_BINARY_DIR}/man/ DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT development OPTIONAL)

kest_package(library libkestapi0
  SECTION libs
  SUMMARY "commerce client library that desktop applications sell with"
  TEXT
    "KESTAPI sells products on line from a desktop application: it fetches the"
    "list of products, charges a customer's card, fetches bills again and keeps"
    "receipts. Every call is one sealed request to a commerce server."
    "."
    "This package has the shared library.")
kest_package(development libkestapi-dev
  SECTION libdevel
  DEPENDS "libkestapi0 (= ${PROJECT_VERSION})"
  SUMMARY "commerce client library - files to compile programs with"
  TEXT
    "KESTAPI sells products on line from a desktop application."
    "."
    "This package has the header, and the files by which CMake and pkg-config"
    "find the library."
  DOCS ${PROJECT_SOURCE_DIR}/docs/exports.md)
kest_package(tools kestapi-tools
  SECTION utils
  DEPENDS "libkestapi0 (= ${PROJECT_VERSION})"
  SUMMARY "commerce client library - host on the command line"
  TEXT
    "KESTAPI sells products on line from a desktop application."
    "."
    "This package has kest, which shows products, buys, fetches bills and"
    "receipts, explains error codes and looks what is wrong with a server."
  HEADERS libcli11-dev nlohmann-json3-dev
  DOCS ${PROJECT_SOURCE_DIR}/docs/kest.md
  PAGES ${PROJECT_SOURCE_DIR}/tools/kest/kest.1)
kest_package(sandbox kest-sandbox
  SECTION devel
  SUMMARY "commerce server to develop and test against"
  TEXT
    "The server's half of the protocol that KESTAPI speaks: it sells from a"
    "catalogue, knows test cards, checks everything that a client owes and says"
    "in words what it refuses. It holds no real money."
  HEADERS libcli11-dev nlohmann-json3-dev libspdlog-dev libfmt-dev
  DOCS ${PROJECT_SOURCE_DIR}/docs/sandbox.md
  PAGES ${PROJECT_SOURCE_DIR}/sandbox/kest-sandbox.1)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "KESTAPI maintainers <maintainers@kestapi.invalid>")
set(CPACK_PACKAGE_NAME kestapi)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_SOURCE kestapi)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${KEST_DEBIAN}/triggers)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_STRIP_FILES ON)
# Whatever the umask of who makes them.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
include(CPack)
