#pragma once
// One link from an example to a place in the documentation.

#include <string>

#include "example/docparser/export.hpp"

namespace example::docparser {

class DocIDLink {
public:
    /** A link of `docID` and `target`, both moved in. */
    DocIDLink(std::u16string docID, std::u16string target);

    DocIDLink(DocIDLink&&) noexcept = default;
    DocIDLink& operator=(DocIDLink&&) noexcept = default;
    DocIDLink(const DocIDLink&) = delete;
    DocIDLink& operator=(const DocIDLink&) = delete;
    ~DocIDLink() = default;

    /** The document id; the link's own string, valid while the link stands unchanged. */
    ZW_DOCPARSER_API const std::u16string& getDocID() const;

    /** The target; the link's own string, valid while the link stands unchanged. */
    ZW_DOCPARSER_API const std::u16string& getTarget() const;

    /** A new link with independent copies of both strings. */
    ZW_DOCPARSER_API DocIDLink copy() const;

private:
    std::u16string docID;
    std::u16string target;
};

} // namespace example::docparser
