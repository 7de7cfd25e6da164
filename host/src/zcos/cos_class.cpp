#include "zcos/cos_class.hpp"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>

#include "zwhost/fault.hpp"
#include "zwhost/zcos.hpp"

namespace zcos {
namespace {

struct ClassRegistry {
    std::mutex mutex;
    std::map<const internal::InternedText*, std::unique_ptr<COSClass>> classes;
};

ClassRegistry& registry() {
    static ClassRegistry instance;
    return instance;
}

} // namespace

COSClass::COSClass(Definition definition)
    : name_(internal::makeInterned(definition.name)), definition_(std::move(definition)) {}

COSClass* COSClass::getClass(const COSInternedBase<internal::IdEmptyPolicy>& name) {
    zwhost::fault::point("COSClass::getClass");
    ClassRegistry& classes = registry();
    std::lock_guard lock(classes.mutex);
    const auto found = classes.classes.find(name.get());
    if (found == classes.classes.end()) {
        throw std::out_of_range("no class named \"" + std::string(name.str()) + "\"");
    }
    return found->second.get();
}

const COSProperty& COSClass::property(std::string_view name) const {
    const auto& properties = definition_.properties;
    const auto found = std::find_if(properties.begin(), properties.end(),
                                    [name](const COSProperty& p) { return p.name == name; });
    if (found == properties.end()) {
        throw std::out_of_range("class " + std::string(name_.str()) + " has no property \"" +
                                std::string(name) + "\"");
    }
    return *found;
}

} // namespace zcos

namespace zwhost::zcos {

::zcos::COSClass& registerClass(::zcos::COSClass::Definition definition) {
    auto cls = std::make_unique<::zcos::COSClass>(std::move(definition));
    auto& classes = ::zcos::registry();
    std::lock_guard lock(classes.mutex);
    const auto [entry, added] = classes.classes.try_emplace(cls->getName().get(), std::move(cls));
    if (!added) {
        throw std::invalid_argument("class \"" + std::string(entry->second->getName().str()) +
                                    "\" is registered already");
    }
    return *entry->second;
}

::zcos::COSClass* findClass(std::string_view name) {
    auto& classes = ::zcos::registry();
    std::lock_guard lock(classes.mutex);
    const auto found = std::find_if(classes.classes.begin(), classes.classes.end(),
                                    [name](const auto& entry) { return entry.first->text == name; });
    return found == classes.classes.end() ? nullptr : found->second.get();
}

} // namespace zwhost::zcos
