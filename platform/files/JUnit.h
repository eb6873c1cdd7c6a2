#pragma once

#include "platform/runtime/Clock.h"

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace vrk {

/// A judgement of a test run, as build servers show it.
struct JUnitCase {
    enum class Outcome { Pass, Failure, Error, Skipped };
    std::string name; ///< the only one of its suite
    Milliseconds lasted{0};
    Outcome outcome = Outcome::Pass;
    std::string message{}; ///< message and type of all but a pass
    std::string type{};
};

/// A test run.
struct JUnitSuite {
    std::string name; ///< also the class of its cases
    WallTime started;
    Milliseconds lasted{0};
    std::vector<std::pair<std::string, std::string>> properties;
    std::vector<JUnitCase> cases;
};

std::string junitText(const JUnitSuite& suite);

/// A report that stands beside a run and is written whole again as the run goes on, so that a program that is
/// killed leaves one that says how far it came.
class ReportFile {
  public:
    /// \param trouble hears once that the file cannot be written; the run goes on
    ReportFile(std::filesystem::path path, std::function<void(const std::string&)> trouble)
        : path_(std::move(path)), trouble_(std::move(trouble)) {}

    /// For the start of a run, where a file that cannot be written ends the command. \throws Fault
    void write(const std::string& content) const;
    void tryWrite(const std::string& content);
    /// True if the file is not what it should be.
    bool failed() const { return failed_; }

  private:
    std::filesystem::path path_;
    std::function<void(const std::string&)> trouble_;
    bool failed_ = false;
};

} // namespace vrk
