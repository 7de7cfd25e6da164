# Builds and runs the consumer project of examples/consumer against this project.
#   MODE=install       installs the build tree into WORK_DIR/prefix, then uses the package through
#                      find_package and through pkg-config, and runs the installed tool
#   MODE=subdirectory  builds the consumer with the project's sources through add_subdirectory
# Other variables: SOURCE_DIR, BUILD_DIR, WORK_DIR, GENERATOR, CXX_COMPILER, CXX_FLAGS,
# BUILD_TYPE, LIBDIR, BINDIR, DATADIR, PKG_CONFIG (may be empty), TOOL (ON if the tool is built).
cmake_minimum_required(VERSION 3.25)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}\nexited with ${status}:\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

# Runs every program built from the README's C++ blocks.
function(run_readme_programs)
  file(READ "${WORK_DIR}/build/readme_programs.txt" programs)
  foreach(program IN LISTS programs)
    run("${WORK_DIR}/build/${program}")
  endforeach()
  message(STATUS "README programs: ${programs}")
endfunction()

# Nothing lands outside the folders a package of this project may use.
function(check_installed_folders)
  file(GLOB_RECURSE installed LIST_DIRECTORIES false RELATIVE "${prefix}" "${prefix}/*")
  list(FILTER installed EXCLUDE REGEX
    "^(${BINDIR}|${LIBDIR}|include/exampledocparser|share/man/man1|share/bash-completion/completions|${DATADIR}/exampledocparser)/")
  if(installed)
    list(JOIN installed "\n  " installed)
    message(FATAL_ERROR "installed outside the package's folders:\n  ${installed}")
  endif()
endfunction()

# The default documentation root must come from the sample tree, never from the environment.
unset(ENV{ZW_DOC_ROOT})
file(REMOVE_RECURSE "${WORK_DIR}")

set(configure_args -G "${GENERATOR}" "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}"
  "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}" "-DCMAKE_BUILD_TYPE=${BUILD_TYPE}")

if(MODE STREQUAL "install")
  set(prefix "${WORK_DIR}/prefix")
  set(docroot "${prefix}/${DATADIR}/exampledocparser/docroot")
  run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${prefix}")

  run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}/examples/consumer" -B "${WORK_DIR}/build" ${configure_args}
    "-DCMAKE_PREFIX_PATH=${prefix}")
  run("${CMAKE_COMMAND}" --build "${WORK_DIR}/build" --parallel 2)
  run("${WORK_DIR}/build/consumer" "${docroot}")
  message(STATUS "find_package: ${output}")
  run_readme_programs()
  check_installed_folders()

  if(TOOL)
    run("${prefix}/${BINDIR}/exampledoc" list)
    if(NOT output MATCHES "${docroot}")
      message(FATAL_ERROR "the installed tool does not read the installed sample tree:\n${output}")
    endif()
    # What 'exampledoc schema' prints is the installed file, byte for byte.
    foreach(schema IN ITEMS catalogue list check coverage)
      execute_process(COMMAND "${prefix}/${BINDIR}/exampledoc" schema --of ${schema}
        OUTPUT_FILE "${WORK_DIR}/${schema}.printed" COMMAND_ERROR_IS_FATAL ANY)
      run("${CMAKE_COMMAND}" -E compare_files "${WORK_DIR}/${schema}.printed"
        "${prefix}/${DATADIR}/exampledocparser/${schema}.schema.json")
    endforeach()
  endif()

  if(PKG_CONFIG)
    set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig")
    run("${PKG_CONFIG}" --cflags --libs exampledocparser)
    separate_arguments(flags UNIX_COMMAND "${output} ${CXX_FLAGS}")
    run("${PKG_CONFIG}" --variable=sampledocroot exampledocparser)
    string(STRIP "${output}" pc_docroot)
    run("${CXX_COMPILER}" -std=c++20 -o "${WORK_DIR}/pkgconfig-consumer"
      "${SOURCE_DIR}/examples/consumer/main.cpp" ${flags} "-Wl,-rpath,${prefix}/${LIBDIR}")
    run("${WORK_DIR}/pkgconfig-consumer" "${pc_docroot}")
    message(STATUS "pkg-config: ${output}")
  endif()
elseif(MODE STREQUAL "subdirectory")
  run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}/examples/consumer" -B "${WORK_DIR}/build" ${configure_args}
    "-DEXAMPLEDOCPARSER_SOURCE_DIR=${SOURCE_DIR}")
  run("${CMAKE_COMMAND}" --build "${WORK_DIR}/build" --parallel 2)
  run("${WORK_DIR}/build/consumer" "${SOURCE_DIR}/examples/docroot")
  message(STATUS "add_subdirectory: ${output}")
  run_readme_programs()
else()
  message(FATAL_ERROR "MODE must be install or subdirectory, not '${MODE}'")
endif()
file(REMOVE_RECURSE "${WORK_DIR}")
