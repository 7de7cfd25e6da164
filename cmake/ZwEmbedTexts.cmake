# Writes OUTPUT, a C++ source that defines exampledoc::embeddedSchemas(): each file of INPUTS
# (a list) by the name before its first dot, byte for byte as a raw string literal.
#   cmake -DOUTPUT=schemas.cpp "-DINPUTS=a.schema.json;b.schema.json" -P ZwEmbedTexts.cmake
cmake_minimum_required(VERSION 3.25)

set(delimiter "zw_text")
set(rows "")
foreach(input IN LISTS INPUTS)
  file(READ "${input}" text)
  if(text MATCHES "\\)${delimiter}\"")
    message(FATAL_ERROR "${input} holds the delimiter of the raw string: )${delimiter}\"")
  endif()
  get_filename_component(name "${input}" NAME)
  string(REGEX REPLACE "\\..*$" "" name "${name}")
  string(APPEND rows "    {\"${name}\", R\"${delimiter}(${text})${delimiter}\"},\n")
endforeach()

file(CONFIGURE OUTPUT "${OUTPUT}.new" @ONLY CONTENT [=[// Written by cmake/ZwEmbedTexts.cmake from the schema files; edit those instead.
#include "schema_command.hpp"

namespace exampledoc {

const std::vector<EmbeddedSchema>& embeddedSchemas() {
    static const std::vector<EmbeddedSchema> schemas = {
@rows@    };
    return schemas;
}

} // namespace exampledoc
]=])
# Rewritten only when it changes, so that an unchanged schema compiles nothing again.
file(COPY_FILE "${OUTPUT}.new" "${OUTPUT}" ONLY_IF_DIFFERENT)
file(REMOVE "${OUTPUT}.new")
