#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/library/Find.h"
#include "hosts/qfc/library/ItemPictures.h"
#include "hosts/qfc/library/Output.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/pictures/FilmStrip.h"

#include <nlohmann/json.hpp>

namespace qfc::host {

int Run(const FilmOptions& options, const Console& console) {
    RequirePictureName(options.output);
    const auto target = OutputPath(options.output);
    const Session session;
    Galleries galleries(session);
    CQItem& item = *FindItem(galleries, options.gallery, options.item).item;
    FilmStrip strip;
    strip.title = ToText(item.GetItemName());
    strip.frames = LoadFilm(item);
    if (strip.frames.empty()) throw Failure(strip.title + " has no film");
    RefuseMediaFile(galleries, target);
    WriteFilmStrip(strip, options.output);
    console.Say("wrote " + options.output);
    console.ShowJson({{"file", options.output}, {"frames", strip.frames.size()}});
    return kDone;
}

}  // namespace qfc::host
