#include "zwhost/settings.hpp"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

#include "native_name.hpp"

namespace zwhost::settings {
namespace {

struct Values {
    std::u16string documentationRoot;
    std::u16string currentLocale;
    std::vector<std::u16string> supportedDocLocales;
    std::uint64_t readLimit = kDefaultReadLimit;
    std::uint64_t packageBudget = kDefaultPackageBudget;
};

// An environment variable that is unset, empty or not UTF-8 counts as absent.
std::optional<std::u16string> environment(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0') {
        return std::nullopt;
    }
    return reference::detail::fromNative(value);
}

// The sample tree installed with this library, found from the library's own location so that
// an installed tree can move as a whole; in the build tree, the one in the sources.
std::string sampleDocumentationRoot() {
    static const char inThisLibrary = 0;
    Dl_info info{};
    if (dladdr(&inThisLibrary, &info) != 0 && info.dli_fname != nullptr) {
        std::error_code error;
        const std::filesystem::path installed = std::filesystem::canonical(
            std::filesystem::path(info.dli_fname).parent_path() / ZW_SAMPLE_DOCROOT_FROM_LIBDIR, error);
        if (!error && std::filesystem::is_directory(installed, error)) {
            return installed.string();
        }
    }
    return ZW_SAMPLE_DOCROOT;
}

std::u16string defaultDocumentationRoot() {
    if (auto root = environment("ZW_DOC_ROOT")) {
        return std::move(*root);
    }
    return reference::detail::fromNative(sampleDocumentationRoot()).value_or(std::u16string());
}

std::u16string defaultCurrentLocale() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (auto value = environment(name)) {
            return normaliseLocale(*value);
        }
    }
    return normaliseLocale(u"");
}

Values defaults() {
    return Values{defaultDocumentationRoot(),
                  defaultCurrentLocale(),
                  {u"ja_JP", u"ko_KR", u"zh_CN"},
                  kDefaultReadLimit,
                  kDefaultPackageBudget};
}

struct State {
    std::mutex mutex;
    Values values = defaults();
};

State& state() {
    static State s;
    return s;
}

template <class Member>
auto get(Member Values::*member) {
    State& s = state();
    std::lock_guard lock(s.mutex);
    return s.values.*member;
}

template <class Member>
void set(Member Values::*member, Member value) {
    State& s = state();
    std::lock_guard lock(s.mutex);
    s.values.*member = std::move(value);
}

} // namespace

std::u16string documentationRoot() {
    return get(&Values::documentationRoot);
}

void setDocumentationRoot(std::u16string root) {
    set(&Values::documentationRoot, std::move(root));
}

std::u16string normaliseLocale(std::u16string_view name) {
    // "ja_JP.UTF-8" and "de_DE@euro" name the locale before the codeset or modifier.
    const std::u16string_view locale = name.substr(0, name.find_first_of(u".@"));
    if (locale.empty() || locale == u"C" || locale == u"POSIX") {
        return u"en_US";
    }
    return std::u16string(locale);
}

std::u16string currentLocale() {
    return get(&Values::currentLocale);
}

void setCurrentLocale(std::u16string locale) {
    set(&Values::currentLocale, std::move(locale));
}

std::vector<std::u16string> supportedDocLocales() {
    return get(&Values::supportedDocLocales);
}

void setSupportedDocLocales(std::vector<std::u16string> locales) {
    set(&Values::supportedDocLocales, std::move(locales));
}

std::uint64_t readLimit() {
    return get(&Values::readLimit);
}

void setReadLimit(std::uint64_t bytes) {
    set(&Values::readLimit, bytes);
}

std::uint64_t packageBudget() {
    return get(&Values::packageBudget);
}

void setPackageBudget(std::uint64_t bytes) {
    set(&Values::packageBudget, bytes);
}

void resetToDefaults() {
    // The environment is read before the lock is taken: getenv needs no guard of ours.
    Values fresh = defaults();
    State& s = state();
    std::lock_guard lock(s.mutex);
    s.values = std::move(fresh);
}

} // namespace zwhost::settings
