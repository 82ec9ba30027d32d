// A plugin that is what its file is called, so that tests make any number of them by copying one file.
#include "tests/qfc/plugins/EffectPlugin.h"

#include <dlfcn.h>

namespace {

using namespace qfc::test::plugin;

int g_chosen = 0;

const std::vector<Effect>& Effects() {
    static const std::vector<Effect> effects = EffectsOf(Kind());
    return effects;
}

const Effect& Chosen() { return Effects()[static_cast<std::size_t>(g_chosen)]; }

int TypeOf(int parameter) { return Chosen().parameters[static_cast<std::size_t>(parameter)].type; }

}  // namespace

namespace qfc::test::plugin {

const std::string& OwnPath() {
    static const std::string path = [] {
        Dl_info info{};
        dladdr(reinterpret_cast<void*>(&f0r_init), &info);
        return std::string(info.dli_fname);
    }();
    return path;
}

const std::string& Stem() {
    static const std::string stem = [] {
        const std::string& path = OwnPath();
        const std::size_t begin = path.rfind('/') + 1;
        return path.substr(begin, path.rfind('.') - begin);
    }();
    return stem;
}

std::string_view Kind() { return std::string_view(Stem()).substr(0, Stem().find('-')); }

}  // namespace qfc::test::plugin

extern "C" {

int qfc_effect_count() {
    if (Kind() == "crowd") return 1000;
    if (Kind() == "nobody") return 0;
    return static_cast<int>(Effects().size());
}

void qfc_choose_effect(int index) { g_chosen = index; }

int f0r_init() {
    Misdeed(Kind(), Moment::Init);
    return 1;
}

void f0r_deinit() { Misdeed(Kind(), Moment::End); }

void f0r_get_plugin_info(f0r_plugin_info_t* info) {
    static std::string name;
    name = Stem();
    if (g_chosen > 0) name += " " + std::to_string(g_chosen);
    Misdeed(Kind(), Moment::Info);
    *info = {name.c_str(),
             "The tests",
             Chosen().type,
             Chosen().colourModel,
             Chosen().version,
             3,
             14,
             static_cast<int>(Chosen().parameters.size()),
             "An effect for tests"};
    MisdeedInInfo(Kind(), *info);
}

void f0r_get_param_info(f0r_param_info_t* info, int index) {
    Misdeed(Kind(), Moment::ParameterInfo);
    if (static_cast<std::size_t>(index) < Chosen().parameters.size()) {
        const Parameter& parameter = Chosen().parameters[static_cast<std::size_t>(index)];
        *info = {parameter.name, parameter.type, parameter.explanation};
    }
    MisdeedInParameter(Kind(), *info);
}

f0r_instance_t f0r_construct(unsigned int width, unsigned int height) {
    Misdeed(Kind(), Moment::Construct);
    if (Kind() == "barren") return nullptr;
    auto* const instance = new Instance;
    instance->width = width;
    instance->height = height;
    for (std::size_t i = 0; i < Chosen().defaults.size(); ++i) instance->numbers[i] = Chosen().defaults[i];
    return instance;
}

void f0r_destruct(f0r_instance_t instance) { delete static_cast<Instance*>(instance); }

void f0r_set_param_value(f0r_instance_t instance, f0r_param_t value, int index) {
    auto& to = *static_cast<Instance*>(instance);
    switch (TypeOf(index)) {
        case F0R_PARAM_COLOR:
            to.colour = *static_cast<f0r_param_color_t*>(value);
            break;
        case F0R_PARAM_POSITION:
            to.position = *static_cast<f0r_param_position_t*>(value);
            break;
        case F0R_PARAM_STRING:
            to.text = *static_cast<f0r_param_string*>(value);
            break;
        default:
            to.numbers[static_cast<std::size_t>(index)] = *static_cast<double*>(value);
    }
}

void f0r_get_param_value(f0r_instance_t instance, f0r_param_t value, int index) {
    Misdeed(Kind(), Moment::Get);
    auto& from = *static_cast<Instance*>(instance);
    switch (TypeOf(index)) {
        case F0R_PARAM_COLOR:
            *static_cast<f0r_param_color_t*>(value) = from.colour;
            break;
        case F0R_PARAM_POSITION:
            *static_cast<f0r_param_position_t*>(value) = from.position;
            break;
        case F0R_PARAM_STRING:
            *static_cast<f0r_param_string*>(value) =
                Kind() == "dangling" ? reinterpret_cast<char*>(8) : from.text.data();
            break;
        default:
            *static_cast<double*>(value) = from.numbers[static_cast<std::size_t>(index)];
    }
}

void f0r_update2(f0r_instance_t instance, double time, const std::uint32_t* first, const std::uint32_t* second,
                 const std::uint32_t*, std::uint32_t* out) {
    auto& effect = *static_cast<Instance*>(instance);
    Misdeed(Kind(), Moment::Update);
    ++effect.frames;
    const auto* const a = reinterpret_cast<const std::uint8_t*>(first);
    const auto* const b = reinterpret_cast<const std::uint8_t*>(second);
    Chosen().paint(effect, time, a, b, reinterpret_cast<std::uint8_t*>(out));
    MisdeedInFrame(Kind(), effect.Pixels(), out);
}

void f0r_update(f0r_instance_t instance, double time, const std::uint32_t* in, std::uint32_t* out) {
    f0r_update2(instance, time, in, nullptr, nullptr, out);
}

}  // extern "C"
