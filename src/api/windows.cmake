# What the library is on Windows only: exports by ordinal, a version resource, symbols in a file of their own.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(exports ${CMAKE_CURRENT_SOURCE_DIR}/exports.def)
else()
  # Only 32-bit names are decorated with the size of their arguments.
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS exports.def)
  file(READ exports.def definition)
  string(REGEX REPLACE "@[0-9]+ @" " @" definition "${definition}")
  set(exports ${CMAKE_CURRENT_BINARY_DIR}/exports.def)
  file(CONFIGURE OUTPUT ${exports} CONTENT "${definition}")
endif()
configure_file(version.rc.in version.rc @ONLY)
target_sources(kestapi PRIVATE ${exports} ${CMAKE_CURRENT_BINARY_DIR}/version.rc)
set_target_properties(kestapi PROPERTIES PREFIX "" OUTPUT_NAME KESTAPI SUFFIX .DLL LINK_DEPENDS ${exports})
target_link_options(kestapi PRIVATE -Wl,--gc-sections -Wl,--enable-stdcall-fixup)

if(KEST_SYMBOLS)
  target_compile_options(kestapi PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-g>)
  # The map says what of the compiler's libraries is in the DLL.
  target_link_options(kestapi PRIVATE -Wl,-Map=${CMAKE_BINARY_DIR}/KESTAPI.map)
  # Without --preserve-dates objcopy writes the present time into the headers.
  add_custom_command(TARGET kestapi POST_BUILD
    COMMAND ${CMAKE_OBJCOPY} --preserve-dates --only-keep-debug KESTAPI.DLL KESTAPI.debug
    COMMAND ${CMAKE_OBJCOPY} --preserve-dates --strip-all --add-gnu-debuglink=KESTAPI.debug KESTAPI.DLL
    BYPRODUCTS ${CMAKE_BINARY_DIR}/KESTAPI.debug ${CMAKE_BINARY_DIR}/KESTAPI.map
    WORKING_DIRECTORY ${CMAKE_BINARY_DIR} VERBATIM)
else()
  target_link_options(kestapi PRIVATE -s)
endif()
