#include "hosts/qfc/cli/CommandLine.h"

#include "hosts/qfc/cli/Exit.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <map>
#include <utility>

namespace qfc::host {
namespace {

constexpr const char* kGalleryHelp = "Gallery by id or name (default: Media)";
constexpr const char* kItemHelp = "Item: a path below the gallery (A\\B\\name) or a GUID";
constexpr const char* kFolderHelp = "Folder: a path below the gallery (A\\B, or A/B) or #row";

constexpr const char* kTagHelp = "Tag: a name, \"Category/Tag\", \"GALLERY:Category/Tag\" or a GUID";
constexpr const char* kCategoryHelp = "Category: a name, \"GALLERY:Category\" or a GUID";
constexpr const char* kOnlyGalleryHelp = "Only this gallery, by id or name (default: all)";

const std::map<std::string, SortKey> kSortKeys{
    {"name", SortKey::Name}, {"date", SortKey::Date}, {"kind", SortKey::Kind}};

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

void AddSortKey(CLI::App& app, const std::string& flags, std::optional<SortKey>& key, const std::string& help) {
    app.add_option_function<std::string>(
           flags, [&key](const std::string& text) { key = kSortKeys.at(text); }, help)
        ->type_name("name|date|kind")
        ->check(CLI::IsMember({"name", "date", "kind"}));
}

// What is wrong with a count; what is no number at all the parser itself says.
std::string OneOrMore(const std::string& text) {
    int count = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, count);
    return error == std::errc() && stop == end && count < 1 ? "must be 1 or more" : "";
}

// An unset variable in a script must not stand for Media, which is what no gallery at all means.
std::string SomeGallery(const std::string& text) { return text.empty() ? "wants a gallery" : ""; }

// Builds the parser and keeps the options it writes to while it runs.
class Parser {
public:
    Parser() : m_app("Keeps a library of media: imports, shows, finds, orders, draws and exports it.", "qfc") {
        m_app.require_subcommand(1);
        m_app.fallthrough();
        m_app.footer(
            "Example:\n  qfc import ~/Pictures && qfc tree\n\nExit: 0 done, 1 failed or nothing found, 2 wrong usage.");
        m_dataDir =
            m_app.add_option("--data-dir", m_global.dataDir, "Folder of the library (default: the user's data folder)")
                ->type_name("DIR");
        m_app.add_option("--translate", m_global.translate, "Show translated names, from now on, or no longer")
            ->type_name("on|off")
            ->check(CLI::IsMember({"on", "off"}));
        m_app.add_flag("--json", m_global.json, "Print results for machines");
        m_app.add_flag("--quiet", m_global.quiet, "Print only what was asked for, and errors");
        AddImporting();
        AddLooking();
        AddGalleries();
        AddFolders();
        AddItems();
        AddPictures();
        AddWholeLibrary();
        AddTags();
        TakeShieldsAway(m_app);
    }

    std::variant<Invocation, LeaveNow> Read(int argc, const char* const* argv) {
        try {
            const auto* end = argv + argc;
            const auto* mark = std::find(argv + std::min(argc, 1), end, std::string_view("--"));
            m_behindMark = static_cast<std::size_t>(end - mark);
            std::vector<std::string> arguments;  // The last one first, as the parser wants them.
            while (end > mark + 1) arguments.push_back(kShield + std::string(*--end));
            while (mark > argv + 1) arguments.push_back(Shielded(*--mark));
            m_app.parse(arguments);
            // An unset variable in a script must not lead to the user's own library.
            if (m_dataDir->count() > 0 && m_global.dataDir.empty()) throw WrongUsage("--data-dir wants a folder");
            for (const auto& [app, take] : m_commands) {
                if (app->parsed()) return Invocation{m_global, take()};
            }
            return LeaveNow{kWrongUsage, "no command given", WantsJson(argc, argv)};
        } catch (const CLI::Success&) {
            const CLI::App* app = DeepestParsed();
            return LeaveNow{kDone, app->help(app->get_parent() == nullptr ? "" : Name(app->get_parent())), false};
        } catch (const CLI::ParseError& error) {
            return WronglyUsed(Reason(error), WantsJson(argc, argv));
        } catch (const WrongUsage& error) {
            return WronglyUsed(error.what(), WantsJson(argc, argv));
        }
    }

private:
    LeaveNow WronglyUsed(const std::string& reason, bool json) const {
        return {kWrongUsage, OneLine(reason) + " (see " + Name(DeepestParsed()) + " --help)", json};
    }
    // The parser sets no options when it stops early.
    static bool WantsJson(int argc, const char* const* argv) {
        const auto* end = std::find(argv, argv + argc, std::string_view("--"));
        return std::find(argv, end, std::string_view("--json")) != end;
    }

    // A command whose options live as long as the parser.
    template <class Options>
    std::pair<CLI::App*, Options*> Add(CLI::App& parent, const std::string& name, const std::string& help,
                                       const std::string& example, void (*check)(const Options&) = nullptr) {
        auto options = std::make_shared<Options>();
        CLI::App* app = parent.add_subcommand(name, help);
        app->footer("Example:\n  qfc " + example);
        m_commands.emplace_back(app, [options, check]() -> Command {
            if (check != nullptr) check(*options);
            return *options;
        });
        return {app, options.get()};
    }

    template <class Options>
    static void AddGallery(CLI::App* app, Options* options, const std::string& help = kGalleryHelp) {
        app->add_option("--gallery", options->gallery, help)->type_name("ID|NAME")->check(SomeGallery);
    }
    static CLI::Option* AddPlace(CLI::App* app, const std::string& name, std::string& value, const std::string& help) {
        return app->add_option(name, value, help)->required()->type_name("");
    }

    static void RequireTagForAny(bool any, const std::vector<std::string>& tags) {
        if (any && tags.empty()) throw WrongUsage("--any goes with --tag");
    }
    template <class Options>
    static void AddTagFilter(CLI::App* app, Options* options) {
        app->add_option("--tag", options->tags, "Only items with this tag; given several times, with all of them")
            ->type_name("TAG")
            ->expected(1)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
        app->add_flag("--any", options->any, "One of the tags is enough");
    }

    void AddImporting() {
        auto [app, options] = Add<ImportOptions>(m_app, "import", "Add media files; directories become folders",
                                                 "import holiday.mp4 ~/Pictures --folder \"2024\\Summer\"");
        app->add_option("PATH", options->paths, "Files and directories")->required()->type_name("");
        AddGallery(app, options);
        app->add_option("--folder", options->folder, "Folder to import into; made when missing")->type_name("A\\B");
        app->add_flag("--auto", options->automatic,
                      "Remember what was imported, and leave out what was remembered, though it was removed since");
    }

    void AddLooking() {
        auto [tree, treeOptions] = Add<TreeOptions>(m_app, "tree", "Show folders and items", "tree --gallery Sounds");
        AddGallery(tree, treeOptions);

        auto [list, listOptions] = Add<ListOptions>(m_app, "ls", "List a folder; unsorted is the stored order",
                                                    "ls \"2024\\Summer\" --sort date --desc", [](const ListOptions& o) {
                                                        if (o.descending && !o.sort)
                                                            throw WrongUsage("--desc goes with --sort");
                                                    });
        AddPlace(list, "FOLDER", listOptions->folder, kFolderHelp);
        AddGallery(list, listOptions);
        AddSortKey(*list, "--sort", listOptions->sort, "Sort what is shown");
        list->add_flag("--desc", listOptions->descending, "Last first");

        auto [show, showOptions] =
            Add<ShowOptions>(m_app, "show", "Show everything known of an item", "show \"Imported\\holiday.mp4\"");
        AddPlace(show, "ITEM", showOptions->item, kItemHelp);
        AddGallery(show, showOptions);

        auto [find, findOptions] =
            Add<FindOptions>(m_app, "find", "Find items by a part of their name, by tags, by kind",
                             "find holiday --tag Beach --kind video", [](const FindOptions& o) {
                                 if (!o.text && o.tags.empty() && o.kind.empty())
                                     throw WrongUsage("find wants TEXT, --tag or --kind");
                                 if (!o.text && (o.description || o.annotation))
                                     throw WrongUsage("--description and --annotation go with TEXT");
                                 RequireTagForAny(o.any, o.tags);
                             });
        find->add_option("TEXT", findOptions->text, "Text to look for, in either case")->type_name("");
        AddTagFilter(find, findOptions);
        find->add_option("--kind", findOptions->kind, "Only items of this kind")
            ->type_name("video|audio|image|other")
            ->check(CLI::IsMember({"video", "audio", "image", "other"}));
        find->add_flag("--description", findOptions->description, "Look in descriptions too");
        find->add_flag("--annotation", findOptions->annotation, "Look in annotations too");
        AddGallery(find, findOptions, "Only this gallery, by id or name (default: all)");
    }

    void AddGalleries() {
        CLI::App* gallery = m_app.add_subcommand("gallery", "Create, list and remove galleries");
        gallery->require_subcommand(1);
        gallery->footer("Example:\n  qfc gallery create Holidays");
        auto [create, createOptions] =
            Add<GalleryCreateOptions>(*gallery, "create", "Create a gallery of your own", "gallery create Holidays");
        AddPlace(create, "NAME", createOptions->name, "Name of the new gallery");
        Add<GalleryListOptions>(*gallery, "list", "List the galleries", "gallery list");
        auto [remove, removeOptions] = Add<GalleryRemoveOptions>(
            *gallery, "rm", "Remove a gallery with all its folders and items", "gallery rm Holidays");
        AddPlace(remove, "ID|NAME", removeOptions->gallery, "The gallery, by id or name")->check(SomeGallery);
    }

    void AddFolders() {
        auto [make, makeOptions] =
            Add<MakeFolderOptions>(m_app, "mkdir", "Make a folder and those above it", "mkdir \"2024\\Summer\"");
        AddPlace(make, "FOLDER", makeOptions->folder, "Path of the new folder below the gallery");
        AddGallery(make, makeOptions);

        auto [remove, removeOptions] =
            Add<RemoveFolderOptions>(m_app, "rmdir", "Remove a folder", "rmdir \"2024\\Summer\" --recursive");
        AddPlace(remove, "FOLDER", removeOptions->folder, kFolderHelp);
        remove->add_flag("--recursive", removeOptions->recursive, "Also when it holds items or folders");
        AddGallery(remove, removeOptions);
    }

    void AddItems() {
        const std::string either = "Item (path or GUID) or folder (path or #row)";
        auto [move, moveOptions] = Add<MoveOptions>(m_app, "mv", "Move an item to a folder, or a folder under another",
                                                    "mv \"Imported\\holiday.mp4\" \"2024\\Summer\"");
        AddPlace(move, "ITEM|FOLDER", moveOptions->what, either);
        AddPlace(move, "TARGET", moveOptions->target, "Target folder; \\ alone is the gallery itself");
        AddGallery(move, moveOptions);

        auto [rename, renameOptions] = Add<RenameOptions>(m_app, "rename", "Rename an item or a folder",
                                                          "rename \"Imported\\holiday.mp4\" \"Day one\"");
        AddPlace(rename, "ITEM|FOLDER", renameOptions->what, either);
        AddPlace(rename, "NAME", renameOptions->name, "The new name");
        AddGallery(rename, renameOptions);

        auto [remove, removeOptions] = Add<RemoveItemOptions>(
            m_app, "rm", "Remove an item: a path removes this placement, a GUID all", "rm \"Imported\\holiday.mp4\"");
        AddPlace(remove, "ITEM", removeOptions->item, kItemHelp);
        remove->add_flag("--everywhere", removeOptions->everywhere, "From every folder that holds it");
        AddGallery(remove, removeOptions);

        auto [reorder, reorderOptions] = Add<ReorderOptions>(
            m_app, "reorder", "Store another order", "reorder \"2024\\Summer\" --by date", [](const ReorderOptions& o) {
                if (o.by.has_value() == o.to.has_value()) throw WrongUsage("reorder wants either --by or --to");
                if (o.descending && !o.by) throw WrongUsage("--desc goes with --by");
            });
        AddPlace(reorder, "ITEM|FOLDER", reorderOptions->what, either);
        AddSortKey(*reorder, "--by", reorderOptions->by, "Order the items of a folder");
        reorder->add_flag("--desc", reorderOptions->descending, "Last first (with --by)");
        reorder->add_option("--to", reorderOptions->to, "New place among its neighbours, from 1")
            ->type_name("N")
            ->check(OneOrMore);
        AddGallery(reorder, reorderOptions);
    }

    void AddPictures() {
        Add<ThumbsOptions>(m_app, "thumbs", "List the stored thumbnails", "thumbs");

        auto [sheet, sheetOptions] = Add<SheetOptions>(m_app, "sheet", "Draw a contact sheet",
                                                       "sheet holiday.png --folder \"2024\\Summer\" --tag Beach",
                                                       [](const SheetOptions& o) { RequireTagForAny(o.any, o.tags); });
        AddPlace(sheet, "OUT.png", sheetOptions->output, "Picture to write");
        AddGallery(sheet, sheetOptions);
        sheet->add_option("--folder", sheetOptions->folder, "Only this folder and those below it")->type_name("FOLDER");
        AddTagFilter(sheet, sheetOptions);
        sheet->add_option("--columns", sheetOptions->columns, "Pictures in a row")->type_name("N")->check(OneOrMore);

        auto [film, filmOptions] = Add<FilmOptions>(m_app, "film", "Draw the frames of a video as a strip",
                                                    "film \"Imported\\holiday.mp4\" strip.png");
        AddPlace(film, "ITEM", filmOptions->item, kItemHelp);
        AddPlace(film, "OUT.png", filmOptions->output, "Picture to write");
        AddGallery(film, filmOptions);
    }

    void AddWholeLibrary() {
        auto [exported, exportOptions] =
            Add<ExportOptions>(m_app, "export", "Write a copy of the library to a file", "export backup.db");
        AddPlace(exported, "FILE", exportOptions->file, "File to write; replaced when it exists");

        auto [imported, importOptions] = Add<ImportLibraryOptions>(
            m_app, "import-library", "Add the galleries, folders and items of another library",
            "import-library backup.db");
        AddPlace(imported, "FILE", importOptions->file, "The other library; it is never changed");

        // A flag may be given as "--yes=no".
        auto [clear, clearOptions] =
            Add<ClearOptions>(m_app, "clear", "Empty the library; tags stay", "clear --yes", [](const ClearOptions& o) {
                if (!o.yes) throw WrongUsage("clear wants --yes");
            });
        clear->add_flag("--yes", clearOptions->yes, "Really do it")->required();

        CLI::App* translate = m_app.add_subcommand("translate", "Translated names of folders and items");
        translate->require_subcommand(1);
        translate->footer("Example:\n  qfc translate collect && qfc --translate on tree");
        Add<TranslateCollectOptions>(*translate, "collect",
                                     "Write the names that have no translation into the translation file",
                                     "translate collect");

        Add<CheckOptions>(m_app, "check", "Look for damage in the library; changes nothing", "check");
    }

    // Takes the words of "TAG... -- ITEM..." or "TAG ITEM..." apart. The parser forgets where the mark stood; but what
    // stands behind it are all the last words.
    void AddTagItems(CLI::App& tag, const std::string& name, const std::string& help, const std::string& example,
                     TagItemsOptions& (*pick)(Command&), Command (*make)()) {
        auto words = std::make_shared<std::vector<std::string>>();
        auto command = std::make_shared<Command>(make());
        CLI::App* app = tag.add_subcommand(name, help);
        app->footer("Example:\n  qfc " + example);
        app->add_option("TAG... [--] ITEM", *words, "Tags, two dashes, items; or one tag and then items")
            ->required()
            ->type_name("");
        AddGallery(app, &pick(*command), "Gallery of the items, by id or name (default: Media)");
        m_commands.emplace_back(app, [this, words, command, pick]() -> Command {
            const std::size_t items = m_behindMark > 0 ? m_behindMark - 1 : words->size() - 1;
            if (items == 0 || items >= words->size()) throw WrongUsage("wants tags and items: TAG... -- ITEM...");
            const auto split = words->end() - static_cast<std::ptrdiff_t>(items);
            pick(*command).tags.assign(words->begin(), split);
            pick(*command).items.assign(split, words->end());
            return *command;
        });
    }

    void AddTagCategories(CLI::App& tag) {
        CLI::App* category = tag.add_subcommand("category", "Create, rename and delete categories of tags");
        category->require_subcommand(1);
        category->footer("Example:\n  qfc tag category create People");
        auto [create, createOptions] = Add<TagCategoryCreateOptions>(*category, "create", "Create a category",
                                                                     "tag category create People --gallery Media");
        AddPlace(create, "NAME", createOptions->name, "Name of the new category");
        AddGallery(create, createOptions);
        auto [rename, renameOptions] = Add<TagCategoryRenameOptions>(
            *category, "rename", "Rename a category; its tags stay", "tag category rename People Friends");
        AddPlace(rename, "CATEGORY", renameOptions->category, kCategoryHelp);
        AddPlace(rename, "NAME", renameOptions->name, "The new name");
        AddGallery(rename, renameOptions, kOnlyGalleryHelp);
        auto [remove, removeOptions] = Add<TagCategoryDeleteOptions>(
            *category, "delete", "Delete a category with its tags and their links", "tag category delete Friends");
        AddPlace(remove, "CATEGORY", removeOptions->category, kCategoryHelp);
        AddGallery(remove, removeOptions, kOnlyGalleryHelp);
    }

    template <class Options>
    CLI::App* AddWithTags(CLI::App& tag, const std::string& name, const std::string& help, const std::string& example,
                          const std::string& placeholder, void (*check)(const Options&) = nullptr) {
        auto [app, options] = Add<Options>(tag, name, help, example, check);
        app->add_option(placeholder, options->tags, kTagHelp)->required()->type_name("");
        AddGallery(app, options, kOnlyGalleryHelp);
        return app;
    }

    void AddTags() {
        CLI::App* tag = m_app.add_subcommand("tag", "Tags: create them, give them to items, take them away");
        tag->require_subcommand(1);
        tag->footer("Example:\n  qfc tag create Beach && qfc tag add Beach \"Imported\\holiday.mp4\"");
        auto [list, listOptions] =
            Add<TagListOptions>(*tag, "list", "List tags and how many items carry each", "tag list --gallery Media");
        AddGallery(list, listOptions, kOnlyGalleryHelp);
        auto [create, createOptions] =
            Add<TagCreateOptions>(*tag, "create", "Create a tag", "tag create Beach --category Places");
        AddPlace(create, "NAME", createOptions->name, "Name of the new tag");
        create->add_option("--category", createOptions->category, "Category; made when missing (default: My tags)")
            ->type_name("NAME");
        AddGallery(create, createOptions);
        auto [rename, renameOptions] =
            Add<TagRenameOptions>(*tag, "rename", "Rename a tag", "tag rename Beach Seaside");
        AddPlace(rename, "TAG", renameOptions->tag, kTagHelp);
        AddPlace(rename, "NAME", renameOptions->name, "The new name");
        AddGallery(rename, renameOptions, kOnlyGalleryHelp);
        AddWithTags<TagDeleteOptions>(*tag, "delete", "Delete tags with their links", "tag delete Seaside", "TAG");
        AddTagCategories(*tag);
        AddTagItems(
            *tag, "add", "Give tags to items", "tag add Beach Summer -- \"Imported\\holiday.mp4\"",
            [](Command& c) -> TagItemsOptions& { return std::get<TagAddOptions>(c); },
            []() -> Command { return TagAddOptions{}; });
        AddTagItems(
            *tag, "remove", "Take tags away from items", "tag remove Beach \"Imported\\holiday.mp4\"",
            [](Command& c) -> TagItemsOptions& { return std::get<TagRemoveOptions>(c); },
            []() -> Command { return TagRemoveOptions{}; });
        AddWithTags<TagMergeOptions>(*tag, "merge", "Give the items of tags another one instead; the last tag stays",
                                     "tag merge Sea Shore Beach", "SOURCE... TARGET", [](const TagMergeOptions& o) {
                                         if (o.tags.size() < 2) throw WrongUsage("merge wants a source and a target");
                                     });
        AddWithTags<TagCheckOptions>(*tag, "check", "Select tags", "tag check Beach", "TAG");
        AddWithTags<TagUncheckOptions>(*tag, "uncheck", "Take tags out of the selection", "tag uncheck Beach", "TAG");
        Add<TagDefaultsOptions>(*tag, "defaults", "Make the categories and tags that a library begins with",
                                "tag defaults");
    }

    const CLI::App* DeepestParsed() const {
        const CLI::App* app = &m_app;
        for (;;) {
            const auto parsed = app->get_subcommands();
            if (parsed.empty()) return app;
            app = parsed.back();
        }
    }
    // A word where a command should stand is named; the parser only says that a command is missing.
    std::string Reason(const CLI::ParseError& error) const {
        const CLI::App* app = DeepestParsed();
        const std::vector<std::string> words = m_app.remaining(true);
        if (app->get_require_subcommand_min() == 0 || words.empty()) return error.what();
        return "there is no " + Name(app) + " " + Unshielded(words.front());
    }
    static std::string Name(const CLI::App* app) {
        return app->get_parent() == nullptr ? app->get_name() : Name(app->get_parent()) + " " + app->get_name();
    }
    static std::string OneLine(std::string text) {
        std::replace(text.begin(), text.end(), '\n', ' ');
        return text;
    }

    CLI::App m_app;
    GlobalOptions m_global;
    CLI::Option* m_dataDir = nullptr;
    std::size_t m_behindMark = 0;  // The arguments from "--" on, itself included.
    std::vector<std::pair<CLI::App*, std::function<Command()>>> m_commands;
};

}  // namespace

std::variant<Invocation, LeaveNow> ReadCommandLine(int argc, const char* const* argv) {
    Parser parser;
    return parser.Read(argc, argv);
}

}  // namespace qfc::host
