#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace qfc::host {

// What the user asked for, as plain values: one struct per command, made by cli/CommandLine and read by commands/.
// Texts are as typed. An empty `gallery` means that none was named.

struct GlobalOptions {
    std::string dataDir;  // Empty: the usual place.
    bool json = false;
    bool quiet = false;
    std::string translate;  // "on", "off"; empty: as it is.
};

enum class SortKey { Name, Date, Kind };

struct ImportOptions {
    std::vector<std::string> paths;
    std::string gallery;
    std::string folder;
    bool automatic = false;
};
struct TreeOptions {
    std::string gallery;
};
struct ListOptions {
    std::string gallery;
    std::string folder;
    std::optional<SortKey> sort;
    bool descending = false;
};
struct ShowOptions {
    std::string gallery;
    std::string item;
};
struct FindOptions {
    std::string gallery;
    std::optional<std::string> text;  // This, a tag or a kind is given.
    bool description = false;
    bool annotation = false;
    std::vector<std::string> tags;
    bool any = false;
    std::string kind;  // Empty: every kind.
};
struct GalleryCreateOptions {
    std::string name;
};
struct GalleryListOptions {};
struct GalleryRemoveOptions {
    std::string gallery;
};
struct MakeFolderOptions {
    std::string gallery;
    std::string folder;
};
struct RemoveFolderOptions {
    std::string gallery;
    std::string folder;
    bool recursive = false;
};
struct MoveOptions {
    std::string gallery;
    std::string what;
    std::string target;
};
struct RenameOptions {
    std::string gallery;
    std::string what;
    std::string name;
};
struct RemoveItemOptions {
    std::string gallery;
    std::string item;
    bool everywhere = false;
};
// Exactly one of `by` and `to` is set.
struct ReorderOptions {
    std::string gallery;
    std::string what;
    std::optional<SortKey> by;
    bool descending = false;
    std::optional<int> to;  // From 1.
};
struct ThumbsOptions {};
struct SheetOptions {
    std::string gallery;
    std::string folder;
    std::string output;
    int columns = 0;  // 0: as it looks best.
    std::vector<std::string> tags;
    bool any = false;
};
struct FilmOptions {
    std::string gallery;
    std::string item;
    std::string output;
};
struct ExportOptions {
    std::string file;
};
struct ImportLibraryOptions {
    std::string file;
};
struct ClearOptions {
    bool yes = false;  // Always true: the command line refuses to go without.
};
struct CheckOptions {};

struct TagListOptions {
    std::string gallery;
};
struct TagCreateOptions {
    std::string gallery;
    std::string name;
    std::string category;  // Empty: the usual one.
};
struct TagRenameOptions {
    std::string gallery;
    std::string tag;
    std::string name;
};
struct TagDeleteOptions {
    std::string gallery;
    std::vector<std::string> tags;
};
struct TagCategoryCreateOptions {
    std::string gallery;
    std::string name;
};
struct TagCategoryRenameOptions {
    std::string gallery;
    std::string category;
    std::string name;
};
struct TagCategoryDeleteOptions {
    std::string gallery;
    std::string category;
};
struct TagItemsOptions {
    std::string gallery;  // Of the items.
    std::vector<std::string> tags;
    std::vector<std::string> items;
};
struct TagAddOptions : TagItemsOptions {};
struct TagRemoveOptions : TagItemsOptions {};
struct TagMergeOptions {
    std::string gallery;
    std::vector<std::string> tags;  // Two or more; the last one is the target.
};
struct TagCheckOptions {
    std::string gallery;
    std::vector<std::string> tags;
};
struct TagUncheckOptions : TagCheckOptions {};
struct TagDefaultsOptions {};
struct TranslateCollectOptions {};

struct EffectsScanOptions {
    std::vector<std::string> paths;
    bool retry = false;
};
struct EffectsListOptions {
    bool failed = false;
};
struct EffectsShowOptions {
    std::string effect;
};
struct EffectsRemoveOptions {
    std::string file;
};
struct EffectsClearOptions {
    bool yes = false;  // Always true: the command line refuses to go without.
};
struct EffectsProbeOptions {
    std::string file;
};

using Command =
    std::variant<ImportOptions, TreeOptions, ListOptions, ShowOptions, FindOptions, GalleryCreateOptions,
                 GalleryListOptions, GalleryRemoveOptions, MakeFolderOptions, RemoveFolderOptions, MoveOptions,
                 RenameOptions, RemoveItemOptions, ReorderOptions, ThumbsOptions, SheetOptions, FilmOptions,
                 ExportOptions, ImportLibraryOptions, ClearOptions, CheckOptions, TagListOptions, TagCreateOptions,
                 TagRenameOptions, TagDeleteOptions, TagCategoryCreateOptions, TagCategoryRenameOptions,
                 TagCategoryDeleteOptions, TagAddOptions, TagRemoveOptions, TagMergeOptions, TagCheckOptions,
                 TagUncheckOptions, TagDefaultsOptions, TranslateCollectOptions, EffectsScanOptions, EffectsListOptions,
                 EffectsShowOptions, EffectsRemoveOptions, EffectsClearOptions, EffectsProbeOptions>;

struct Invocation {
    GlobalOptions global;
    Command command;
};

}  // namespace qfc::host
