#include "hosts/qfc/commands/Describe.h"

#include "hosts/qfc/commands/TagText.h"
#include "hosts/qfc/library/Galleries.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"
#include "items/CQItem.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <sstream>

namespace qfc::host {

std::string TimeText(std::uint64_t seconds) {
    using namespace std::chrono;
    // Far beyond any camera's clock; a calendar of ints has an end.
    constexpr std::uint64_t kYear9999 = 253402300799;
    const sys_seconds time{std::chrono::seconds(static_cast<std::int64_t>(std::min(seconds, kYear9999)))};
    const sys_days day = floor<days>(time);
    const year_month_day date{day};
    const hh_mm_ss clock{time - day};
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), clock.hours().count(),
                       clock.minutes().count(), clock.seconds().count());
}

std::optional<std::string> SortDate(const CQItem& item) {
    std::istringstream description(ToText(item.GetDescription()));
    std::array<int, 12> date{};
    for (int& number : date) {
        if (!(description >> number)) return std::nullopt;
    }
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", date[0], date[1], date[2], date[3], date[4], date[5]);
}

Json ItemJson(CQGallery& gallery, const CQItem& item) {
    const auto date = SortDate(item);
    return {{"guid", GuidToText(item.GetUniqueID())},
            {"name", ShownName(item)},
            {"kind", KindOf(item)},
            {"file", ToText(item.GetFileName())},
            {"timestamp", item.fnGetTimeStamp()},
            {"time", TimeText(item.fnGetTimeStamp())},
            {"date", date ? Json(*date) : Json(nullptr)},
            {"gallery", Galleries::NameOf(gallery).name},
            {"paths", PathsOf(gallery, item)}};
}

Json ItemJson(CQGallery& gallery, const CQItem& item, const Tags& tags) {
    Json json = ItemJson(gallery, item);
    json["tags"] = TagsJson(tags.Of(item));
    return json;
}

Json FolderJson(const CQFolder& folder) {
    return {
        {"name", ShownComponentsOf(folder).empty() ? ToText(folder.GetFolderName()) : ShownComponentsOf(folder).back()},
        {"row", folder.GetDBId()},
        {"path", PathOf(folder)}};
}

std::string ItemLine(const CQItem& item, const std::string& name) {
    return ItemLine(item, name, TimeText(item.fnGetTimeStamp()));
}

std::string ItemLine(const CQItem& item, const std::string& name, const std::string& time) {
    return fmt::format("{:<5}  {:<19}  {}  {}", KindOf(item), time, GuidToText(item.GetUniqueID()), name);
}

}  // namespace qfc::host
