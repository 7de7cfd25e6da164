# Install rules and the package that other projects find: the library, the host platform's
# libraries, the public headers, the tool with its manual page and completion, the licence, the
# JSON Schemas and the sample documentation tree.
include(CMakePackageConfigHelpers)

set(ZW_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/ExampleDocParser")
get_property(zw_host_libraries GLOBAL PROPERTY ZW_HOST_LIBRARIES)

install(TARGETS docparser ${zw_host_libraries}
  EXPORT ExampleDocParserTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
if(ZW_BUILD_TOOLS)
  install(TARGETS exampledoc RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
  install(FILES "${PROJECT_SOURCE_DIR}/tools/exampledoc/exampledoc.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
  install(FILES "${PROJECT_BINARY_DIR}/tools/exampledoc.bash"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" RENAME exampledoc)
endif()

install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/" "${PROJECT_SOURCE_DIR}/host/include/"
  DESTINATION "${ZW_INSTALL_INCLUDEDIR}"
  FILES_MATCHING PATTERN "*.hpp")
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION "${CMAKE_INSTALL_DATADIR}/exampledocparser")
# The schemas of the catalogue format and of the tool's JSON, for editors and scripts: the very
# files that the tool's 'schema' command prints.
install(DIRECTORY "${PROJECT_SOURCE_DIR}/tools/exampledoc/schemas/"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/exampledocparser"
  FILES_MATCHING PATTERN "*.schema.json")
install(DIRECTORY "${ZW_SAMPLE_DOCROOT}/"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/${ZW_SAMPLE_DOCROOT_INSTALL_DIR}")

install(EXPORT ExampleDocParserTargets
  NAMESPACE ExampleDocParser::
  DESTINATION "${ZW_PACKAGE_DIR}")

set(ZW_SAMPLE_DOCROOT_INSTALL_PATH "${CMAKE_INSTALL_DATADIR}/${ZW_SAMPLE_DOCROOT_INSTALL_DIR}")
configure_package_config_file(
  "${CMAKE_CURRENT_LIST_DIR}/ExampleDocParserConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/ExampleDocParserConfig.cmake"
  INSTALL_DESTINATION "${ZW_PACKAGE_DIR}"
  PATH_VARS ZW_SAMPLE_DOCROOT_INSTALL_PATH)
write_basic_package_version_file(
  "${PROJECT_BINARY_DIR}/ExampleDocParserConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/ExampleDocParserConfig.cmake"
  "${PROJECT_BINARY_DIR}/ExampleDocParserConfigVersion.cmake"
  DESTINATION "${ZW_PACKAGE_DIR}")

# pkg-config: the prefix is found from the file's own place, so an installed tree can move.
file(RELATIVE_PATH zw_pkgconfig_to_prefix "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" zw_pkgconfig_to_prefix "${zw_pkgconfig_to_prefix}")
list(TRANSFORM zw_host_libraries PREPEND "-l" OUTPUT_VARIABLE zw_host_library_flags)
list(JOIN zw_host_library_flags " " ZW_PKGCONFIG_HOST_LIBS)
configure_file("${CMAKE_CURRENT_LIST_DIR}/exampledocparser.pc.in"
  "${PROJECT_BINARY_DIR}/exampledocparser.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/exampledocparser.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
