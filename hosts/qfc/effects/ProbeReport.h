#pragma once

#include "hosts/qfc/pictures/Picture.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <variant>
#include <vector>

// What is learned of an effect plugin by running it. That happens in a process of its own, since a plugin may do
// anything to the process it runs in; here are the values that come back, checked. Plain values; any thread may hold
// one.
namespace qfc::host {

// The size in which effects are shown.
inline constexpr PictureSize kEffectPictureSize = {160, 120};
inline constexpr std::size_t kTransitionFrames = 10;

// No report speaks of more.
inline constexpr std::size_t kMostEffects = 256;     // of one file
inline constexpr std::size_t kMostParameters = 256;  // of one effect

// The types of parameters, as the plugin interface numbers them.
namespace parameter_type {
inline constexpr std::uint8_t kSwitch = 0;
inline constexpr std::uint8_t kNumber = 1;
inline constexpr std::uint8_t kColour = 2;
inline constexpr std::uint8_t kPosition = 3;
inline constexpr std::uint8_t kText = 4;
}  // namespace parameter_type

struct ParameterColour {
    float red = 0, green = 0, blue = 0;
    bool operator==(const ParameterColour&) const = default;
};

struct ParameterPosition {
    double x = 0, y = 0;
    bool operator==(const ParameterPosition&) const = default;
};

// Which one it holds follows from the parameter's type; all numbers are finite, all texts UTF-8 without zeros.
using ParameterValue = std::variant<bool, double, ParameterColour, ParameterPosition, std::string>;

// The four bytes of a default in the blocks of the library: a switch and a number as a 32-bit float, a colour as red,
// green, blue and 0 in 256 steps, a position as x and y in 65,536 steps, little-endian, a text as zeros.
std::array<std::uint8_t, 4> DefaultBytes(const ParameterValue& value);

struct ProbedParameter {
    std::string name;
    std::string explanation;
    std::uint8_t type = parameter_type::kNumber;
    ParameterValue defaultValue = 0.0;  // What the plugin begins with.
};

// A parameter that was given another value than its default, so that there is something to see.
struct MovedParameter {
    std::uint16_t index = 0;  // Among the effect's parameters.
    ParameterValue value = 0.0;
};

// One filter or one transition of a file. Texts are UTF-8 without zeros; they may be empty, the name may not.
struct ProbedEffect {
    bool isTransition = false;
    std::uint16_t index = 0;  // In its file; those that are left out count, too.
    std::string name;
    std::string author;
    std::string explanation;
    std::int32_t majorVersion = 0;
    std::int32_t minorVersion = 0;
    std::uint8_t pluginType = 0;
    std::uint8_t colourModel = 0;
    std::uint32_t apiVersion = 0;
    std::vector<ProbedParameter> parameters;

    // Filters: one picture, the sample photograph with the effect. Transitions: kTransitionFrames, from the one
    // photograph to the other. Each of kEffectPictureSize.
    std::vector<Picture> pictures;
    bool dependsOnTime = false;
    bool noVisibleEffect = false;       // With the parameters' defaults; filters only.
    std::vector<MovedParameter> moved;  // The thumbnail is made with these; empty also when nothing shows anything.

    // Transitions only, as in their descriptor (api/EffectBlocks.h). The mix of progress mode 2 may show something only
    // of pictures that are partly transparent.
    std::uint8_t progressMode = 0;
    std::int16_t progressParameter = -1;
    float start = 0;
    float end = 1;
    bool fadedInputs = false;
};

// How a file is recognised as unchanged: its bytes, and its last change in nanoseconds since 1970. Zeros when it cannot
// be asked.
struct FileStamp {
    std::uint64_t size = 0;
    std::int64_t time = 0;
    bool operator==(const FileStamp&) const = default;
};
FileStamp StampOf(const std::filesystem::path& file);

struct ProbeReport {
    enum class Outcome {
        Effects,  // There is at least one.
        Skipped,  // A plugin that runs, with nothing in it that is a filter or a transition.
        Failed,   // No plugin, or one that did not come to an end as it should.
        Stopped,  // Before there was an answer, because the caller wanted it so.
        Unknown,  // Nothing is learned of the file, and that is not the plugin's fault; what is known of it stays.
    };
    Outcome outcome = Outcome::Failed;
    std::string reason;  // One line, for people; also when some effects of a file were left out.
    std::vector<ProbedEffect> effects;
    FileStamp stamp;  // Taken before the file was opened.
    // It failed because it took too long, but was not run for most of that time: it waited, or others held the machine.
    bool isStarved = false;
};

struct ProbeSettings {
    // The qfc that runs as the process of its own; empty: the program that is running.
    std::filesystem::path program;
    // Of processor time and of real time, the latter from when the plugin is loaded.
    std::chrono::milliseconds limit = std::chrono::seconds(10);
    // Raised, it ends the probe with Stopped. May be null; outlives the call.
    const std::atomic<bool>* stop = nullptr;
};

// Runs the plugin in a process of its own and waits for it. Whatever the plugin does, this returns shortly after the
// limit, and its process has ended. It cannot have started others, on systems that can forbid it (PluginLimits.h); on
// others, those that left its process group stay. Time in which this process is stopped does not count. Never throws:
// what goes wrong outside the plugin is told as Unknown, and so is a failure of a file that cannot be read, or that is
// not the same afterwards. Any thread; several may do so at once.
ProbeReport ProbeFile(const std::filesystem::path& file, const ProbeSettings& settings = {});

// The other side: whether these arguments are those of such a process, and what it does. Asked first of all by main(),
// before anything of the library. The command that users give, `qfc effects probe FILE`, calls ProbeFile instead and
// shows the report.
bool IsProbeProcess(int argc, const char* const* argv);
int RunProbeProcess(int argc, const char* const* argv);
// Whether this process is one that RunProbeProcess was called in.
bool IsPluginsProcess();

}  // namespace qfc::host
