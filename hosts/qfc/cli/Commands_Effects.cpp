#include "hosts/qfc/cli/CommandGroups.h"
#include "hosts/qfc/cli/CommonOptions.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/cli/Parser.h"

#include <CLI/CLI.hpp>

namespace qfc::host {

void AddEffectCommands(Parser& parser) {
    CLI::App& effects = Parser::AddGroup(parser.Root(), "effects", "Filters and transitions from effect plugins",
                                         "effects scan /usr/lib/frei0r-1 && qfc effects list");

    auto [scan, scanOptions] = parser.Add<EffectsScanOptions>(
        effects, "scan", "Add the effects of plugin files, and bring known ones up to date",
        "effects scan /usr/lib/frei0r-1");
    AddPlaces(scan, "DIR", scanOptions->paths, "Directories with effect plugins, or plugin files");
    scan->add_flag("--retry", scanOptions->retry,
                   "Try files again that failed, or had no effect, and have not changed");

    auto [list, listOptions] =
        parser.Add<EffectsListOptions>(effects, "list", "List the effects; opens no plugin", "effects list");
    list->add_flag("--failed", listOptions->failed, "List the files that could not be read instead");

    auto [show, showOptions] =
        parser.Add<EffectsShowOptions>(effects, "show", "Show what the library knows of an effect; opens no plugin",
                                       "effects show \"Colour\\Tint0r\"");
    AddPlace(show, "EFFECT", showOptions->effect,
             "A path below the Filters or the Transitions gallery, a GUID, or a file");

    auto [remove, removeOptions] = parser.Add<EffectsRemoveOptions>(
        effects, "remove", "Remove the effects of a file, and the folders that are empty then",
        "effects remove /usr/lib/frei0r-1/glow.so");
    AddPlace(remove, "FILE", removeOptions->file, "The effect file; it may be gone");

    auto [clear, clearOptions] = parser.Add<EffectsClearOptions>(
        effects, "clear", "Remove all effects", "effects clear --yes", [](const EffectsClearOptions& o) {
            if (!o.yes) throw WrongUsage("effects clear wants --yes");
        });
    clear->add_flag("--yes", clearOptions->yes, "Really do it")->required();

    auto [probe, probeOptions] =
        parser.Add<EffectsProbeOptions>(effects, "probe", "Run an effect plugin and show what it is; uses no library",
                                        "effects probe /usr/lib/frei0r-1/glow.so");
    AddPlace(probe, "FILE", probeOptions->file, "The effect file");
}

}  // namespace qfc::host
