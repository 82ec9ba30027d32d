#include "platform/text/AnsiCodec.h"
#include "platform/text/CodePages.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <iconv.h>
#include <list>
#include <mutex>
#include <new>
#include <strings.h>

namespace qfc {
namespace {

constexpr const char* kUnicode = "UTF-32LE";
constexpr std::size_t kLongestCharacter = 8;

struct CodePage {
    std::string name;
    bool isUtf8;
    bool hasHoles;  // CP1252, whose five unused bytes pass as control characters
};

bool EqualsOneOf(const char* name, std::initializer_list<const char*> others) {
    for (const char* other : others) {
        if (strcasecmp(name, other) == 0) return true;
    }
    return false;
}

const CodePage& DefaultPage() {
    static const CodePage utf8{"UTF-8", true, false};
    return utf8;
}

// Null until a host chooses a page.
std::atomic<const CodePage*> currentPage{nullptr};

const CodePage& CurrentPage() {
    const CodePage* page = currentPage.load(std::memory_order_acquire);
    return page != nullptr ? *page : DefaultPage();
}

// Pages are kept for ever, so that a thread may go on reading the one it began with.
const CodePage* KeepPage(CodePage page) {
    static std::mutex mutex;
    static auto* const pages = new std::list<CodePage>;
    const std::lock_guard lock(mutex);
    for (const CodePage& known : *pages) {
        if (known.name == page.name) return &known;
    }
    return &pages->emplace_back(std::move(page));
}

// One iconv descriptor. It must not be used by two threads at once.
class Descriptor {
public:
    Descriptor(const char* to, const char* from) : m_descriptor(iconv_open(to, from)) {}
    ~Descriptor() {
        if (IsOpen()) iconv_close(m_descriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool IsOpen() const { return m_descriptor != reinterpret_cast<iconv_t>(-1); }

    // Converts all of `input` on its own. The error number, 0 for success; `written` counts the bytes of the output.
    int Convert(std::string_view input, std::array<char, 16>& output, std::size_t& written) const {
        iconv(m_descriptor, nullptr, nullptr, nullptr, nullptr);
        char* in = const_cast<char*>(input.data());
        std::size_t inLeft = input.size();
        char* out = output.data();
        std::size_t outLeft = output.size();
        constexpr auto kFailed = static_cast<std::size_t>(-1);
        if (iconv(m_descriptor, &in, &inLeft, &out, &outLeft) == kFailed) return errno;
        // Some pages hold a letter back until they have seen whether an accent follows.
        if (iconv(m_descriptor, nullptr, nullptr, &out, &outLeft) == kFailed) return errno;
        written = output.size() - outLeft;
        return 0;
    }

private:
    iconv_t m_descriptor;
};

struct Converters {
    explicit Converters(const CodePage& of)
        : page(of), toUnicode(kUnicode, of.name.c_str()), fromUnicode(of.name.c_str(), kUnicode) {}
    bool AreOpen() const { return toUnicode.IsOpen() && fromUnicode.IsOpen(); }
    const CodePage& page;
    Descriptor toUnicode;
    Descriptor fromUnicode;
};

// Pages are known to have converters before they are chosen: what keeps one from opening is a lack of memory or file
// descriptors, and passes. Question marks in place of every name would be stored.
const Converters& ConvertersFor(const CodePage& page) {
    thread_local std::list<Converters> known;
    for (const Converters& converters : known) {
        if (&converters.page == &page) return converters;
    }
    if (!known.emplace_back(page).AreOpen()) {
        known.pop_back();
        throw std::bad_alloc();
    }
    return known.back();
}

bool IsHole(char32_t character) {
    return character == 0x81 || character == 0x8D || character == 0x8F || character == 0x90 || character == 0x9D;
}

DecodedCharacter DecodePage(const CodePage& page, const Descriptor& toUnicode, std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    if (page.hasHoles && IsHole(first)) return {first, 1, true};
    std::array<char, 16> output;
    for (std::size_t length = 1; length <= std::min(text.size(), kLongestCharacter); ++length) {
        std::size_t written = 0;
        const int error = toUnicode.Convert(text.substr(0, length), output, written);
        if (error == EINVAL) continue;
        if (error != 0 || written != 4) break;
        char32_t character = 0;
        for (int i = 3; i >= 0; --i) character = (character << 8) | static_cast<unsigned char>(output[i]);
        return {character, length, true};
    }
    return {0, 1, false};
}

bool AppendPage(const CodePage& page, const Descriptor& fromUnicode, std::string& text, char32_t character) {
    if (page.hasHoles && IsHole(character)) {
        text += static_cast<char>(character);
        return true;
    }
    std::array<char, 4> input;
    for (std::size_t i = 0; i < input.size(); ++i) input[i] = static_cast<char>((character >> (8 * i)) & 0xFF);
    std::array<char, 16> output;
    std::size_t written = 0;
    if (fromUnicode.Convert({input.data(), input.size()}, output, written) != 0 || written == 0) return false;
    text.append(output.data(), written);
    return true;
}

// Texts of the interface end at a NUL and are searched for ASCII characters, so the page has to contain ASCII. In pages
// that shift between sets some of its bytes are no characters: texts cannot be converted one by one.
bool ContainsAscii(const CodePage& page) {
    const Converters converters(page);
    if (!converters.AreOpen()) return false;
    for (char c = 1; c < 0x7F; ++c) {
        if (!DecodePage(page, converters.toUnicode, {&c, 1}).valid) return false;
    }
    for (const char* c = "AZaz09/."; *c != '\0'; ++c) {
        const DecodedCharacter decoded = DecodePage(page, converters.toUnicode, {c, 1});
        if (!decoded.valid || decoded.character != static_cast<char32_t>(*c)) return false;
    }
    return true;
}

}  // namespace

bool SetAnsiCodePage(const char* iconvName) {
    if (iconvName == nullptr || *iconvName == '\0') return false;
    if (EqualsOneOf(iconvName, {"UTF-8", "UTF8"})) {
        currentPage.store(&DefaultPage(), std::memory_order_release);
        return true;
    }
    CodePage page{iconvName, false, EqualsOneOf(iconvName, {"CP1252", "WINDOWS-1252", "MS-ANSI"})};
    if (!ContainsAscii(page)) return false;
    currentPage.store(KeepPage(std::move(page)), std::memory_order_release);
    return true;
}

const char* AnsiCodePage() { return CurrentPage().name.c_str(); }

bool IsAnsiUtf8() { return CurrentPage().isUtf8; }

DecodedCharacter DecodeAnsi(std::string_view text) {
    const CodePage& page = CurrentPage();
    return page.isUtf8 ? DecodeUtf8(text) : DecodePage(page, ConvertersFor(page).toUnicode, text);
}

bool AppendAnsi(std::string& text, char32_t character) {
    const CodePage& page = CurrentPage();
    if (!page.isUtf8) return AppendPage(page, ConvertersFor(page).fromUnicode, text, character);
    AppendUtf8(text, character);
    return true;
}

}  // namespace qfc
