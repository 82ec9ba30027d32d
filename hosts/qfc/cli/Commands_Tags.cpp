#include "hosts/qfc/cli/CommandGroups.h"
#include "hosts/qfc/cli/CommonOptions.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/cli/Parser.h"

#include <CLI/CLI.hpp>

namespace qfc::host {
namespace {

constexpr const char* kTagHelp = "Tag: a name, \"Category/Tag\", \"GALLERY:Category/Tag\" or a GUID";
constexpr const char* kCategoryHelp = "Category: a name, \"GALLERY:Category\" or a GUID";

// Takes the words of "TAG... -- ITEM..." or "TAG ITEM..." apart. The parser forgets where the mark stood; but what
// stands behind it are all the last words.
template <class Options>
Command TagItems(const Parser& parser, Options options, const std::vector<std::string>& words) {
    const std::size_t items = parser.WordsBehindMark().value_or(words.size() - 1);
    if (items == 0 || items >= words.size()) throw WrongUsage("wants tags and items: TAG... -- ITEM...");
    const auto split = words.end() - static_cast<std::ptrdiff_t>(items);
    options.tags.assign(words.begin(), split);
    options.items.assign(split, words.end());
    return options;
}

template <class Options>
void AddTagItems(Parser& parser, CLI::App& tag, const std::string& name, const std::string& help,
                 const std::string& example) {
    auto words = std::make_shared<std::vector<std::string>>();
    auto options = std::make_shared<Options>();
    CLI::App& app = parser.AddCommand(tag, name, help, example,
                                      [&parser, words, options] { return TagItems(parser, *options, *words); });
    AddPlaces(&app, "TAG... [--] ITEM", *words, "Tags, two dashes, items; or one tag and then items");
    AddGallery(&app, options->gallery, "Gallery of the items, by id or name (default: Media)");
}

template <class Options>
void AddWithTags(Parser& parser, CLI::App& tag, const std::string& name, const std::string& help,
                 const std::string& example, const std::string& placeholder, void (*check)(const Options&) = nullptr) {
    auto [app, options] = parser.Add<Options>(tag, name, help, example, check);
    AddPlaces(app, placeholder, options->tags, kTagHelp);
    AddGallery(app, options->gallery, kOnlyGalleryHelp);
}

void AddTagCategories(Parser& parser, CLI::App& tag) {
    CLI::App& category =
        Parser::AddGroup(tag, "category", "Create, rename and delete categories of tags", "tag category create People");
    auto [create, createOptions] = parser.Add<TagCategoryCreateOptions>(category, "create", "Create a category",
                                                                        "tag category create People --gallery Media");
    AddPlace(create, "NAME", createOptions->name, "Name of the new category");
    AddGallery(create, createOptions->gallery);
    auto [rename, renameOptions] = parser.Add<TagCategoryRenameOptions>(
        category, "rename", "Rename a category; its tags stay", "tag category rename People Friends");
    AddPlace(rename, "CATEGORY", renameOptions->category, kCategoryHelp);
    AddPlace(rename, "NAME", renameOptions->name, "The new name");
    AddGallery(rename, renameOptions->gallery, kOnlyGalleryHelp);
    auto [remove, removeOptions] = parser.Add<TagCategoryDeleteOptions>(
        category, "delete", "Delete a category with its tags and their links", "tag category delete Friends");
    AddPlace(remove, "CATEGORY", removeOptions->category, kCategoryHelp);
    AddGallery(remove, removeOptions->gallery, kOnlyGalleryHelp);
}

}  // namespace

void AddTagCommands(Parser& parser) {
    CLI::App& tag = Parser::AddGroup(parser.Root(), "tag", "Tags: create them, give them to items, take them away",
                                     "tag create Beach && qfc tag add Beach \"Imported\\holiday.mp4\"");
    auto [list, listOptions] =
        parser.Add<TagListOptions>(tag, "list", "List tags and how many items carry each", "tag list --gallery Media");
    AddGallery(list, listOptions->gallery, kOnlyGalleryHelp);
    auto [create, createOptions] =
        parser.Add<TagCreateOptions>(tag, "create", "Create a tag", "tag create Beach --category Places");
    AddPlace(create, "NAME", createOptions->name, "Name of the new tag");
    create->add_option("--category", createOptions->category, "Category; made when missing (default: My tags)")
        ->type_name("NAME")
        ->check(SomeCategory);
    AddGallery(create, createOptions->gallery);
    auto [rename, renameOptions] =
        parser.Add<TagRenameOptions>(tag, "rename", "Rename a tag", "tag rename Beach Seaside --gallery Media");
    AddPlace(rename, "TAG", renameOptions->tag, kTagHelp);
    AddPlace(rename, "NAME", renameOptions->name, "The new name");
    AddGallery(rename, renameOptions->gallery, kOnlyGalleryHelp);
    AddWithTags<TagDeleteOptions>(parser, tag, "delete", "Delete tags with their links",
                                  "tag delete Seaside --gallery Media", "TAG");
    AddTagCategories(parser, tag);
    AddTagItems<TagAddOptions>(parser, tag, "add", "Give tags to items",
                               "tag add Beach Summer -- \"Imported\\holiday.mp4\"");
    AddTagItems<TagRemoveOptions>(parser, tag, "remove", "Take tags away from items",
                                  "tag remove Beach \"Imported\\holiday.mp4\"");
    AddWithTags<TagMergeOptions>(parser, tag, "merge", "Give the items of tags another one instead; the last tag stays",
                                 "tag merge Sea Shore Beach --gallery Media", "SOURCE... TARGET",
                                 [](const TagMergeOptions& o) {
                                     if (o.tags.size() < 2) throw WrongUsage("merge wants a source and a target");
                                 });
    AddWithTags<TagCheckOptions>(parser, tag, "check", "Select tags", "tag check Beach --gallery Media", "TAG");
    AddWithTags<TagUncheckOptions>(parser, tag, "uncheck", "Take tags out of the selection",
                                   "tag uncheck Beach --gallery Media", "TAG");
    parser.Add<TagDefaultsOptions>(
        tag, "defaults",
        "Make the categories and tags that a library begins with; renamed ones get their old names back",
        "tag defaults");
}

}  // namespace qfc::host
