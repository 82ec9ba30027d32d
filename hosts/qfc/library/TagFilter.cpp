#include "hosts/qfc/library/TagFilter.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"

#include <algorithm>

namespace qfc::host {

TagFilter::TagFilter(const Session& session, std::vector<std::string> names, bool any)
    : m_names(std::move(names)), m_any(any), m_tags(session) {
    for (const std::string& name : m_names) {
        if (m_tags.Named(name, std::nullopt).empty()) throw Failure("no tag " + name);
    }
}

const std::vector<TagFilter::Choice>& TagFilter::ChoicesIn(int gallery) const {
    const auto [entry, isNew] = m_choices.try_emplace(gallery);
    if (!isNew) return entry->second;
    for (const std::string& name : m_names) {
        Choice choice;
        if (!m_tags.Named(name, gallery).empty()) {
            choice.insert(m_tags.FindFor(name, gallery).tag.m_guid);
        } else {
            for (const FoundTag& tag : m_tags.Named(name, std::nullopt)) choice.insert(tag.tag.m_guid);
        }
        entry->second.push_back(choice);
    }
    return entry->second;
}

bool TagFilter::Fits(const CQItem& item, int gallery) const {
    if (m_names.empty()) return true;
    const auto has = [&](const Choice& choice) {
        return std::ranges::any_of(choice, [&](const GUID& tag) { return item.IsTagExist(tag) != 0; });
    };
    const std::vector<Choice>& choices = ChoicesIn(gallery);
    return m_any ? std::ranges::any_of(choices, has) : std::ranges::all_of(choices, has);
}

}  // namespace qfc::host
