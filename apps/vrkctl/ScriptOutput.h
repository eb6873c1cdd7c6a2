#pragma once

#include "apps/vrkctl/Options.h"
#include "script/ScriptRehearsal.h"
#include "script/ScriptResults.h"

namespace vrk {

/// What a script's run puts on stdout: one JSON object at the end, CSV rows at the end of each pass, or a
/// line for people behind each row.
class ScriptOutput {
  public:
    ScriptOutput(const Options& options, const ScriptOptions& script, const ScriptResults& results);

    void begin() const;
    /// A row has ended: the one that the results describe.
    void row(const RowResult& row) const;
    void pass(const PassResult& pass) const;
    /// \param rehearsal nullptr: of a real run
    void end(const Rehearsal* rehearsal = nullptr) const;

  private:
    bool forPeople() const { return !json_ && !csv_; }

    bool json_;
    bool csv_;
    const ScriptResults& results_;
};

} // namespace vrk
