#include "example/docparser/doc_id_link.hpp"

#include <utility>

namespace example::docparser {

DocIDLink::DocIDLink(std::u16string docID, std::u16string target)
    : docID(std::move(docID)), target(std::move(target)) {}

const std::u16string& DocIDLink::getDocID() const {
    return docID;
}

const std::u16string& DocIDLink::getTarget() const {
    return target;
}

DocIDLink DocIDLink::copy() const {
    std::u16string docIDCopy = docID;
    return DocIDLink(std::move(docIDCopy), target);
}

} // namespace example::docparser
