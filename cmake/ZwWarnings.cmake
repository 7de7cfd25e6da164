# Warnings every target of the project is built with.
add_library(zw_warnings INTERFACE)
target_compile_options(zw_warnings INTERFACE -Wall -Wextra -Wpedantic)
# g++ 12 reports moves of short strings as uses of uninitialised memory once they are inlined
# deeply enough; the sanitizer builds cover what this warning would find.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(zw_warnings INTERFACE -Wno-maybe-uninitialized)
endif()
if(ZW_WARNINGS_AS_ERRORS)
  target_compile_options(zw_warnings INTERFACE -Werror)
endif()

# Adds a shared library of the host platform: sources, public headers under host/include.
# zwhost_<service> is known to users of the package as ExampleDocParser::host_<service>.
function(zw_add_host_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  add_library(${name} SHARED ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/host/include>
    $<INSTALL_INTERFACE:${ZW_INSTALL_INCLUDEDIR}>)
  target_compile_features(${name} PUBLIC cxx_std_20)
  target_link_libraries(${name} PUBLIC ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE_DEPENDS} zw_warnings)
  string(REGEX REPLACE "^zwhost_" "host_" export_name ${name})
  add_library(ExampleDocParser::${export_name} ALIAS ${name})
  set_property(GLOBAL APPEND PROPERTY ZW_HOST_LIBRARIES ${name})
  set_target_properties(${name} PROPERTIES
    EXPORT_NAME ${export_name}
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    INSTALL_RPATH "$ORIGIN")
endfunction()
