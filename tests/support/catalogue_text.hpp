#pragma once
// Catalogue texts for tests.

#include <string>
#include <utility>
#include <vector>

namespace zwtest {

/** One entry: component "c", the given name, the given title. */
struct Entry {
    std::string name;
    std::string title;
};

/** A catalogue of `entries` for `helpFolder`, with `product` and `locale` in its header. */
inline std::string catalogueText(const std::string& helpFolder, const std::string& locale,
                                 const std::vector<Entry>& entries, const std::string& product = "P") {
    std::string text = R"({"header":{"product":")" + product + R"(","helpFolder":")" + helpFolder +
                       R"(","locale":")" + locale + R"("},"exampleItems":[)";
    for (std::size_t i = 0; i < entries.size(); ++i) {
        text += (i == 0 ? "" : ",");
        text += R"({"component":"c","name":")" + entries[i].name + R"(","title":")" + entries[i].title +
                R"(","thumbnail":""})";
    }
    return text + "]}";
}

} // namespace zwtest
