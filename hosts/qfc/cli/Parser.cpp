#include "hosts/qfc/cli/Parser.h"

#include "hosts/qfc/cli/Exit.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>

namespace qfc::host {
namespace {

// CLI11 takes a path "[a,b]" apart into two; a file may be called so. A leading byte that nobody types keeps it whole
// until it has been read. So it does with what stands behind "--", where a word is a word whatever it begins with: the
// parser itself would hand those words to the wrong command.
constexpr char kShield = '\x01';

std::string Shielded(const std::string& argument) {
    const bool bracketed = argument.size() > 1 && argument.front() == '[' && argument.back() == ']';
    return bracketed ? kShield + argument : argument;
}

std::string Unshielded(const std::string& argument) {
    return !argument.empty() && argument.front() == kShield ? argument.substr(1) : argument;
}

void TakeShieldsAway(CLI::App& app) {
    for (CLI::Option* option : app.get_options()) {
        if (option != app.get_help_ptr()) option->transform(Unshielded);
    }
    for (CLI::App* command : app.get_subcommands({})) TakeShieldsAway(*command);
}

std::string Name(const CLI::App* app) {
    return app->get_parent() == nullptr ? app->get_name() : Name(app->get_parent()) + " " + app->get_name();
}

std::string OneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

// The parser sets no options when it stops early.
bool WantsJson(int argc, const char* const* argv) {
    const auto* end = std::find(argv, argv + argc, std::string_view("--"));
    return std::find(argv, end, std::string_view("--json")) != end;
}

// An unset variable in a script must not lead to the user's own library.
std::string SomeFolder(const std::string& text) { return text.empty() ? "wants a folder" : ""; }

// A word where a command should stand is named; the parser only says that a command is missing.
std::string Reason(const CLI::ParseError& error, const CLI::App& root, const CLI::App& deepest) {
    const std::vector<std::string> words = root.remaining(true);
    if (deepest.get_require_subcommand_min() == 0 || words.empty()) return error.what();
    return "there is no " + Name(&deepest) + " " + Unshielded(words.front());
}

}  // namespace

Parser::Parser()
    : m_app(std::make_unique<CLI::App>("Keeps a library of media: imports, shows, finds, orders, draws and exports it.",
                                       "qfc")) {
    m_app->require_subcommand(1);
    m_app->fallthrough();
    m_app->footer(
        "Example:\n  qfc import ~/Pictures && qfc tree\n\nExit: 0 done, 1 failed or nothing found, 2 wrong usage.");
    m_app->add_option("--data-dir", m_global.dataDir, "Folder of the library (default: the user's data folder)")
        ->type_name("DIR")
        ->check(SomeFolder);
    m_app->add_option("--translate", m_global.translate, "Show translated names, from now on, or no longer")
        ->type_name("on|off")
        ->check(CLI::IsMember({"on", "off"}));
    m_app->add_flag("--json", m_global.json, "Print results for machines");
    m_app->add_flag("--quiet", m_global.quiet, "Print only what was asked for, and errors");
}

Parser::~Parser() = default;

CLI::App& Parser::AddGroup(CLI::App& parent, const std::string& name, const std::string& help,
                           const std::string& example) {
    CLI::App* app = parent.add_subcommand(name, help);
    app->require_subcommand(1);
    app->footer("Example:\n  qfc " + example);
    return *app;
}

CLI::App& Parser::AddCommand(CLI::App& parent, const std::string& name, const std::string& help,
                             const std::string& example, std::function<Command()> take) {
    CLI::App* app = parent.add_subcommand(name, help);
    app->footer("Example:\n  qfc " + example);
    m_commands.emplace_back(app, std::move(take));
    return *app;
}

void Parser::Parse(int argc, const char* const* argv) {
    const auto* end = argv + argc;
    const auto* mark = std::find(argv + std::min(argc, 1), end, std::string_view("--"));
    if (mark != end) m_behindMark = static_cast<std::size_t>(end - mark - 1);
    std::vector<std::string> arguments;  // The last one first, as the parser wants them.
    while (end > mark + 1) arguments.push_back(kShield + std::string(*--end));
    while (mark > argv + 1) arguments.push_back(Shielded(*--mark));
    m_app->parse(arguments);
}

std::variant<Invocation, LeaveNow> Parser::Read(int argc, const char* const* argv) {
    TakeShieldsAway(*m_app);
    try {
        Parse(argc, argv);
        for (const auto& [app, take] : m_commands) {
            if (app->parsed()) return Invocation{m_global, take()};
        }
        return LeaveNow{kWrongUsage, "no command given", WantsJson(argc, argv)};
    } catch (const CLI::Success&) {
        const CLI::App* app = DeepestParsed();
        return LeaveNow{kDone, app->help(app->get_parent() == nullptr ? "" : Name(app->get_parent())), false};
    } catch (const CLI::ParseError& error) {
        return WronglyUsed(Reason(error, *m_app, *DeepestParsed()), WantsJson(argc, argv));
    } catch (const WrongUsage& error) {
        return WronglyUsed(error.what(), WantsJson(argc, argv));
    }
}

LeaveNow Parser::WronglyUsed(const std::string& reason, bool json) const {
    return {kWrongUsage, OneLine(reason) + " (see " + Name(DeepestParsed()) + " --help)", json};
}

const CLI::App* Parser::DeepestParsed() const {
    const CLI::App* app = m_app.get();
    for (;;) {
        const auto parsed = app->get_subcommands();
        if (parsed.empty()) return app;
        app = parsed.back();
    }
}

}  // namespace qfc::host
