#include "hosts/qfc/library/EffectWriter.h"

#include "api/QFCLib.h"
#include "hosts/qfc/library/EffectNames.h"
#include "hosts/qfc/library/ItemPayloads.h"
#include "hosts/qfc/library/Paths.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <utility>

namespace qfc::host {
namespace {

// The pictures of that many are in memory at a time.
constexpr std::size_t kMostOnTheWay = 16;
// The library carries an option along with a filter; frei0r has none.
constexpr unsigned kNoOption = 0;

EffectOutcome OutcomeOf(const EffectSource& source) {
    EffectOutcome outcome;
    outcome.isTransition = source.effect.isTransition;
    outcome.guid = EffectGuid(BaseNameOf(source.path), source.effect.index);
    outcome.file = source.path;
    outcome.name = EffectItemName(source.effect.name);
    return outcome;
}

bool QueueAdd(const EffectSource& source, CQGallery& gallery, const std::string& folder, CQItem& item) {
    const ULONGLONG handle = ToHandle(&gallery);
    const std::vector<CString> paths{ToCString(folder)};
    return source.effect.isTransition ? QFCLibraryManager::fnAddItemAsync_Transition(MakeTransitionRecord(source),
                                                                                     handle, paths, &item, 0) != 0
                                      : QFCLibraryManager::fnAddItemAsync_Filter(MakeFilterRecord(source), kNoOption,
                                                                                 handle, paths, &item, 0) != 0;
}

bool UpdateNow(const EffectSource& source, CQGallery& gallery, const GUID& guid, CQItem& item) {
    const ULONGLONG handle = ToHandle(&gallery);
    return source.effect.isTransition
               ? QFCLibraryManager::fnUpdateTransitionAsync(handle, &item, guid, MakeTransitionRecord(source)) != 0
               : QFCLibraryManager::fnUpdateFilterOptionAsync(handle, &item, guid, MakeFilterRecord(source),
                                                              kNoOption) != 0;
}

// The very object; added items stand at the end, unless the folder was sorted.
bool StandsIn(CQFolder& folder, const CQItem& item) {
    const std::vector<CQItem*> items = Items(folder);
    return std::find(items.rbegin(), items.rend(), &item) != items.rend();
}

// Waits until the library has run everything that was queued before.
void AwaitQueuedWork() {
    // Without a gallery this changes nothing, and it runs behind all ordinary work.
    CQItem nobody;
    QFCLibraryManager::fnUpdateTransitionAsync(0, &nobody, nobody.GetUniqueID(), {});
}

}  // namespace

EffectWriter::EffectWriter(Galleries& galleries) : m_galleries(galleries) {}

EffectWriter::~EffectWriter() { Settle(); }

EffectWriter::Shelf& EffectWriter::ShelfOf(bool isTransition) {
    Shelf& shelf = isTransition ? m_transitions : m_filters;
    if (shelf.folders) return shelf;
    Settle();
    if (shelf.gallery == nullptr) {
        shelf.gallery = &m_galleries.Open(isTransition ? kTransitionsGallery : kFiltersGallery);
    }
    shelf.folders.emplace(*shelf.gallery, FolderMaker::Names::kShown);
    return shelf;
}

void EffectWriter::Add(const EffectSource& source, const std::vector<std::string>& folder) {
    if (m_pending.size() >= kMostOnTheWay) Settle();
    Shelf& shelf = ShelfOf(source.effect.isTransition);
    Pending pending;
    pending.outcome = OutcomeOf(source);
    pending.item = MakeEffectItem(source);
    pending.folder = pending.item != nullptr ? shelf.folders->Make(folder) : nullptr;
    if (pending.folder == nullptr) {
        m_outcomes.push_back(pending.outcome);
        return;
    }
    pending.outcome.folder = JoinPath(folder);
    pending.outcome.folderRow = pending.folder->GetDBId();
    if (!QueueAdd(source, *shelf.gallery, shelf.folders->StoredPath(*pending.folder), *pending.item)) {
        m_outcomes.push_back(pending.outcome);
        return;
    }
    m_pending.push_back(std::move(pending));
}

void EffectWriter::Settle() {
    if (m_pending.empty()) return;
    AwaitQueuedWork();
    for (Pending& pending : m_pending) Conclude(pending);
    m_pending.clear();
}

void EffectWriter::Conclude(Pending& pending) {
    if (StandsIn(*pending.folder, *pending.item)) {
        ReleasePayloads(*pending.item);
        static_cast<void>(pending.item.release());  // The gallery's now.
        pending.outcome.isStored = HoldsItem(*pending.folder, pending.outcome.guid);
    }
    m_outcomes.push_back(pending.outcome);
}

void EffectWriter::Update(const KnownEffect& known, const EffectSource& source) {
    CQGallery& gallery = *ShelfOf(source.effect.isTransition).gallery;
    Settle();
    EffectOutcome outcome = OutcomeOf(source);
    const std::unique_ptr<CQItem> item = MakeEffectItem(source);
    if (item != nullptr) {
        item->GetAnnotation() = std::as_const(*known.item).GetAnnotation();
        const std::string name = ToText(known.item->GetItemName());
        if (name != EffectItemName(EffectFactsOf(*known.item).name)) item->SetItemName(known.item->GetItemName());
        outcome.isStored = UpdateNow(source, gallery, known.guid, *item);
        outcome.name = ToText(item->GetItemName());
        ReleasePayloads(*known.item);
    }
    const std::vector<CQFolder*> folders = FoldersOf(gallery, known.guid);
    if (!folders.empty()) outcome.folder = PathOf(*folders.front());
    m_outcomes.push_back(outcome);
}

void EffectWriter::ForgetFolders() {
    m_filters.folders.reset();
    m_transitions.folders.reset();
}

}  // namespace qfc::host
