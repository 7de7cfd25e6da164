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

    // Class identity and properties, for the host's class system.

    /** "zentab.internal.example.docparser": static text, not to be freed. */
    ZW_DOCPARSER_API static const char* getZCOSNamespaceName();
    /** "DocIDLink": static text, not to be freed. */
    ZW_DOCPARSER_API static const char* getZCOSClassName();

    /** The document id; the link's own string, valid while the link stands unchanged. */
    ZW_DOCPARSER_API const std::u16string& getDocIDProperty() const;
    /** Sets the document id to the text of `*value`. The caller keeps `value`. */
    ZW_DOCPARSER_API void setDocIDProperty(const std::u16string* value);
    /** The target; the link's own string, valid while the link stands unchanged. */
    ZW_DOCPARSER_API const std::u16string& getTargetProperty() const;
    /** Sets the target to the text of `*value`. The caller keeps `value`. */
    ZW_DOCPARSER_API void setTargetProperty(const std::u16string* value);

private:
    std::u16string docID;
    std::u16string target;
};

} // namespace example::docparser
