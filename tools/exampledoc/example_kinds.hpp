#pragma once
// The kinds of example as the library's table of them lists them, for options and suggestions.

#include <string>
#include <string_view>
#include <vector>

namespace exampledoc {

/** Each kind as a catalogue writes it ("Live Script"), in the order of the kinds' values. */
std::vector<std::string_view> catalogueKindForms();

/** Each kind's name ("Live_Script"), in the order of the kinds' values. */
std::vector<std::string> kindNames();

} // namespace exampledoc
