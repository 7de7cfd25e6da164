#include "example/docparser/doc_id_link.hpp"

namespace example::docparser {

const char* DocIDLink::getZCOSNamespaceName() {
    return "zentab.internal.example.docparser";
}

const char* DocIDLink::getZCOSClassName() {
    return "DocIDLink";
}

} // namespace example::docparser
