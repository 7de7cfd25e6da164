#pragma once
// The header of a catalogue file: four strings, of which the help folder keys the catalogue.

#include <string>
#include <utility>

namespace reference::property {

class HeaderInfo {
public:
    HeaderInfo() = default;
    HeaderInfo(std::u16string product, std::u16string version, std::u16string helpFolder,
               std::u16string locale)
        : product_(std::move(product)), version_(std::move(version)), helpFolder_(std::move(helpFolder)),
          locale_(std::move(locale)) {}

    /** The product the catalogue documents ("product" of the header; empty if absent). */
    const std::u16string& getProduct() const { return product_; }
    /** The product version ("version"; empty if absent). */
    const std::u16string& getVersion() const { return version_; }
    /** The help folder, the key of the catalogue in a parse result ("helpFolder"; empty if absent). */
    const std::u16string& getHelpFolder() const { return helpFolder_; }
    /** The locale the catalogue is written in ("locale"; empty if absent). */
    const std::u16string& getLocale() const { return locale_; }

private:
    std::u16string product_;
    std::u16string version_;
    std::u16string helpFolder_;
    std::u16string locale_;
};

} // namespace reference::property
