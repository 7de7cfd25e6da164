#pragma once
// Named loggers of the host. A logger registers its name for its lifetime; the host decides
// which names write to standard error.

#include <string>
#include <string_view>
#include <vector>

namespace foundation::log {

template <class Char>
class basic_diagnostic_logger {
public:
    /** Creates and registers the logger `name`. */
    explicit basic_diagnostic_logger(const std::basic_string<Char>& name);
    ~basic_diagnostic_logger();
    basic_diagnostic_logger(const basic_diagnostic_logger&) = delete;
    basic_diagnostic_logger& operator=(const basic_diagnostic_logger&) = delete;

    const std::basic_string<Char>& name() const { return name_; }

    /** Writes `message` to standard error if the host enabled this logger's name. */
    void write(std::basic_string_view<Char> message) const;

private:
    std::basic_string<Char> name_;
};

extern template class basic_diagnostic_logger<char>;

} // namespace foundation::log

namespace zwhost::log {

/** Names of the loggers alive now, in order of creation. */
std::vector<std::string> registeredLoggers();

/** Enables or disables output to standard error for the logger `name`. */
void enableOutput(std::string_view name, bool enabled);

} // namespace zwhost::log
