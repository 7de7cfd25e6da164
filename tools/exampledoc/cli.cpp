#include "cli.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <CLI/CLI.hpp>

#include "commands.hpp"
#include "example_kinds.hpp"
#include "schema_command.hpp"
#include "zwhost/settings.hpp"
#include "zwhost/unicode.hpp"

namespace exampledoc {
namespace {

using CommandFunction = int (*)(const Options&, std::ostream&, std::ostream&);

struct Command {
    CLI::App* app;
    CommandFunction function;
};

// The application with its commands, each bound to `options`; `color` receives --color.
struct CommandLine {
    CLI::App app{"Reads the example catalogues of a documentation tree the way the library does.",
                 "exampledoc"};
    std::vector<Command> commands;
    CLI::App* help = nullptr;
    std::string helpTopic;
    std::string color = "auto";
};

void addCommonOptions(CLI::App& command, Options& options, std::string& color) {
    command
        .add_option_function<std::string>(
            "--root", [&options](const std::string& value) { options.root = value; },
            "documentation root: the folder that holds docCatalog/exampleapi (default: ZW_DOC_ROOT, "
            "else the bundled sample tree)")
        ->type_name("DIR");
    command
        .add_option_function<std::string>(
            "--locale", [&options](const std::string& value) { options.locale = value; },
            "read the catalogues of this locale, such as ja_JP or ja_JP.UTF-8 (default: from LC_ALL, "
            "LC_MESSAGES or LANG)")
        ->type_name("LOCALE");
    command
        .add_option("--color", color,
                    "colour kinds and severities: auto (on a terminal, unless NO_COLOR "
                    "is set), always or never")
        ->type_name("WHEN")
        ->check(CLI::IsMember({"auto", "always", "never"}));
}

std::unique_ptr<CommandLine> makeCommandLine(Options& options) {
    auto line = std::make_unique<CommandLine>();
    CLI::App& app = line->app;
    app.set_version_flag("--version", "exampledoc " EXAMPLEDOC_VERSION, "print the version and exit");
    app.set_help_flag("-h,--help", "print this help and exit");
    app.footer("Run 'exampledoc help COMMAND' or 'exampledoc COMMAND --help' for the options of a command.");

    const auto add = [&](const char* name, const char* description, CommandFunction function) {
        CLI::App* command = app.add_subcommand(name, description);
        command->set_help_flag("-h,--help", "print this help and exit");
        addCommonOptions(*command, options, line->color);
        line->commands.push_back({command, function});
        return command;
    };

    CLI::App* list = add("list",
                         "the catalogues by help folder, with each example's id, kind, title and "
                         "open command",
                         listCommand);
    list->add_flag("--json", options.json, "print JSON for scripts, one object keyed by help folder");
    list->add_option("--folder", options.folders, "only this help folder; may be given again")
        ->type_name("NAME");
    list->add_option("--kind", options.kind, "only examples of this kind")
        ->type_name("KIND")
        ->transform(CLI::IsMember(kindNames(), CLI::ignore_case));
    list->add_option("ID", options.operands,
                     "only examples whose id matches one of these globs, such as "
                     "'graphics/*'");
    list->footer("Localised catalogues are merged over the English ones.");

    CLI::App* show = add("show", "one example in full, read through the host's class system", showCommand);
    show->add_option("ID", options.operands, "the example's id, component/name as 'list' prints it")
        ->required()
        ->expected(1);
    show->footer("Exit status: 0 if found, 1 if no example has the id, 2 for bad arguments.");

    CLI::App* check =
        add("check", "report every catalogue file or package that would be skipped, and why", checkCommand);
    check->add_option("--format", options.format, "text, json or sarif")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"text", "json", "sarif"}));
    check->add_flag("--strict", options.strict, "count warnings as errors for the exit status");
    check->footer("Exit status: 0 if all are good, 1 if any would be skipped, 2 for bad arguments.");

    CLI::App* coverage =
        add("coverage", "how far each locale's catalogues cover the English examples", coverageCommand);
    coverage->add_option("--format", options.format, "text or json")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"text", "json"}));

    CLI::App* schema =
        add("schema", "the JSON Schema of the catalogue format, or of the JSON of list, check or coverage",
            schemaCommand);
    schema->add_option("--of", options.of, "catalogue (the default), list, check or coverage")
        ->type_name("WHAT")
        ->check(CLI::IsMember(schemaNames()));
    schema->footer("The same files are installed in share/exampledocparser, named WHAT.schema.json.");

    CLI::App* preview =
        add("preview", "write each locale's gallery as HTML pages, as readers will see it", previewCommand);
    preview
        ->add_option_function<std::string>(
            "--out", [&options](const std::string& value) { options.out = value; },
            "write the pages into this folder (default: exampledoc-preview)")
        ->type_name("DIR");
    preview->add_flag("--force", options.force, "replace the pages of an earlier preview there");
    preview->footer("Exit status: 0 when the pages are written, 1 if one cannot be, 2 for bad arguments "
                    "or files in the way.");

    line->help = app.add_subcommand("help", "the help of a command");
    line->help->add_option("COMMAND", line->helpTopic, "the command");
    app.require_subcommand(0, 1);
    return line;
}

std::vector<std::string> longOptions(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

// The candidate nearest to `word` if it is near enough to be a slip of the keyboard.
std::string nearest(std::string_view word, const std::vector<std::string>& candidates) {
    std::string best;
    std::size_t bestDistance = std::max<std::size_t>(2, word.size() / 3) + 1;
    for (const std::string& candidate : candidates) {
        const std::size_t distance = editDistance(word, candidate);
        if (distance < bestDistance || (candidate.starts_with(word) && word.size() > 2 && best.empty())) {
            best = candidate;
            bestDistance = distance;
        }
    }
    return best;
}

struct Slip {
    std::string command; // where the unknown option was given; empty for an unknown command
    std::string message; // empty when every word is known
};

// The first word that names no command, or no option of its command, with a suggestion.
Slip unknownWord(const CommandLine& line, const std::vector<std::string>& args) {
    if (args.empty() || args[0].starts_with('-')) {
        return {};
    }
    std::vector<std::string> names;
    const CLI::App* command = nullptr;
    for (const CLI::App* candidate : line.app.get_subcommands({})) {
        names.push_back(candidate->get_name());
        if (candidate->get_name() == args[0]) {
            command = candidate;
        }
    }
    if (command == nullptr) {
        const std::string suggestion = nearest(args[0], names);
        return {"", "'" + args[0] + "' is not a command" +
                        (suggestion.empty() ? std::string() : "; did you mean '" + suggestion + "'?")};
    }
    const std::vector<std::string> known = longOptions(*command);
    for (auto word = args.begin() + 1; word != args.end() && *word != "--"; ++word) {
        const std::string name = word->substr(0, word->find('='));
        if (name.starts_with("--") && std::find(known.begin(), known.end(), name) == known.end()) {
            const std::string suggestion = nearest(name, known);
            return {args[0],
                    "unknown option '" + name + "'" +
                        (suggestion.empty() ? std::string() : "; did you mean '" + suggestion + "'?")};
        }
    }
    return {};
}

int usage(std::ostream& err, const std::string& command, const std::string& message) {
    const std::string prefix = command.empty() ? "exampledoc" : "exampledoc " + command;
    err << prefix << ": " << message << "\n(see '" << prefix << " --help')\n";
    return 2;
}

// Warns when the environment's locale has no catalogues: the English ones are read then.
void checkEnvironmentLocale(const Options& options, std::ostream& err) {
    const std::u16string locale = zwhost::settings::currentLocale();
    if (!options.locale && !isReadableLocale(locale)) {
        err << "exampledoc: warning: the locale \"" << zwhost::unicode::utf16ToUtf8(locale)
            << "\" from the environment has no catalogues; reading English ones (supported: "
            << supportedLocaleList() << ")\n";
    }
}

bool wantsColor(const std::string& when, bool outIsTerminal) {
    const char* noColor = std::getenv("NO_COLOR");
    return when == "always" || (when == "auto" && outIsTerminal && (noColor == nullptr || *noColor == '\0'));
}

} // namespace

int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err, bool outIsTerminal) {
    Options options;
    const auto line = makeCommandLine(options);
    if (const Slip slip = unknownWord(*line, args); !slip.message.empty()) {
        return usage(err, slip.command, slip.message);
    }
    // CLI11 takes a vector of words last word first, so that it can pop each from the back.
    std::vector<std::string> reversed(args.rbegin(), args.rend());
    try {
        line->app.parse(reversed);
    } catch (const CLI::CallForHelp&) {
        out << line->app.help();
        return 0;
    } catch (const CLI::CallForVersion& version) {
        out << version.what() << '\n';
        return 0;
    } catch (const CLI::ParseError& error) {
        const auto chosen = line->app.get_subcommands();
        return usage(err, chosen.empty() ? "" : chosen.front()->get_name(), error.what());
    }

    const auto chosen = line->app.get_subcommands();
    if (chosen.empty()) {
        err << line->app.help();
        return 2;
    }
    if (chosen.front() == line->help) {
        if (line->helpTopic.empty()) {
            out << line->app.help();
            return 0;
        }
        for (const Command& command : line->commands) {
            if (command.app->get_name() == line->helpTopic) {
                out << command.app->help("exampledoc");
                return 0;
            }
        }
        return usage(err, "help", "'" + line->helpTopic + "' is not a command");
    }
    const auto command = std::find_if(line->commands.begin(), line->commands.end(),
                                      [&](const Command& c) { return c.app == chosen.front(); });
    const std::string name = command->app->get_name();
    options.color = wantsColor(line->color, outIsTerminal);
    int status = 0;
    try {
        // The schemas are the same under every locale.
        if (command->function != schemaCommand) {
            checkEnvironmentLocale(options, err);
        }
        status = command->function(options, out, err);
    } catch (const UsageError& error) {
        return usage(err, name, error.what());
    } catch (const std::exception& error) {
        err << "exampledoc " << name << ": cannot read the documentation root: " << error.what() << '\n';
        return 2;
    }
    errno = 0;
    out.flush();
    if (!out) {
        const int error = errno;
        err << "exampledoc " << name << ": cannot write the output"
            << (error != 0 ? std::string(": ") + std::strerror(error) : std::string()) << '\n';
        return 1;
    }
    return status;
}

std::vector<CommandSpelling> commandSpellings() {
    Options options;
    const auto line = makeCommandLine(options);
    std::vector<CommandSpelling> spellings;
    for (const Command& command : line->commands) {
        spellings.push_back({command.app->get_name(), longOptions(*command.app)});
    }
    return spellings;
}

} // namespace exampledoc
