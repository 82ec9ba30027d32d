#include "hosts/qfc/cli/CommonOptions.h"

#include "hosts/qfc/cli/Exit.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <map>

namespace qfc::host {
namespace {

const std::map<std::string, SortKey> kSortKeys{
    {"name", SortKey::Name}, {"date", SortKey::Date}, {"kind", SortKey::Kind}};

}  // namespace

// What is no number at all the parser itself says.
std::string OneOrMore(const std::string& text) {
    int count = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, count);
    return error == std::errc() && stop == end && count < 1 ? "must be 1 or more" : "";
}

// An unset variable in a script must not stand for what no gallery, category or folder at all means.
std::string SomeGallery(const std::string& text) { return text.empty() ? "wants a gallery" : ""; }
std::string SomeCategory(const std::string& text) { return text.empty() ? "wants a category" : ""; }
std::string SomeFolder(const std::string& text) { return text.empty() ? "wants a folder" : ""; }

void AddGallery(CLI::App* app, std::string& gallery, const std::string& help) {
    app->add_option("--gallery", gallery, help)->type_name("ID|NAME")->check(SomeGallery);
}

CLI::Option* AddPlace(CLI::App* app, const std::string& name, std::string& value, const std::string& help) {
    return app->add_option(name, value, help)->required()->type_name("");
}

void AddPlaces(CLI::App* app, const std::string& name, std::vector<std::string>& values, const std::string& help) {
    app->add_option(name, values, help)->required()->type_name("");
}

void AddTagFilter(CLI::App* app, std::vector<std::string>& tags, bool& any) {
    app->add_option("--tag", tags, "Only items with this tag; given several times, with all of them")
        ->type_name("TAG")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app->add_flag("--any", any, "One of the tags is enough");
}

void RequireTagForAny(bool any, const std::vector<std::string>& tags) {
    if (any && tags.empty()) throw WrongUsage("--any goes with --tag");
}

void AddSortKey(CLI::App* app, const std::string& flag, std::optional<SortKey>& key, const std::string& help) {
    app->add_option_function<std::string>(
           flag, [&key](const std::string& text) { key = kSortKeys.at(text); }, help)
        ->type_name("name|date|kind")
        ->check(CLI::IsMember({"name", "date", "kind"}));
}

}  // namespace qfc::host
