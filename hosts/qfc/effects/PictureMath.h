#pragma once

#include "hosts/qfc/pictures/Picture.h"

namespace qfc::host {

// What measuring effects needs of pictures. Functions without state; any thread. Pictures that are compared or blended
// have one size.

enum class Backdrop { Chequers, Black };

// A picture whose highest bytes are transparency, not multiplied into the colours, as one sees it on the backdrop.
Picture Flattened(const Picture& seeThrough, Backdrop backdrop);

// How much of the picture can be seen at all, from 0 to 1, by its highest bytes.
double Coverage(const Picture& seeThrough);

// A picture that is transparent all over, and yet has something painted on it that is not in the original, made opaque:
// whoever painted it leaves the bytes of transparency empty.
Picture OpaqueIfUnset(Picture seeThrough, const Picture& original);

// How far two pictures are from each other: the mean over all components, from 0 to 255; and the share of pixels that
// anybody would call another colour.
struct Change {
    double mean = 0;
    double share = 0;
    // Something is to be seen, be it a little everywhere or much in a corner.
    bool IsVisible() const { return mean >= 1.5 || share >= 0.001; }
};
Change ChangeBetween(const Picture& left, const Picture& right);

// Hardly anything to see: the colours are nearly the same all over.
bool IsNearlyOneColour(const Picture& picture);

// From the one (0) to the other (1).
Picture Blended(const Picture& from, const Picture& to, double progress);

// The part that begins there; it must lie within.
Picture Part(const Picture& picture, int left, int top, PictureSize size);

// Half as wide and half as high, of even sides.
Picture Halved(const Picture& picture);

// The picture becomes transparent towards one side.
enum class FadeTo { Right, Bottom };
Picture Faded(const Picture& picture, FadeTo side);

}  // namespace qfc::host
