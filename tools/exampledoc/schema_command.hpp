#pragma once
// The JSON Schemas of the catalogue format and of the tool's JSON outputs, built into the tool
// from the files of tools/exampledoc/schemas, which are installed beside it.

#include <string>
#include <string_view>
#include <vector>

namespace exampledoc {

/** One schema: its name ("catalogue", "list", "check", "coverage") and its text, byte for byte
    the installed file NAME.schema.json. */
struct EmbeddedSchema {
    std::string_view name;
    std::string_view text;
};

/** Every schema built into the tool, the catalogue's first. */
const std::vector<EmbeddedSchema>& embeddedSchemas();

/** The names of the embedded schemas, in the order of embeddedSchemas(). */
std::vector<std::string> schemaNames();

} // namespace exampledoc
