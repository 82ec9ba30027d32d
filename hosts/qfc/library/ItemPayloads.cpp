#include "hosts/qfc/library/ItemPayloads.h"

#include "api/QFCLib.h"

#include <cstring>

namespace qfc::host {
namespace {

// The library frees payloads with its own allocators, so they have to come from there.
template <class Block, class Bytes>
Block CopyOf(const Bytes& bytes) {
    Block block(bytes.size());
    if (block) std::memcpy(block.data(), bytes.data(), bytes.size());
    return block;
}

}  // namespace

bool GiveBlackBox(CQItem& item, const std::string& text) {
    auto block = CopyOf<PlainBlock>(text);
    const auto size = static_cast<unsigned>(block.size());
    item.ChangeBlackBox(block.release(), size);
    return size == text.size();
}

bool GiveCache(CQItem& item, std::span<const std::uint8_t> dib) {
    auto block = CopyOf<GlobalBlock>(dib);
    const auto size = static_cast<unsigned>(block.size());
    if (size != dib.size()) return false;
    // A bitmap that the item refuses stays ours.
    if (!block || item.ChangeCache(block.data(), size)) {
        static_cast<void>(block.release());
        return true;
    }
    return false;
}

bool GiveFilm(CQItem& item, std::span<const std::uint8_t> film, std::uint32_t frameSize, std::uint32_t shown) {
    if (film.empty()) return true;
    auto block = CopyOf<GlobalBlock>(film);
    const auto size = static_cast<unsigned>(block.size());
    item.ChangeFilm(static_cast<unsigned char*>(block.release()), size, frameSize);
    item.GetAttrib() |= kAttribHasFilm;
    item.GetCurThumbFrameNum() = shown;
    item.GetOrgThumbFrameNum() = shown;
    return size == film.size();
}

void ReleasePayloads(CQItem& item) {
    item.ChangeBlackBox(nullptr, 0);
    item.ChangeCache(nullptr, 0);
    item.ChangeFilm(nullptr, item.GetFilmSize(), item.GetFrameSize());
}

}  // namespace qfc::host
