#pragma once

#include "hosts/qfc/media/MediaFile.h"
#include "hosts/qfc/media/SoundEnvelope.h"
#include "hosts/qfc/pictures/Picture.h"

namespace qfc::host {

// The picture that stands for a sound. Functions without state; any thread, one per file.

// The outline of the sound. Long sounds are looked at in samples spread over their length, not heard from end to end.
// Throws MediaError when nothing can be decoded. `exactSeconds` receives the length when all of it was decoded, else 0.
SoundEnvelope ReadEnvelope(MediaFile& file, double& exactSeconds);

// The outline drawn: the swing of the samples, with their mean strength brighter inside. Quiet sounds are drawn larger.
Picture DrawWaveform(const SoundEnvelope& envelope, PictureSize size);

}  // namespace qfc::host
