#include "tests/support/SqlTrace.h"

#include <algorithm>
#include <mutex>
#include <sqlite3.h>
#include <stdexcept>

namespace qfc::test {
namespace {

// Connections outlive the trace object, so what they report to is not part of it.
struct Recorder {
    std::mutex mutex;
    bool active = false;
    std::vector<std::string> statements;
    sqlite3* connection = nullptr;
};

Recorder& TheRecorder() {
    static Recorder recorder;
    return recorder;
}

int OnStatement(unsigned, void*, void*, void* sql) {
    Recorder& recorder = TheRecorder();
    const std::lock_guard lock(recorder.mutex);
    const std::string_view text = static_cast<const char*>(sql);
    if (recorder.active && text.substr(0, 2) != "--") recorder.statements.emplace_back(text);
    return 0;
}

int OnOpen(sqlite3* connection, char**, const sqlite3_api_routines*) {
    Recorder& recorder = TheRecorder();
    const std::lock_guard lock(recorder.mutex);
    if (recorder.active) recorder.connection = connection;
    sqlite3_trace_v2(connection, SQLITE_TRACE_STMT, &OnStatement, nullptr);
    return SQLITE_OK;
}

using AutoExtension = void (*)();

}  // namespace

SqlTrace::SqlTrace() {
    Recorder& recorder = TheRecorder();
    const std::lock_guard lock(recorder.mutex);
    if (recorder.active) throw std::logic_error("one SqlTrace at a time");
    recorder.active = true;
    recorder.statements.clear();
    recorder.connection = nullptr;
    sqlite3_auto_extension(reinterpret_cast<AutoExtension>(&OnOpen));
}

SqlTrace::~SqlTrace() {
    sqlite3_cancel_auto_extension(reinterpret_cast<AutoExtension>(&OnOpen));
    Recorder& recorder = TheRecorder();
    const std::lock_guard lock(recorder.mutex);
    recorder.active = false;
}

std::vector<std::string> SqlTrace::Statements() const {
    const std::lock_guard lock(TheRecorder().mutex);
    return TheRecorder().statements;
}

int SqlTrace::Count(std::string_view text) const {
    const auto statements = Statements();
    return static_cast<int>(std::count(statements.begin(), statements.end(), text));
}

int SqlTrace::CountStartingWith(std::string_view text) const {
    const auto statements = Statements();
    return static_cast<int>(std::count_if(statements.begin(), statements.end(), [&](const std::string& statement) {
        return std::string_view(statement).substr(0, text.size()) == text;
    }));
}

void SqlTrace::Clear() {
    const std::lock_guard lock(TheRecorder().mutex);
    TheRecorder().statements.clear();
}

sqlite3* SqlTrace::Connection() const {
    const std::lock_guard lock(TheRecorder().mutex);
    return TheRecorder().connection;
}

}  // namespace qfc::test
