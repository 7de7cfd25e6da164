// The operations of the reference service that hand out the host's settings.

#include "reference/docparser/doc_resource_parser.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/settings.hpp"

namespace reference::docparser {

const char16_t DocResourceParser::ParsingTools::kLocaleSeparator = u'_';

std::vector<std::u16string> DocResourceParser::ParsingTools::getSupportedDocLocales() {
    return zwhost::settings::supportedDocLocales();
}

std::u16string DocResourceParser::ParsingTools::getCurrentLocale() {
    return zwhost::settings::currentLocale();
}

std::shared_ptr<const std::u16string> DocResourceParser::getReferenceRoots() {
    zwhost::fault::point("DocResourceParser::getReferenceRoots");
    return std::make_shared<const std::u16string>(zwhost::settings::documentationRoot());
}

} // namespace reference::docparser
