// The kinds of effects that keep to the interface.
#include "tests/qfc/plugins/EffectPlugin.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace qfc::test::plugin {

namespace {

std::uint8_t Byte(double value) { return static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0)); }

void Copy(const Instance& instance, double, const std::uint8_t* a, const std::uint8_t*, std::uint8_t* out) {
    std::memcpy(out, a, 4 * instance.Pixels());
}

// Each component of each pixel by a function of both pictures.
template <typename Function>
void EachByte(const Instance& instance, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* out, Function f) {
    for (std::size_t i = 0; i < 4 * instance.Pixels(); ++i)
        out[i] = i % 4 == 3 ? a[i] : f(a[i], b ? b[i] : std::uint8_t{0});
}

void Invert(const Instance& instance, double, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* out) {
    EachByte(instance, a, b, out, [](std::uint8_t x, std::uint8_t) { return static_cast<std::uint8_t>(255 - x); });
}

// Brighter by its first number.
void Brighten(const Instance& instance, double, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* out) {
    EachByte(instance, a, b, out, [&](std::uint8_t x, std::uint8_t) { return Byte(x + 128 * instance.numbers[0]); });
}

// Needs both of its parameters.
void BrightenIfOn(const Instance& instance, double, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* out) {
    const double more = instance.numbers[1] >= 0.5 ? 128 * instance.numbers[0] : 0;
    EachByte(instance, a, b, out, [&](std::uint8_t x, std::uint8_t) { return Byte(x + more); });
}

void BrightenWithTime(const Instance& instance, double time, const std::uint8_t* a, const std::uint8_t* b,
                      std::uint8_t* out) {
    EachByte(instance, a, b, out, [&](std::uint8_t x, std::uint8_t) { return Byte(x + 100 * time); });
}

// The red component alone, wherever the colour model has it.
void RedOfRgba(const Instance& instance, double, const std::uint8_t* a, const std::uint8_t*, std::uint8_t* out) {
    for (std::size_t i = 0; i < 4 * instance.Pixels(); ++i) out[i] = i % 4 == 0 || i % 4 == 3 ? a[i] : 0;
}
void RedOfBgra(const Instance& instance, double, const std::uint8_t* a, const std::uint8_t*, std::uint8_t* out) {
    for (std::size_t i = 0; i < 4 * instance.Pixels(); ++i) out[i] = i % 4 >= 2 ? a[i] : 0;
}
void Mirror(const Instance& instance, double, const std::uint8_t* a, const std::uint8_t*, std::uint8_t* out) {
    for (std::size_t y = 0; y < instance.height; ++y)
        for (std::size_t x = 0; x < instance.width; ++x)
            std::memcpy(out + 4 * (y * instance.width + x), a + 4 * ((y + 1) * instance.width - 1 - x), 4);
}

// What moved since the last frame shows, a still picture turns grey: nothing of it is seen in the first frame alone.
void BlackFirst(const Instance& instance, double, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* out) {
    const double weight = std::min(1.0, instance.frames / 5.0);
    EachByte(instance, a, b, out, [&](std::uint8_t x, std::uint8_t) { return Byte(x + weight * (128.0 - x) / 2); });
}

// Transparent in the left half.
void Cut(const Instance& instance, double, const std::uint8_t* a, const std::uint8_t*, std::uint8_t* out) {
    for (std::size_t i = 0; i < 4 * instance.Pixels(); ++i)
        out[i] = i % 4 == 3 && i / 4 % instance.width < instance.width / 2 ? 0 : a[i];
}

// One colour at its default, so that there is nothing to look at.
void Darken(const Instance& instance, double, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* out) {
    EachByte(instance, a, b, out, [&](std::uint8_t x, std::uint8_t) { return Byte(x * (1 - instance.numbers[0])); });
}

// From the first picture to the second by its last number; backwards, the other way.
void Fade(const Instance& instance, double, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* out) {
    EachByte(instance, a, b, out,
             [&](std::uint8_t x, std::uint8_t y) { return Byte(x + (y - x) * instance.numbers[1]); });
}
void FadeBack(const Instance& instance, double, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* out) {
    EachByte(instance, a, b, out,
             [&](std::uint8_t x, std::uint8_t y) { return Byte(y + (x - y) * instance.numbers[1]); });
}
// A parameter whose ends are the pictures, and nothing lies between.
void Jump(const Instance& instance, double, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* out) {
    EachByte(instance, a, b, out, [&](std::uint8_t x, std::uint8_t y) { return instance.numbers[0] < 0.5 ? x : y; });
}
void Multiply(const Instance& instance, double, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* out) {
    EachByte(instance, a, b, out, [](std::uint8_t x, std::uint8_t y) { return Byte(x * y / 255.0); });
}
// The second picture where there is one, over the first.
void Over(const Instance& instance, double, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* out) {
    for (std::size_t i = 0; i < instance.Pixels(); ++i) {
        const double weight = b[4 * i + 3] / 255.0;
        for (std::size_t c = 0; c < 3; ++c) out[4 * i + c] = Byte(a[4 * i + c] * (1 - weight) + b[4 * i + c] * weight);
        out[4 * i + 3] = 255;
    }
}
// The first picture unless its number says otherwise.
void MultiplyIfMoved(const Instance& instance, double time, const std::uint8_t* a, const std::uint8_t* b,
                     std::uint8_t* out) {
    if (instance.numbers[0] == 0.5) {
        Multiply(instance, time, a, b, out);
    } else {
        Copy(instance, time, a, b, out);
    }
}

const std::vector<Parameter> kAllTypes = {{"Amount", F0R_PARAM_DOUBLE, "How much"},
                                          {"Switch", F0R_PARAM_BOOL, "Whether"},
                                          {"Colour", F0R_PARAM_COLOR, "Which"},
                                          {"Place", F0R_PARAM_POSITION, "Where"},
                                          {"Text", F0R_PARAM_STRING, nullptr}};
const std::vector<Parameter> kAmount = {{"Amount", F0R_PARAM_DOUBLE, ""}};
const std::vector<Parameter> kAmountAndSwitch = {{"Amount", F0R_PARAM_DOUBLE, ""}, {"On", F0R_PARAM_BOOL, ""}};
const std::vector<Parameter> kTwoNumbers = {{"Softness", F0R_PARAM_DOUBLE, ""}, {"Progress", F0R_PARAM_DOUBLE, ""}};

Effect Filter(Paint paint, std::vector<Parameter> parameters = {}, std::vector<double> defaults = {}) {
    Effect effect;
    effect.parameters = std::move(parameters);
    effect.defaults = std::move(defaults);
    effect.paint = paint;
    return effect;
}

Effect OfType(int type, Effect effect) {
    effect.type = type;
    return effect;
}

Effect Mixer(Paint paint, std::vector<Parameter> parameters = {}, std::vector<double> defaults = {}) {
    return OfType(F0R_PLUGIN_TYPE_MIXER2, Filter(paint, std::move(parameters), std::move(defaults)));
}

Effect OfModel(int colourModel, Effect effect) {
    effect.colourModel = colourModel;
    return effect;
}

Effect OfVersion(int version, Effect effect) {
    effect.version = version;
    return effect;
}

}  // namespace

std::vector<Effect> EffectsOf(std::string_view kind) {
    struct Row {
        std::string_view kind;
        std::vector<Effect> effects;
    };
    const Row rows[] = {
        {"tint", {Filter(Invert, kAllTypes, {0.75, 1})}},
        {"dangling", {Filter(Invert, kAllTypes)}},
        {"nan", {Filter(Invert, kAmount, {std::nan("")})}},
        {"quiet", {Filter(Brighten, kAmount)}},
        {"hidden", {Filter(BrightenIfOn, kAmountAndSwitch)}},
        {"dark", {Filter(Darken, kAmount, {1})}},
        {"clock", {Filter(BrightenWithTime)}},
        {"slowly", {Filter(BlackFirst)}},
        {"cut", {Filter(Cut)}},
        {"bgra", {OfModel(F0R_COLOR_MODEL_BGRA8888, Filter(RedOfBgra))}},
        {"rgba", {Filter(RedOfRgba)}},
        {"packed", {OfModel(F0R_COLOR_MODEL_PACKED32, Filter(Mirror))}},
        {"fade", {Mixer(Fade, kTwoNumbers, {0, 0.25})}},
        {"fadeback", {Mixer(FadeBack, kTwoNumbers, {0, 0.25})}},
        {"jump", {Mixer(Jump, kAmount)}},
        {"multiply", {Mixer(Multiply)}},
        {"over", {Mixer(Over)}},
        {"first", {Mixer(Copy)}},
        {"moved", {Mixer(MultiplyIfMoved, kAmount)}},
        {"generator", {OfType(F0R_PLUGIN_TYPE_SOURCE, Filter(Copy))}},
        {"three", {OfType(F0R_PLUGIN_TYPE_MIXER3, Filter(Copy))}},
        {"strange", {OfType(9, Filter(Copy))}},
        {"model", {OfModel(7, Filter(Copy))}},
        {"newer", {OfVersion(2, Filter(Copy))}},
        {"late", {Filter(Copy, kAmount), Filter(Copy, kAmount), Filter(Copy, kAmount), Mixer(Fade, kTwoNumbers)}},
        {"several",
         {Filter(Invert), OfType(F0R_PLUGIN_TYPE_SOURCE, Filter(Copy)), Filter(Brighten, kAmount, {1}),
          Mixer(Multiply)}},
    };
    for (const Row& row : rows)
        if (row.kind == kind) return row.effects;
    return {Filter(Copy, kAmount)};
}

}  // namespace qfc::test::plugin
