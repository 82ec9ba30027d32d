#pragma once

#include "QfcProcess.h"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

namespace qfc::test {

// Looks at the library of a fixture that fail after something was changed.
template <class Commands>
class WithFailingReads : public Commands {
protected:
    // Every run begins with the library as it is now.
    void KeepLibrary() const {
        std::filesystem::copy_file(this->Database(), Kept(), std::filesystem::copy_options::overwrite_existing);
    }
    // Runs the command on that library again and again, each time with another read that fails after the first write,
    // and looks after each run. Whatever fails, the command ends by itself and says why; exit: of a run in which no
    // read fails.
    void WithEachFailingRead(const std::vector<std::string>& arguments,
                             const std::function<void(const QfcResult&)>& look, int step = 1, int exit = 0) const {
        WithEachFailingRead({std::filesystem::canonical(this->Database()), 0, {}, false}, arguments, look, step, exit);
    }
    // The same from the start on: reads that a change is decided by.
    void WithEachFailingReadFromTheStart(const std::vector<std::string>& arguments,
                                         const std::function<void(const QfcResult&)>& look) const {
        WithEachFailingRead({std::filesystem::canonical(this->Database()), 0, {}, true}, arguments, look, 1, 0);
    }
    // The same of another file, named by the end of its path.
    void WithEachFailingReadOf(const std::string& file, const std::vector<std::string>& arguments,
                               const std::function<void(const QfcResult&)>& look) const {
        WithEachFailingRead({file, 0, {}, true}, arguments, look, 1, 0);
    }

private:
    void WithEachFailingRead(const FailingRead& read, const std::vector<std::string>& arguments,
                             const std::function<void(const QfcResult&)>& look, int step, int exit) const {
        int failed = 0;
        for (QfcWorld world;; failed += step) {
            std::filesystem::copy_file(Kept(), this->Database(), std::filesystem::copy_options::overwrite_existing);
            std::filesystem::remove(this->m_folder / "mark");
            world.failingRead = {read.file, failed + 1, this->m_folder / "mark", read.fromStart};
            const QfcResult result = this->Qfc(arguments, world);
            SCOPED_TRACE("read " + std::to_string(failed + 1) + ": " + result.out + result.err);
            const bool hasFailed = std::filesystem::exists(this->m_folder / "mark");
            EXPECT_TRUE(result.exit == exit || (result.exit == 1 && hasFailed)) << result.exit;
            std::istringstream errors(result.err);
            for (std::string line; std::getline(errors, line);) EXPECT_EQ(line.substr(0, 5), "qfc: ");
            if (!hasFailed) break;
            look(result);
        }
        EXPECT_GT(failed, 0);
    }

    std::string Kept() const { return this->m_folder / "before.db"; }
};

}  // namespace qfc::test
