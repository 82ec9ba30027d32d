#pragma once

#include <string>
#include <string_view>
#include <vector>

struct sqlite3;

namespace qfc::test {

// Records every SQL text that is sent on connections opened while it lives, as it was compiled (parameters stay '?').
// One at a time in a process. Any thread may send. RawDb connections are recorded, too: use them outside its life.
class SqlTrace {
public:
    SqlTrace();
    ~SqlTrace();
    SqlTrace(const SqlTrace&) = delete;
    SqlTrace& operator=(const SqlTrace&) = delete;

    std::vector<std::string> Statements() const;
    int Count(std::string_view text) const;
    int CountStartingWith(std::string_view text) const;
    void Clear();

    // The connection that was opened last in its life; null before.
    sqlite3* Connection() const;
};

}  // namespace qfc::test
