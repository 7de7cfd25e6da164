#pragma once
// The host's settings for the reference service: where the documentation lies, which locale is
// current, which documentation locales exist, how much one read may give and how much one
// package may inflate. Thread-safe.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zwhost::settings {

/** The read limit a fresh process starts with: 16 MiB. The JSON tree of a catalogue can hold
    up to about 26 times its text while it is parsed, so one catalogue costs at most about 440 MB. */
inline constexpr std::uint64_t kDefaultReadLimit = std::uint64_t{16} << 20;

/** The package budget a fresh process starts with: four times the default read limit. */
inline constexpr std::uint64_t kDefaultPackageBudget = 4 * kDefaultReadLimit;

/** The documentation root. Default: the environment variable ZW_DOC_ROOT when it is set and not
    empty, else the sample documentation tree that comes with the host. */
std::u16string documentationRoot();

/** Replaces the documentation root. */
void setDocumentationRoot(std::u16string root);

/** The current locale, such as "ja_JP". Default: the first of LC_ALL, LC_MESSAGES and LANG that is
    set and not empty, up to its first '.' or '@'; "en_US" when that is empty, "C" or "POSIX". */
std::u16string currentLocale();

/** The locale a POSIX locale name such as "ja_JP.UTF-8" or "de_DE@euro" names: the name up to
    its first '.' or '@'; "en_US" when that is empty, "C" or "POSIX". */
std::u16string normaliseLocale(std::u16string_view name);

/** Replaces the current locale. */
void setCurrentLocale(std::u16string locale);

/** The supported documentation locales. Default: "ja_JP", "ko_KR", "zh_CN". */
std::vector<std::u16string> supportedDocLocales();

/** Replaces the supported documentation locales. */
void setSupportedDocLocales(std::vector<std::u16string> locales);

/** The most bytes one file or package entry may hold to be read. Default: kDefaultReadLimit. */
std::uint64_t readLimit();

/** Replaces the read limit. */
void setReadLimit(std::uint64_t bytes);

/** The most bytes the reads of one package may inflate together. Default: kDefaultPackageBudget. */
std::uint64_t packageBudget();

/** Replaces the package budget. */
void setPackageBudget(std::uint64_t bytes);

/** Sets every setting to its default, reading the environment again. */
void resetToDefaults();

} // namespace zwhost::settings
