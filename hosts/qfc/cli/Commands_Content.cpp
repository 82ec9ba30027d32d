#include "hosts/qfc/cli/CommandGroups.h"
#include "hosts/qfc/cli/CommonOptions.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/cli/Parser.h"

#include <CLI/CLI.hpp>

namespace qfc::host {
namespace {

void AddImporting(Parser& parser) {
    auto [app, options] =
        parser.Add<ImportOptions>(parser.Root(), "import", "Add media files; directories become folders",
                                  "import holiday.mp4 ~/Pictures --folder \"2024\\Summer\"");
    AddPlaces(app, "PATH", options->paths, "Files and directories");
    AddGallery(app, options->gallery);
    app->add_option("--folder", options->folder, "Folder to import into; made when missing")
        ->type_name("A\\B")
        ->check(SomeFolder);
    app->add_flag("--auto", options->automatic,
                  "Remember what was imported, and leave out what was remembered, though it was removed since");
}

void AddLooking(Parser& parser) {
    auto [tree, treeOptions] =
        parser.Add<TreeOptions>(parser.Root(), "tree", "Show folders and items", "tree --gallery Sounds");
    AddGallery(tree, treeOptions->gallery);

    auto [list, listOptions] =
        parser.Add<ListOptions>(parser.Root(), "ls", "List a folder; unsorted is the stored order",
                                "ls \"2024\\Summer\" --sort date --desc", [](const ListOptions& o) {
                                    if (o.descending && !o.sort) throw WrongUsage("--desc goes with --sort");
                                });
    AddPlace(list, "FOLDER", listOptions->folder, kFolderHelp);
    AddGallery(list, listOptions->gallery);
    AddSortKey(list, "--sort", listOptions->sort, "Sort what is shown");
    list->add_flag("--desc", listOptions->descending, "Last first");

    auto [show, showOptions] = parser.Add<ShowOptions>(parser.Root(), "show", "Show everything known of an item",
                                                       "show \"Imported\\holiday.mp4\"");
    AddPlace(show, "ITEM", showOptions->item, kItemHelp);
    AddGallery(show, showOptions->gallery);

    auto [find, findOptions] =
        parser.Add<FindOptions>(parser.Root(), "find", "Find items by a part of their name, by tags, by kind",
                                "find holiday --tag Beach --kind video", [](const FindOptions& o) {
                                    if (!o.text && o.tags.empty() && o.kind.empty())
                                        throw WrongUsage("find wants TEXT, --tag or --kind");
                                    if (!o.text && (o.description || o.annotation))
                                        throw WrongUsage("--description and --annotation go with TEXT");
                                    RequireTagForAny(o.any, o.tags);
                                });
    find->add_option("TEXT", findOptions->text, "Text to look for, in either case")->type_name("");
    AddTagFilter(find, findOptions->tags, findOptions->any);
    find->add_option("--kind", findOptions->kind, "Only items of this kind")
        ->type_name("video|audio|image|filter|transition|other")
        ->check(CLI::IsMember({"video", "audio", "image", "filter", "transition", "other"}));
    find->add_flag("--description", findOptions->description, "Look in descriptions too");
    find->add_flag("--annotation", findOptions->annotation, "Look in annotations too");
    AddGallery(find, findOptions->gallery, kOnlyGalleryHelp);
}

}  // namespace

void AddContentCommands(Parser& parser) {
    AddImporting(parser);
    AddLooking(parser);
}

}  // namespace qfc::host
