#pragma once
// The drive over products, locales and files under one root.

#include <utility>

#include "reference/docparser/doc_resource_parser.hpp"
#include "reference/docparser/read_json_files.hpp"
#include "reference/docparser/read_zip_files.hpp"

namespace reference::docparser {

template <class T>
DocResourceParser::ParsingResults<T> DocResourceParser::ParsingTools::parseMultipleProductFiles(
    const std::u16string& root, const typename ParsingInfo<T>::JsonParsingFcn& jsonParsingFcn,
    const typename ParsingInfo<T>::IsInstalledFcn& isInstalledFcn) {
    ParsingResults<T> result;
    if (root.empty()) {
        return result;
    }
    std::vector<std::u16string> docLocales = getSupportedDocLocales();
    const std::u16string currentLocale = getCurrentLocale();
    std::u16string localeSuffix = kLocaleSeparator + currentLocale;

    AllProducts products = DocResourceParser::getAllProducts(root, docLocales, localeSuffix);
    const ParsingInfo<T> info{jsonParsingFcn, isInstalledFcn, std::move(docLocales), std::move(localeSuffix)};

    // Packages are read before loose files: which English catalogue arrives first, and which
    // localised one arrives last, follows from this order.
    ParsingResults<T> fromPackages = readZipFiles<T>(products.packageProducts, info);
    result.installed = std::move(fromPackages.installed);
    result.notInstalled = std::move(fromPackages.notInstalled);
    readJsonFiles<T, ProductPathData>(products.looseProducts, info, result);
    return result;
}

} // namespace reference::docparser
