#pragma once
// The reference service's walk over a documentation tree, with a report of what it passes over,
// for tools that tell authors why a file is not read.

#include <functional>
#include <string>
#include <vector>

#include "reference/docparser/product_data.hpp"

namespace zwhost::reference {

/** A path under the root that the walk does not read, though it may have been meant to be. */
struct LeftOut {
    enum class Why {
        NotUtf8,        // a name that is not valid UTF-8
        DanglingLink,   // a link whose target does not exist
        LinkLoop,       // a link that leads through links back to itself
        NotRegularFile, // something other than a regular file named like a catalogue or a package
        TooDeep,        // a folder below the depth limit
        Unlistable,     // a folder that cannot be listed
    };
    std::string path; // relative to the root, native bytes as they stand on disk
    Why why;
    std::string detail; // the system's own words where there are some, else empty
};

/** The loose catalogue files and packages under `root`, as getAllProducts finds them, calling
    `leftOut` (when not empty) for every path the walk passes over for one of the reasons above. */
::reference::docparser::AllProducts walkProducts(const std::u16string& root,
                                                 const std::vector<std::u16string>& locales,
                                                 const std::u16string& localeSuffix,
                                                 const std::function<void(const LeftOut&)>& leftOut);

} // namespace zwhost::reference
