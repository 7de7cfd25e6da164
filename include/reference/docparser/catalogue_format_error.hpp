#pragma once

#include <stdexcept>
#include <string>

namespace reference::docparser {

/** A catalogue that is valid JSON but not of the catalogue format. */
class CatalogueFormatError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace reference::docparser
