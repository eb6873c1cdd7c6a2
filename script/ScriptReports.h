#pragma once

#include "script/ScriptRehearsal.h"
#include "script/ScriptResults.h"

#include <string>

namespace vrk {

/// The results as JUnit XML: a case for each row with expected data and each row in error. A run that has
/// not ended says "incomplete".
std::string junitReport(const ScriptResults& results);

/// The results as one JSON object. \param rehearsal nullptr: of a real run
std::string jsonReport(const ScriptResults& results, const Rehearsal* rehearsal = nullptr);

/// `pass,line,operation,address,register,write,expected,read,verdict,ms`, a line.
const char* csvHeading();
/// The rows of a pass, a line each.
std::string csvRows(const PassResult& pass);
/// Heading and rows of all passes.
std::string csvReport(const ScriptResults& results);

} // namespace vrk
