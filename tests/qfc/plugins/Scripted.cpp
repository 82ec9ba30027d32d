// An effect file whose effects stand in words behind its own end, one a line:
//   EFFECTS:
//   filter Glow | filter of something | transition Wipe | still Half | turned Half | generator Noise | slow
// The still one is a transition that shows its first picture alone, the turned one does until its parameter is moved.
// So a copy of this file becomes any file that a test needs. "slow" takes its time with every effect behind it. "gate"
// makes a file of its own name with ".begun" behind it, and waits for one with ".go".
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <dlfcn.h>
#include <fstream>
#include <inttypes.h>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#pragma GCC visibility push(default)

// What it includes itself is included above: its own functions are C, which it does not say.
extern "C" {
#include <frei0r.h>
}

namespace {

struct Effect {
    int type = F0R_PLUGIN_TYPE_FILTER;
    std::string name;
    bool isSlow = false;
    bool isStill = false;
    bool isTurned = false;
};

std::vector<Effect> g_effects;
std::size_t g_chosen = 0;

struct Instance {
    std::size_t pixels;
    double position = 0;
};

std::string OwnPath() {
    Dl_info info{};
    dladdr(reinterpret_cast<const void*>(&OwnPath), &info);
    return info.dli_fname;
}

std::string OwnBytes() {
    std::ifstream file(OwnPath(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WaitAtGate() {
    std::ofstream begun(OwnPath() + ".begun");
    while (!std::ifstream(OwnPath() + ".go")) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void ReadScript() {
    const std::string bytes = OwnBytes();
    const std::size_t begin = bytes.rfind("\nEFFECTS:\n");
    if (begin == std::string::npos) return;
    std::istringstream script(bytes.substr(begin + 10));
    bool isSlow = false;
    for (std::string line; std::getline(script, line);) {
        const std::string kind = line.substr(0, line.find(' '));
        if (kind == "slow") isSlow = true;
        if (kind == "gate") WaitAtGate();
        if (kind.size() == line.size()) continue;
        const bool isStill = kind == "still";
        const bool isTurned = kind == "turned";
        const bool isMixer = kind == "transition" || isStill || isTurned;
        const int type = isMixer               ? F0R_PLUGIN_TYPE_MIXER2
                         : kind == "generator" ? F0R_PLUGIN_TYPE_SOURCE
                                               : F0R_PLUGIN_TYPE_FILTER;
        g_effects.push_back({type, line.substr(kind.size() + 1), isSlow, isStill, isTurned});
    }
}

std::uint32_t Mixed(std::uint32_t a, std::uint32_t b, double position) {
    std::uint32_t mixed = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        const double from = (a >> shift) & 255U;
        const double to = (b >> shift) & 255U;
        mixed |= static_cast<std::uint32_t>(from + (to - from) * position + 0.5) << shift;
    }
    return mixed;
}

}  // namespace

extern "C" {

int qfc_effect_count() { return static_cast<int>(g_effects.size()); }
void qfc_choose_effect(int index) { g_chosen = static_cast<std::size_t>(index); }

int f0r_init() {
    ReadScript();
    return 1;
}
void f0r_deinit() {}

void f0r_get_plugin_info(f0r_plugin_info_t* info) {
    static const Effect nothing;
    const Effect& effect = g_chosen < g_effects.size() ? g_effects[g_chosen] : nothing;
    if (effect.isSlow) std::this_thread::sleep_for(std::chrono::seconds(5));
    *info = {effect.name.c_str(),  "Tester", effect.type, F0R_COLOR_MODEL_RGBA8888,
             FREI0R_MAJOR_VERSION, 1,        2,           effect.type == F0R_PLUGIN_TYPE_MIXER2 ? 1 : 0,
             "Made for tests"};
}
void f0r_get_param_info(f0r_param_info_t* info, int) { *info = {"position", F0R_PARAM_DOUBLE, "How far it is"}; }

f0r_instance_t f0r_construct(unsigned int width, unsigned int height) {
    return new Instance{static_cast<std::size_t>(width) * height};
}
void f0r_destruct(f0r_instance_t instance) { delete static_cast<Instance*>(instance); }
void f0r_set_param_value(f0r_instance_t instance, f0r_param_t value, int) {
    static_cast<Instance*>(instance)->position = *static_cast<const double*>(value);
}
void f0r_get_param_value(f0r_instance_t instance, f0r_param_t value, int) {
    *static_cast<double*>(value) = static_cast<Instance*>(instance)->position;
}

// The negative.
void f0r_update(f0r_instance_t instance, double, const std::uint32_t* in, std::uint32_t* out) {
    const std::size_t pixels = static_cast<Instance*>(instance)->pixels;
    for (std::size_t i = 0; i < pixels; ++i) out[i] = in[i] ^ 0x00FFFFFFU;
}
void f0r_update2(f0r_instance_t instance, double time, const std::uint32_t* first, const std::uint32_t* second,
                 const std::uint32_t*, std::uint32_t* out) {
    const auto& self = *static_cast<Instance*>(instance);
    if (second == nullptr) return f0r_update(instance, time, first, out);
    const Effect& effect = g_effects[g_chosen];
    for (std::size_t i = 0; i < self.pixels; ++i) {
        if (effect.isStill || effect.isTurned) {
            out[i] = effect.isTurned && self.position > 0 ? first[i] ^ (second[i] & 0x00FFFFFFU) : first[i];
        } else {
            out[i] = Mixed(first[i], second[i], self.position);
        }
    }
}
}

#pragma GCC visibility pop
