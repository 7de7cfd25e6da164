#include "cli.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>

#include <CLI/CLI.hpp>
#include <boost/algorithm/string/join.hpp>

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
    CLI::App* completion = nullptr;
    std::string shell;
    std::string color = "auto";
    std::map<const CLI::Option*, std::vector<std::string>> choices; // what completion offers
};

// Limits `option` to `values`, which completion offers.
CLI::Option* oneOf(CommandLine& line, CLI::Option* option, const std::vector<std::string>& values) {
    line.choices[option] = values;
    return option->check(CLI::IsMember(values));
}

void addCommonOptions(CLI::App& command, Options& options, CommandLine& line,
                      const std::vector<std::string>& locales) {
    command
        .add_option_function<std::string>(
            "--root", [&options](const std::string& value) { options.root = value; },
            "documentation root: the folder that holds docCatalog/exampleapi (default: ZW_DOC_ROOT, "
            "else the bundled sample tree)")
        ->type_name("DIR");
    CLI::Option* locale =
        command
            .add_option_function<std::string>(
                "--locale", [&options](const std::string& value) { options.locale = value; },
                "read the catalogues of this locale, such as ja_JP or ja_JP.UTF-8 (default: from LC_ALL, "
                "LC_MESSAGES or LANG)")
            ->type_name("LOCALE");
    // Any form of a locale is taken; completion offers the plain ones that have catalogues.
    line.choices[locale] = locales;
    oneOf(line,
          command.add_option("--color", line.color,
                             "colour kinds and severities: auto (on a terminal, unless NO_COLOR "
                             "is set), always or never"),
          {"auto", "always", "never"})
        ->type_name("WHEN");
}

std::unique_ptr<CommandLine> makeCommandLine(Options& options) {
    auto line = std::make_unique<CommandLine>();
    CLI::App& app = line->app;
    app.set_version_flag("--version", "exampledoc " EXAMPLEDOC_VERSION, "print the version and exit");
    app.set_help_flag("-h,--help", "print this help and exit");
    app.footer("Run 'exampledoc help COMMAND' or 'exampledoc COMMAND --help' for the options of a command.");

    std::vector<std::string> locales = {"en_US"};
    for (const std::u16string& supported : zwhost::settings::supportedDocLocales()) {
        locales.push_back(zwhost::unicode::utf16ToUtf8(supported));
    }
    const auto add = [&](const char* name, const char* description, CommandFunction function) {
        CLI::App* command = app.add_subcommand(name, description);
        command->set_help_flag("-h,--help", "print this help and exit");
        addCommonOptions(*command, options, *line, locales);
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
    const std::vector<std::string> kinds = kindNames();
    CLI::Option* kind = list->add_option("--kind", options.kind, "only examples of this kind")
                            ->type_name("KIND")
                            ->transform(CLI::IsMember(kinds, CLI::ignore_case));
    line->choices[kind] = kinds;
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
    oneOf(*line, check->add_option("--format", options.format, "text, json or sarif"),
          {"text", "json", "sarif"})
        ->type_name("FORMAT");
    check->add_flag("--strict", options.strict, "count warnings as errors for the exit status");
    check->footer("Exit status: 0 if all are good, 1 if any would be skipped, 2 for bad arguments.");

    CLI::App* coverage =
        add("coverage", "how far each locale's catalogues cover the English examples", coverageCommand);
    oneOf(*line, coverage->add_option("--format", options.format, "text or json"), {"text", "json"})
        ->type_name("FORMAT");

    CLI::App* schema =
        add("schema", "the JSON Schema of the catalogue format, or of the JSON of list, check or coverage",
            schemaCommand);
    oneOf(*line, schema->add_option("--of", options.of, "catalogue (the default), list, check or coverage"),
          schemaNames())
        ->type_name("WHAT");
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
    line->completion = app.add_subcommand("completion", "print the script that completes exampledoc's words");
    line->completion->set_help_flag("-h,--help", "print this help and exit");
    oneOf(*line, line->completion->add_option("SHELL", line->shell, "the shell: bash")->required(), {"bash"});
    line->completion->footer("For bash: source <(exampledoc completion bash), or save it as "
                             "~/.local/share/bash-completion/completions/exampledoc.");
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

std::string spaced(const std::vector<std::string>& words) {
    return boost::algorithm::join(words, " ");
}

std::string compgen(const std::string& words) {
    return R"(COMPREPLY=($(compgen -W ")" + words + R"(" -- "$cur")))";
}

// The completion function; the marks are replaced by what the command line defines.
constexpr std::string_view kBashCompletion =
    R"(# bash completion for exampledoc, as 'exampledoc completion bash' prints it.

_exampledoc() {
    local cur prev words cword split
    _init_completion -s || return

    local command="" i
    for ((i = 1; i < cword; i++)); do
        case "${words[i]}" in
            -*) ;;
            *) command="${words[i]}"; break ;;
        esac
    done
    if [[ -z $command ]]; then
        COMPREPLY=($(compgen -W "@COMMANDS@ --help --version" -- "$cur"))
        return
    fi

    case "$command $prev" in
@VALUE_CASES@    esac
    $split && return

    local opts
    case "$command" in
@COMMAND_CASES@        *) return ;;
    esac
    [[ $cur == -* ]] && COMPREPLY=($(compgen -W "$opts" -- "$cur"))
} &&
    complete -F _exampledoc exampledoc
)";

// A bash completion script of the commands, options and option values that `line` defines.
std::string bashCompletion(const CommandLine& line) {
    std::vector<std::string> commands;
    for (const Command& command : line.commands) {
        commands.push_back(command.app->get_name());
    }
    // Each command's long options, or the words its operand takes; and, for each way of
    // completing an option's value, the "command --option" pairs it follows.
    std::vector<std::string> allCommands;
    std::string commandCases;
    std::map<std::string, std::vector<std::string>> valueCases;
    for (const CLI::App* command : line.app.get_subcommands({})) {
        const std::string name = command->get_name();
        allCommands.push_back(name);
        if (command == line.help || command == line.completion) {
            const auto& operand =
                command == line.help ? commands : line.choices.at(command->get_option("SHELL"));
            commandCases += "        " + name + ") " + compgen(spaced(operand)) + "; return ;;\n";
            continue;
        }
        commandCases += "        " + name + ") opts=\"" + spaced(longOptions(*command)) + "\" ;;\n";
        for (const CLI::Option* option : command->get_options()) {
            if (option->get_positional() || option->get_expected_max() == 0) {
                continue;
            }
            const auto choices = line.choices.find(option);
            const std::string action = choices != line.choices.end()
                                           ? compgen(spaced(choices->second)) + "; return"
                                       : option->get_type_name() == "DIR" ? "_filedir -d; return"
                                                                          : "return";
            valueCases[action].push_back("\"" + name + " --" + option->get_lnames().front() + "\"");
        }
    }
    std::string valueCaseText;
    for (const auto& [action, patterns] : valueCases) {
        valueCaseText +=
            "        " + boost::algorithm::join(patterns, " | ") + ")\n            " + action + " ;;\n";
    }
    std::string script(kBashCompletion);
    for (const auto& [mark, text] :
         {std::pair{"@COMMANDS@", spaced(allCommands)}, std::pair{"@VALUE_CASES@", valueCaseText},
          std::pair{"@COMMAND_CASES@", commandCases}}) {
        script.replace(script.find(mark), std::string_view(mark).size(), text);
    }
    return script;
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
    if (chosen.front() == line->completion) {
        out << bashCompletion(*line);
        return 0;
    }
    if (chosen.front() == line->help) {
        if (line->helpTopic.empty()) {
            out << line->app.help();
            return 0;
        }
        for (const CLI::App* command : line->app.get_subcommands({})) {
            if (command->get_name() == line->helpTopic) {
                out << command->help("exampledoc");
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
