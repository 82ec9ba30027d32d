#include "hosts/qfc/cli/CommandGroups.h"
#include "hosts/qfc/cli/CommonOptions.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/cli/Parser.h"

#include <CLI/CLI.hpp>

namespace qfc::host {
namespace {

void AddGalleries(Parser& parser) {
    CLI::App& gallery =
        Parser::AddGroup(parser.Root(), "gallery", "Create, list and remove galleries", "gallery create Holidays");
    auto [create, createOptions] =
        parser.Add<GalleryCreateOptions>(gallery, "create", "Create a gallery of your own", "gallery create Holidays");
    AddPlace(create, "NAME", createOptions->name, "Name of the new gallery");
    parser.Add<GalleryListOptions>(gallery, "list", "List the galleries", "gallery list");
    auto [remove, removeOptions] = parser.Add<GalleryRemoveOptions>(
        gallery, "rm", "Remove a gallery with all its folders and items", "gallery rm Holidays");
    AddPlace(remove, "ID|NAME", removeOptions->gallery, "The gallery, by id or name")->check(SomeGallery);
}

void AddFolders(Parser& parser) {
    auto [make, makeOptions] = parser.Add<MakeFolderOptions>(parser.Root(), "mkdir", "Make a folder and those above it",
                                                             "mkdir \"2024\\Summer\"");
    AddPlace(make, "FOLDER", makeOptions->folder, "Path of the new folder below the gallery");
    AddGallery(make, makeOptions->gallery);

    auto [remove, removeOptions] = parser.Add<RemoveFolderOptions>(parser.Root(), "rmdir", "Remove a folder",
                                                                   "rmdir \"2024\\Summer\" --recursive");
    AddPlace(remove, "FOLDER", removeOptions->folder, kFolderHelp);
    remove->add_flag("--recursive", removeOptions->recursive, "Also when it holds items or folders");
    AddGallery(remove, removeOptions->gallery);
}

void AddItems(Parser& parser) {
    const std::string either = "Item (path or GUID) or folder (path or #row)";
    auto [move, moveOptions] =
        parser.Add<MoveOptions>(parser.Root(), "mv", "Move an item to a folder, or a folder under another",
                                "mv \"Imported\\holiday.mp4\" \"2024\\Summer\"");
    AddPlace(move, "ITEM|FOLDER", moveOptions->what, either);
    AddPlace(move, "TARGET", moveOptions->target, "Target folder; \\ alone is the gallery itself");
    AddGallery(move, moveOptions->gallery);

    auto [rename, renameOptions] = parser.Add<RenameOptions>(parser.Root(), "rename", "Rename an item or a folder",
                                                             "rename \"Imported\\holiday.mp4\" \"Day one\"");
    AddPlace(rename, "ITEM|FOLDER", renameOptions->what, either);
    AddPlace(rename, "NAME", renameOptions->name, "The new name");
    AddGallery(rename, renameOptions->gallery);

    auto [remove, removeOptions] =
        parser.Add<RemoveItemOptions>(parser.Root(), "rm", "Remove an item: a path removes this placement, a GUID all",
                                      "rm \"Imported\\holiday.mp4\"");
    AddPlace(remove, "ITEM", removeOptions->item, kItemHelp);
    remove->add_flag("--everywhere", removeOptions->everywhere, "From every folder that holds it");
    AddGallery(remove, removeOptions->gallery);

    auto [reorder, reorderOptions] =
        parser.Add<ReorderOptions>(parser.Root(), "reorder", "Store another order",
                                   "reorder \"2024\\Summer\" --by date", [](const ReorderOptions& o) {
                                       if (o.by.has_value() == o.to.has_value())
                                           throw WrongUsage("reorder wants either --by or --to");
                                       if (o.descending && !o.by) throw WrongUsage("--desc goes with --by");
                                   });
    AddPlace(reorder, "ITEM|FOLDER", reorderOptions->what, either);
    AddSortKey(reorder, "--by", reorderOptions->by, "Order the items of a folder");
    reorder->add_flag("--desc", reorderOptions->descending, "Last first (with --by)");
    reorder->add_option("--to", reorderOptions->to, "New place among its neighbours, from 1")
        ->type_name("N")
        ->check(OneOrMore);
    AddGallery(reorder, reorderOptions->gallery);
}

}  // namespace

void AddOrderCommands(Parser& parser) {
    AddGalleries(parser);
    AddFolders(parser);
    AddItems(parser);
}

}  // namespace qfc::host
