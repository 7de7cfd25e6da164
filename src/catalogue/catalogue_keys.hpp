#pragma once
// The member names of the catalogue format that the parser reads. Defined in load_order.cpp.

#include <string>

namespace example::docparser::detail {

extern const std::string kKeyExampleItems;
extern const std::string kKeyName;
extern const std::string kKeyComponent;
extern const std::string kKeyTitle;
extern const std::string kKeyDescription;
extern const std::string kKeyRelativePath;
extern const std::string kKeyThumbnail;
extern const std::string kKeyExampleType;
extern const std::string kKeyOpenCmd;
extern const std::string kKeySupportingFiles;
extern const std::string kKeyDocidLinks;
extern const std::string kKeyDocid;
extern const std::string kKeyTarget;

} // namespace example::docparser::detail
