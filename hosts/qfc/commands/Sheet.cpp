#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/library/EffectItem.h"
#include "hosts/qfc/library/Find.h"
#include "hosts/qfc/library/ItemPictures.h"
#include "hosts/qfc/library/Output.h"
#include "hosts/qfc/library/Paths.h"
#include "hosts/qfc/library/TagFilter.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/media/ItemTexts.h"
#include "hosts/qfc/pictures/ContactSheet.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <set>

namespace qfc::host {
namespace {

struct Shown {
    std::vector<CQItem*> items;
    std::vector<SheetCell> cells;
};

bool IsEffect(const CQItem& item) {
    return item.GetItemType() == item_type::kVideoFilter || item.GetItemType() == item_type::kTransition;
}

SheetCell CellOf(CQItem& item, const std::string& section) {
    SheetCell cell;
    cell.section = section;
    cell.name = ShownName(item);
    if (IsEffect(item)) {
        const EffectFacts facts = EffectFactsOf(item);
        cell.detail = facts.progress.empty() ? facts.detail : facts.progress;
        return cell;
    }
    const MediaFacts facts = LoadFacts(item);
    cell.detail = ShownDetail(facts);
    const std::string kind = KindOf(item);
    if (kind == "video") cell.badge = SheetBadge::Film;
    if (kind == "audio") cell.badge = SheetBadge::Sound;
    if (facts.duration > 0 && kind != "image") cell.duration = ShownDuration(facts.duration);
    return cell;
}

// What stands over the items of a folder: its path below the one that the sheet shows.
std::string Heading(const CQFolder& start, const CQFolder& folder) {
    const std::vector<std::string> path = ShownComponentsOf(folder);
    const auto skipped = static_cast<std::ptrdiff_t>(std::min(ComponentsOf(start).size(), path.size()));
    return JoinPath({path.begin() + skipped, path.end()});
}

// Each item once, under the first folder that holds it.
Shown Collect(CQFolder& start, const TagFilter& filter, int gallery) {
    Shown shown;
    std::set<GUID> seen;
    for (CQFolder* folder : WholeTree(start)) {
        for (CQItem* item : Items(*folder)) {
            if (!filter.Fits(*item, gallery) || !seen.insert(item->GetUniqueID()).second) continue;
            shown.items.push_back(item);
            shown.cells.push_back(CellOf(*item, Heading(start, *folder)));
        }
    }
    return shown;
}

// A little wider than high, and no wider than a screen shows well.
int FittingColumns(std::size_t count) {
    const int columns = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(count) * 1.4)));
    return std::clamp(columns, 1, 8);
}

FoundFolder StartOf(Galleries& galleries, const SheetOptions& options) {
    if (!options.folder.empty()) return FindFolderOrRoot(galleries, options.gallery, options.folder);
    CQGallery* gallery = galleries.Find(options.gallery);
    if (gallery == nullptr) throw Failure("nothing found: the gallery has not been used yet");
    return {gallery, gallery};
}

}  // namespace

int Run(const SheetOptions& options, const Console& console) {
    if (options.columns > MaxSheetColumns()) {
        throw WrongUsage("at most " + std::to_string(MaxSheetColumns()) + " columns fit a picture");
    }
    RequirePictureName(options.output);
    const Session session;
    Galleries galleries(session);
    const FoundFolder start = StartOf(galleries, options);
    const TagFilter filter(session, options.tags, options.any);
    Shown shown = Collect(*start.folder, filter, Galleries::NameOf(*start.gallery).id);
    if (shown.items.empty()) throw Failure("nothing to draw: no items");

    ContactSheet sheet;
    // Galleries are shown as they are named on the command line.
    sheet.title = start.folder == start.gallery ? Galleries::NameOf(*start.gallery).name : ShownName(*start.folder);
    sheet.subtitle = Counted(shown.items.size(), "item");
    sheet.columns = options.columns > 0 ? options.columns : FittingColumns(shown.items.size());
    sheet.cells = std::move(shown.cells);
    sheet.picture = [&](std::size_t cell) { return LoadThumbnail(*shown.items[cell]); };
    for (const std::string& file : ContactSheetFiles(sheet, options.output)) {
        RefuseMediaFile(galleries, OutputPath(file));
    }
    const std::vector<std::string> files = WriteContactSheet(sheet, options.output);
    for (const std::string& file : files) console.Say("wrote " + file);
    console.ShowJson(
        {{"files", files}, {"title", sheet.title}, {"items", shown.items.size()}, {"columns", sheet.columns}});
    return kDone;
}

}  // namespace qfc::host
