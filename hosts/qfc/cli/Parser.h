#pragma once

#include "hosts/qfc/cli/CommandLine.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace CLI {
class App;
}

namespace qfc::host {

// The parser of the arguments. Groups of commands add theirs (cli/CommandGroups.h), then it reads once; it keeps the
// options that reading writes to. One thread.
class Parser {
public:
    Parser();
    ~Parser();
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    // The program itself; commands stand below it or below a group of it.
    CLI::App& Root() { return *m_app; }
    // A word that leads to other commands; alone it is none. Examples are what stands behind "qfc ".
    static CLI::App& AddGroup(CLI::App& parent, const std::string& name, const std::string& help,
                              const std::string& example);
    // A command. `take` makes its options when it was given, and may throw WrongUsage.
    CLI::App& AddCommand(CLI::App& parent, const std::string& name, const std::string& help, const std::string& example,
                         std::function<Command()> take);

    // A command whose options live as long as the parser; `check` may throw WrongUsage.
    template <class Options>
    std::pair<CLI::App*, Options*> Add(CLI::App& parent, const std::string& name, const std::string& help,
                                       const std::string& example, void (*check)(const Options&) = nullptr) {
        auto options = std::make_shared<Options>();
        CLI::App& app = AddCommand(parent, name, help, example, [options, check]() -> Command {
            if (check != nullptr) check(*options);
            return *options;
        });
        return {&app, options.get()};
    }

    // How many words stood behind "--", for a command that takes them apart; nothing when there was no "--".
    std::optional<std::size_t> WordsBehindMark() const { return m_behindMark; }

    // After every command was added, once.
    std::variant<Invocation, LeaveNow> Read(int argc, const char* const* argv);

private:
    void Parse(int argc, const char* const* argv);
    LeaveNow WronglyUsed(const std::string& reason, bool json) const;
    const CLI::App* DeepestParsed() const;

    std::unique_ptr<CLI::App> m_app;
    GlobalOptions m_global;
    std::optional<std::size_t> m_behindMark;
    std::vector<std::pair<CLI::App*, std::function<Command()>>> m_commands;
};

}  // namespace qfc::host
