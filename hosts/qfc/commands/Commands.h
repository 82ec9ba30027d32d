#pragma once

#include "hosts/qfc/cli/Console.h"
#include "hosts/qfc/cli/Options.h"

namespace qfc::host {

// The commands of qfc, one source each. Each runs to its end on the main thread, starts and stops the library itself,
// and answers the exit code; what ends it early is thrown as Failure.

int Run(const ImportOptions& options, const Console& console);
int Run(const TreeOptions& options, const Console& console);
int Run(const ListOptions& options, const Console& console);
int Run(const ShowOptions& options, const Console& console);
int Run(const FindOptions& options, const Console& console);
int Run(const GalleryCreateOptions& options, const Console& console);
int Run(const GalleryListOptions& options, const Console& console);
int Run(const GalleryRemoveOptions& options, const Console& console);
int Run(const MakeFolderOptions& options, const Console& console);
int Run(const RemoveFolderOptions& options, const Console& console);
int Run(const MoveOptions& options, const Console& console);
int Run(const RenameOptions& options, const Console& console);
int Run(const RemoveItemOptions& options, const Console& console);
int Run(const ReorderOptions& options, const Console& console);
int Run(const ThumbsOptions& options, const Console& console);
int Run(const SheetOptions& options, const Console& console);
int Run(const FilmOptions& options, const Console& console);
int Run(const ExportOptions& options, const Console& console);
int Run(const ImportLibraryOptions& options, const Console& console);
int Run(const ClearOptions& options, const Console& console);
int Run(const CheckOptions& options, const Console& console);
int Run(const TagListOptions& options, const Console& console);
int Run(const TagCreateOptions& options, const Console& console);
int Run(const TagRenameOptions& options, const Console& console);
int Run(const TagDeleteOptions& options, const Console& console);
int Run(const TagCategoryCreateOptions& options, const Console& console);
int Run(const TagCategoryRenameOptions& options, const Console& console);
int Run(const TagCategoryDeleteOptions& options, const Console& console);
int Run(const TagAddOptions& options, const Console& console);
int Run(const TagRemoveOptions& options, const Console& console);
int Run(const TagMergeOptions& options, const Console& console);
int Run(const TagCheckOptions& options, const Console& console);
int Run(const TagUncheckOptions& options, const Console& console);
int Run(const TagDefaultsOptions& options, const Console& console);
int Run(const TranslateCollectOptions& options, const Console& console);
int Run(const EffectsScanOptions& options, const Console& console);
int Run(const EffectsListOptions& options, const Console& console);
int Run(const EffectsShowOptions& options, const Console& console);
int Run(const EffectsRemoveOptions& options, const Console& console);
int Run(const EffectsClearOptions& options, const Console& console);
int Run(const EffectsProbeOptions& options, const Console& console);

}  // namespace qfc::host
