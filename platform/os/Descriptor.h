#pragma once

#include <string>
#include <string_view>
#include <utility>

struct stat;

namespace qfc {

// An open file that closes with the object. Each object belongs to one thread at a time.
class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor() { Close(); }
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&&) = delete;

    int Get() const { return m_number; }
    bool IsOpen() const { return m_number >= 0; }
    // Some file systems report a failed write only here.
    bool Close();

private:
    int m_number;
};

// Writes all of it, going on after interruptions. False: errno tells why.
bool WriteAll(const Descriptor& file, std::string_view bytes);

// Gives the file the owner and the group of another one, or the group alone. False where not even that is allowed.
bool TakeOwnersOf(const Descriptor& file, const struct stat& other);

}  // namespace qfc
