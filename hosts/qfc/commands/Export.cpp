#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/Interrupt.h"
#include "hosts/qfc/library/LibraryFile.h"
#include "hosts/qfc/library/Output.h"

#include <nlohmann/json.hpp>

namespace qfc::host {
namespace fs = std::filesystem;
namespace {

// What an interrupted writer left beside the target would be applied to the copy by whoever opens it next.
void RefuseJournal(const fs::path& target) {
    for (const char* suffix : {"-journal", "-wal"}) {
        const fs::path journal = target.string() + suffix;
        std::error_code error;
        const auto bytes = fs::file_size(journal, error);
        if (error ? error != std::errc::no_such_file_or_directory : bytes != 0) {
            throw Failure("cannot write " + target.string() + ": " + journal.filename().string() +
                          " beside it belongs to the old file");
        }
    }
}

// A copy that is not whole never stands under the name that was asked for.
void ExportTo(const fs::path& target) {
    const fs::path part = UnusedNameBeside(target);
    const Interrupt interrupt;  // Nothing that is not whole stays behind.
    std::error_code error;
    const bool exported = QFCLibraryManager::fnExportDB(part.c_str()) != 0 && !interrupt.IsRaised();
    if (exported) fs::rename(part, target, error);
    if (exported && !error) return;
    std::error_code ignored;
    fs::remove(part, ignored);
    fs::remove(part.string() + "-journal", ignored);
    if (interrupt.IsRaised()) throw Failure("interrupted; " + target.string() + " is not written");
    throw Failure("cannot write " + target.string() + (error ? ": " + error.message() : ""));
}

}  // namespace

int Run(const ExportOptions& options, const Console& console) {
    const fs::path target = OutputPath(options.file);
    {
        const Session session;
        Galleries galleries(session);
        RefuseMediaFile(galleries, target);
        RefuseJournal(target);
        ExportTo(target);
    }
    std::error_code error;
    const auto bytes = fs::file_size(target, error);
    if (error) throw Failure("cannot write " + options.file);
    console.Say("wrote " + options.file + " (" + Counted(bytes, "byte") + ")");
    console.ShowJson({{"file", options.file}, {"bytes", bytes}});
    return kDone;
}

}  // namespace qfc::host
