#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/library/EffectItem.h"
#include "hosts/qfc/library/Find.h"
#include "hosts/qfc/library/ItemPictures.h"
#include "hosts/qfc/library/Output.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/media/ItemTexts.h"
#include "hosts/qfc/pictures/FilmStrip.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

// Each frame stands for an equal part of the clip; the middle of its part is what can be said of its moment.
std::vector<std::string> Captions(std::size_t frames, double duration) {
    std::vector<std::string> captions;
    if (duration <= 0) return captions;
    const double part = duration / static_cast<double>(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        captions.push_back(ShownMoment((static_cast<double>(i) + 0.5) * part, part));
    }
    return captions;
}

// A transition has no duration of its own: each of its frames says how far it is.
std::vector<std::string> Parts(std::size_t frames) {
    std::vector<std::string> captions;
    const std::size_t steps = std::max<std::size_t>(frames, 2) - 1;
    for (std::size_t i = 0; i < frames; ++i) captions.push_back(std::to_string((i * 100 + steps / 2) / steps) + " %");
    return captions;
}

std::string Detail(const MediaFacts& facts) {
    const std::string size = ShownDetail(facts);
    const std::string duration = ShownDuration(facts.duration);
    return size + (size.empty() || duration.empty() ? "" : ", ") + duration;
}

}  // namespace

int Run(const FilmOptions& options, const Console& console) {
    RequirePictureName(options.output);
    const auto target = OutputPath(options.output);
    const Session session;
    Galleries galleries(session);
    CQItem& item = *FindItem(galleries, options.gallery, options.item).item;
    FilmStrip strip;
    strip.title = ShownName(item);
    strip.frames = LoadFilm(item);
    if (strip.frames.empty()) throw Failure(strip.title + " has no film");
    const bool isTransition = item.GetItemType() == item_type::kTransition;
    const MediaFacts facts = LoadFacts(item);
    strip.detail = isTransition ? EffectFactsOf(item).progress : Detail(facts);
    // Frames that cannot be read are left out, and then nobody knows which are which.
    const bool complete = strip.frames.size() == item.GetTotalFilmFrame();
    if (complete) {
        strip.captions = isTransition ? Parts(strip.frames.size()) : Captions(strip.frames.size(), facts.duration);
    }
    RefuseMediaFile(galleries, target);
    WriteFilmStrip(strip, options.output);
    console.Say("wrote " + options.output);
    console.ShowJson({{"file", options.output},
                      {"title", strip.title},
                      {"frames", strip.frames.size()},
                      {"moments", strip.captions}});
    return kDone;
}

}  // namespace qfc::host
