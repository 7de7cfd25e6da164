#include "schema_command.hpp"

#include <algorithm>

#include "commands.hpp"

namespace exampledoc {

std::vector<std::string> schemaNames() {
    std::vector<std::string> names;
    for (const EmbeddedSchema& schema : embeddedSchemas()) {
        names.emplace_back(schema.name);
    }
    return names;
}

int schemaCommand(const Options& options, std::ostream& out, std::ostream& /*err*/) {
    const auto& schemas = embeddedSchemas();
    const auto schema = std::find_if(schemas.begin(), schemas.end(), [&](const EmbeddedSchema& candidate) {
        return candidate.name == options.of;
    });
    if (schema == schemas.end()) {
        throw UsageError("no schema of \"" + options.of + "\"");
    }
    out << schema->text;
    return 0;
}

} // namespace exampledoc
