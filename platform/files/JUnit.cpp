#include "platform/files/JUnit.h"

#include "platform/files/files.h"
#include "platform/files/markup.h"
#include "platform/runtime/Fault.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace vrk {

namespace {

std::string attribute(const char* name, const std::string& value) {
    return std::string(" ") + name + "=\"" + xmlText(value) + '"';
}

std::string seconds(Milliseconds duration) {
    constexpr double kMilliseconds = 1000;
    return doubleText(static_cast<double>(duration.count()) / kMilliseconds);
}

std::string stamp(const WallTime& time) {
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d", time.year, time.month, time.day,
                  time.hour, time.minute, time.second);
    return text.data();
}

std::string inside(const JUnitCase& one) {
    static constexpr std::array<const char*, 4> kElements = {"", "failure", "error", "skipped"};
    if (one.outcome == JUnitCase::Outcome::Pass)
        return "";
    return std::string("<") + kElements.at(static_cast<std::size_t>(one.outcome)) +
           attribute("message", one.message) + attribute("type", one.type) + "/>";
}

std::string caseText(const std::string& suite, const JUnitCase& one) {
    const std::string within = inside(one);
    return "    <testcase" + attribute("classname", suite) + attribute("name", one.name) +
           attribute("time", seconds(one.lasted)) +
           (within.empty() ? "/>\n" : ">" + within + "</testcase>\n");
}

} // namespace

std::string junitText(const JUnitSuite& suite) {
    using Outcome = JUnitCase::Outcome;
    const auto count = [&suite](Outcome outcome) {
        return decimalText(std::count_if(suite.cases.begin(), suite.cases.end(),
                                         [outcome](const JUnitCase& one) { return one.outcome == outcome; }));
    };
    const std::string counts =
        attribute("tests", decimalText(static_cast<long long>(suite.cases.size()))) +
        attribute("failures", count(Outcome::Failure)) + attribute("errors", count(Outcome::Error)) +
        attribute("skipped", count(Outcome::Skipped)) + attribute("time", seconds(suite.lasted));
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + counts +
                       ">\n  <testsuite" + attribute("name", suite.name) + counts +
                       attribute("timestamp", stamp(suite.started)) + ">\n    <properties>";
    for (const auto& [name, value] : suite.properties)
        text += "<property" + attribute("name", name) + attribute("value", value) + "/>";
    text += "</properties>\n";
    for (const JUnitCase& one : suite.cases)
        text += caseText(suite.name, one);
    return text + "  </testsuite>\n</testsuites>\n";
}

void ReportFile::write(const std::string& content) const {
    replaceFile(path_, content);
}

void ReportFile::tryWrite(const std::string& content) {
    try {
        write(content);
        failed_ = false;
    } catch (const Fault& fault) {
        if (!failed_ && trouble_)
            trouble_(fault.what());
        failed_ = true;
    }
}

} // namespace vrk
