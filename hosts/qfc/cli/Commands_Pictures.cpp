#include "hosts/qfc/cli/CommandGroups.h"
#include "hosts/qfc/cli/CommonOptions.h"
#include "hosts/qfc/cli/Parser.h"

#include <CLI/CLI.hpp>

namespace qfc::host {

void AddPictureCommands(Parser& parser) {
    parser.Add<ThumbsOptions>(parser.Root(), "thumbs", "List the stored thumbnails", "thumbs");

    auto [sheet, sheetOptions] = parser.Add<SheetOptions>(
        parser.Root(), "sheet", "Draw a contact sheet", "sheet holiday.png --folder \"2024\\Summer\" --tag Beach",
        [](const SheetOptions& o) { RequireTagForAny(o.any, o.tags); });
    AddPlace(sheet, "OUT.png", sheetOptions->output, "Picture to write");
    AddGallery(sheet, sheetOptions->gallery);
    sheet->add_option("--folder", sheetOptions->folder, "Only this folder and those below it")
        ->type_name("FOLDER")
        ->check(SomeFolder);
    AddTagFilter(sheet, sheetOptions->tags, sheetOptions->any);
    sheet->add_option("--columns", sheetOptions->columns, "Pictures in a row")->type_name("N")->check(OneOrMore);

    auto [film, filmOptions] =
        parser.Add<FilmOptions>(parser.Root(), "film", "Draw the frames of a video or a transition as a strip",
                                "film \"Imported\\holiday.mp4\" strip.png");
    AddPlace(film, "ITEM", filmOptions->item, kItemHelp);
    AddPlace(film, "OUT.png", filmOptions->output, "Picture to write");
    AddGallery(film, filmOptions->gallery);
}

}  // namespace qfc::host
