#include "hosts/qfc/cli/CommandLine.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/effects/ProbeReport.h"
#include "hosts/qfc/library/Session.h"
#include "hosts/qfc/library/Translation.h"

#include <csignal>
#include <exception>
#include <iostream>

namespace {

using namespace qfc::host;

int RunCommand(const Invocation& invocation, const Console& console) {
    try {
        if (!invocation.global.dataDir.empty()) UseDataFolder(invocation.global.dataDir);
        if (!invocation.global.translate.empty()) SwitchTranslation(invocation.global.translate == "on");
        if (const std::string warning = CollectingWarning(); !warning.empty()) console.Complain(warning);
        return std::visit([&](const auto& options) { return Run(options, console); }, invocation.command);
    } catch (const Failure& failure) {
        console.Fail(failure.what());
        return failure.Code();
    } catch (const std::exception& error) {
        console.Fail(error.what());
        return kFailed;
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (IsProbeProcess(argc, argv)) return RunProbeProcess(argc, argv);
    // A reader that has left is an output that cannot be written, not the end: what was begun is put in order.
    std::signal(SIGPIPE, SIG_IGN);
    const auto read = ReadCommandLine(argc, argv);
    if (const auto* leave = std::get_if<LeaveNow>(&read)) {
        if (leave->exit == kDone) {
            std::cout << leave->text << std::flush;
        } else {
            Console({.dataDir = {}, .json = leave->json, .quiet = false, .translate = {}}).Fail(leave->text);
        }
        return leave->exit;
    }
    const auto& invocation = std::get<Invocation>(read);
    const Console console(invocation.global);
    const int exit = RunCommand(invocation, console);
    if (console.Flush()) return exit;
    console.Complain("cannot write to standard output");
    return kFailed;
}
