#pragma once
// The reference service's catalogue reading: products under a root, file access, the JSON
// helpers of ParsingTools, and the parse drivers built on them.

#include <memory>
#include <string>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "fl/filesystem/path.hpp"
#include "reference/docparser/catalogue_format_error.hpp"
#include "reference/docparser/parsing_info.hpp"
#include "reference/docparser/product_data.hpp"
#include "reference/property/header_info.hpp"

namespace reference::docparser {

class DocResourceParser {
public:
    /** The root of the product's reference documentation (the host's documentation root setting). */
    static std::shared_ptr<const std::u16string> getReferenceRoots();

    /** The loose catalogue files and the packages under `root`, in reading order.
        Files of locales other than `localeSuffix` names are left out. */
    static AllProducts getAllProducts(const std::u16string& root, const std::vector<std::u16string>& locales,
                                      const std::u16string& localeSuffix);

    /** The whole loose file as bytes; throws if it cannot be read or exceeds the read limit. */
    static std::string openAndReadFile(const ProductPathData& product);

    /** The whole package entry as bytes, CRC checked; throws on any failure or past the limit. */
    static std::string openAndReadFile(const ProductZipData& product);

    /** Whether `path` names a catalogue file: it ends in ".json" and its stem is not empty. */
    static bool isValidFilename(const fl::filesystem::upath& path);

    /** The outcome of a parse: entries by whether their key counts as installed. */
    template <class T>
    struct ParsingResults {
        T installed;
        T notInstalled;
    };

    class ParsingTools {
    public:
        /** How a string member is taken: as it stands, or trimmed of white space. */
        enum StringParsingType : int { Verbatim = 0, Text = 1 };

        /** Separator between a catalogue's stem and its locale. */
        static const char16_t kLocaleSeparator;

        /** The supported documentation locales (host setting). */
        static std::vector<std::u16string> getSupportedDocLocales();

        /** The current locale, such as "ja_JP" (host setting). */
        static std::u16string getCurrentLocale();

        /** The header of a catalogue from its root value; throws CatalogueFormatError. */
        static reference::property::HeaderInfo getHeaderInfo(const boost::json::value& root);

        /** The array member `key` of the object `value`; throws CatalogueFormatError. */
        static const boost::json::array& getJsonArray(const boost::json::value& value,
                                                      const std::string& key);

        /** `value` as an array; throws CatalogueFormatError. */
        static const boost::json::array& getJsonArray(const boost::json::value& value);

        /** The string member `key` in UTF-16, treated by `type`; throws if absent or not a string. */
        static std::u16string getFluString(const boost::json::object& object, const std::string& key,
                                           StringParsingType type);

        /** The string `value` in UTF-16, treated by `type`; throws if it is not a string. */
        static std::u16string getFluString(const boost::json::value& value, StringParsingType type);

        /** Like getFluString, but an absent or null member gives the empty string. */
        static std::u16string getFluStringWithFallback(const boost::json::object& object,
                                                       const std::string& key, StringParsingType type);

        /** Reads every product under `root` and merges the catalogues into one result. */
        template <class T>
        static ParsingResults<T>
        parseMultipleProductFiles(const std::u16string& root,
                                  const typename ParsingInfo<T>::JsonParsingFcn& jsonParsingFcn,
                                  const typename ParsingInfo<T>::IsInstalledFcn& isInstalledFcn);

        /** Reads the catalogue files `products` in order and merges them into `results`. */
        template <class T, class P>
        static void readJsonFiles(const std::vector<P>& products, const ParsingInfo<T>& info,
                                  ParsingResults<T>& results);

        /** Reads the catalogues inside the packages `products`, one package at a time. */
        template <class T>
        static ParsingResults<T> readZipFiles(const std::vector<ProductPathData>& products,
                                              const ParsingInfo<T>& info);
    };
};

} // namespace reference::docparser
