#pragma once
// The commands of exampledoc. Each returns the process exit code.

#include <ostream>

#include "options.hpp"

namespace exampledoc {

/** Lists the catalogues under the root, as text or JSON. */
int listCommand(const Options& options, std::ostream& out, std::ostream& err);

/** Shows one example in full, reading every property through the host's class system;
    1 if no example has the id. */
int showCommand(const Options& options, std::ostream& out, std::ostream& err);

/** Reads every catalogue of every locale (or of --locale) as the library does and reports each
    problem as text, JSON or SARIF; 1 on errors (or warnings under --strict), 0 otherwise. */
int checkCommand(const Options& options, std::ostream& out, std::ostream& err);

/** For each help folder and supported locale (or --locale), how many English example ids are
    localised, which are missing and which localised ids are orphans, as text or JSON; 0. */
int coverageCommand(const Options& options, std::ostream& out, std::ostream& err);

/** Prints the JSON Schema of the catalogue format, or of the JSON of list, check or coverage
    (--of); 0. */
int schemaCommand(const Options& options, std::ostream& out, std::ostream& err);

/** Writes the gallery of each locale (or of --locale) as HTML pages with an index into --out, with
    the thumbnails they show; 1 if a page cannot be written. */
int previewCommand(const Options& options, std::ostream& out, std::ostream& err);

} // namespace exampledoc
