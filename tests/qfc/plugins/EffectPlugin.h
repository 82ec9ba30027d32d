#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

extern "C" {
#include <frei0r.h>
}

namespace qfc::test::plugin {

const std::string& OwnPath();
// The file's name without folder and extension. What stands before the first '-' is the kind, the whole is the name of
// the effect: "tint-Warm.so" holds the filter "tint-Warm" of kind "tint".
const std::string& Stem();
std::string_view Kind();

struct Parameter {
    const char* name;
    int type;
    const char* explanation;
};

struct Instance {
    unsigned width = 0;
    unsigned height = 0;
    std::array<double, 8> numbers{};  // of parameters that are switches and numbers
    f0r_param_color_t colour{0.25f, 0.5f, 1};
    f0r_param_position_t position{0.5, 1};
    std::string text = "hello";
    int frames = 0;  // shown so far

    std::size_t Pixels() const { return std::size_t{width} * height; }
};

using Paint = void (*)(const Instance&, double time, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* out);

// An effect that keeps to the interface.
struct Effect {
    int type = F0R_PLUGIN_TYPE_FILTER;
    int colourModel = F0R_COLOR_MODEL_RGBA8888;
    int version = FREI0R_MAJOR_VERSION;
    std::vector<Parameter> parameters;
    std::vector<double> defaults;  // of the first parameters
    Paint paint = nullptr;
};

// The effects that a file of this kind holds; of an unknown kind, one that changes nothing.
std::vector<Effect> EffectsOf(std::string_view kind);

// Where plugins go wrong.
enum class Moment { Init, Info, ParameterInfo, Construct, Get, Update, End };

// What this kind does wrong at the moment; nothing for kinds that are good.
void Misdeed(std::string_view kind, Moment moment);
void MisdeedInInfo(std::string_view kind, f0r_plugin_info_t& info);
void MisdeedInParameter(std::string_view kind, f0r_param_info_t& info);
void MisdeedInFrame(std::string_view kind, std::size_t pixels, std::uint32_t* out);

}  // namespace qfc::test::plugin
