#pragma once

#include "hosts/qfc/pictures/Picture.h"

#include <cstdint>
#include <string_view>

namespace qfc::host {

struct Colour {
    std::uint32_t rgb = 0;  // 0xRRGGBB
    double opacity = 1;
};

struct Box {
    double x = 0, y = 0, width = 0, height = 0;
    Box Shrunk(double by) const { return {x + by, y + by, width - 2 * by, height - 2 * by}; }
};

enum class Align { Left, Centre, Right };
enum class Cut { Middle, End, Start };  // where a text too long for its box loses characters to an ellipsis

struct TextStyle {
    double size = 12;  // pixels
    Colour colour;
    bool bold = false;
    Align align = Align::Left;
    Cut cut = Cut::End;
};

// The few shapes that sheets and strips are made of, so that what stands where can be looked at without a picture. One
// thread at a time.
class Drawing {
public:
    Drawing() = default;
    virtual ~Drawing() = default;
    Drawing(const Drawing&) = delete;
    Drawing& operator=(const Drawing&) = delete;

    virtual void FillBox(Box box, double radius, Colour colour) = 0;
    virtual void FillGradient(Box box, double radius, Colour top, Colour bottom) = 0;
    virtual void OutlineBox(Box box, double radius, double width, Colour colour) = 0;

    // A soft shadow around a box that is drawn over it afterwards.
    virtual void Shadow(Box box, double radius, double reach) = 0;

    // The whole picture into the box, with round corners.
    virtual void DrawPicture(const Picture& picture, Box box, double radius) = 0;

    // One line, centred in the box's height.
    virtual void DrawText(std::string_view text, Box box, const TextStyle& style) = 0;
    virtual double TextWidth(std::string_view text, const TextStyle& style) const = 0;

    virtual void FillTriangle(Box box, Colour colour) = 0;  // pointing right, as on a button that plays
    virtual void FillNote(Box box, Colour colour) = 0;      // a quaver
};

}  // namespace qfc::host
