#pragma once

#include "hosts/qfc/pictures/Drawing.h"

#include <string>
#include <vector>

namespace qfc::test {

// Notes what is drawn where in place of drawing it. Every letter is as wide as half its size.
class RecordedDrawing : public host::Drawing {
public:
    struct Text {
        std::string text;
        host::Box box;
        host::TextStyle style;
    };
    struct Shape {
        host::Box box;
        host::Colour colour;
    };

    void FillBox(host::Box, double, host::Colour) override {}
    void FillGradient(host::Box, double, host::Colour, host::Colour) override {}
    void OutlineBox(host::Box box, double, double, host::Colour colour) override { outlines.push_back({box, colour}); }
    void Shadow(host::Box, double, double) override {}
    void DrawPicture(const host::Picture&, host::Box box, double) override { pictures.push_back(box); }
    void DrawText(std::string_view text, host::Box box, const host::TextStyle& style) override {
        if (!text.empty()) texts.push_back({std::string(text), box, style});
    }
    double TextWidth(std::string_view text, const host::TextStyle& style) const override {
        return static_cast<double>(text.size()) * style.size / 2;
    }
    void FillTriangle(host::Box, host::Colour) override { ++triangles; }
    void FillNote(host::Box, host::Colour) override { ++notes; }

    std::vector<std::string> Words() const {
        std::vector<std::string> words;
        for (const Text& text : texts) words.push_back(text.text);
        return words;
    }
    // The first text that reads so; an empty one at no place when there is none.
    Text Find(const std::string& wanted) const {
        for (const Text& text : texts)
            if (text.text == wanted) return text;
        return {};
    }

    std::vector<Text> texts;  // without empty ones
    std::vector<Shape> outlines;
    std::vector<host::Box> pictures;
    int triangles = 0;
    int notes = 0;
};

}  // namespace qfc::test
