#pragma once

#include "script/ScriptDebugger.h"

class QSettings;

namespace vrk {

/// Breakpoints in the settings of the window, an entry a script.
class BreakpointSettings final : public BreakpointStore {
  public:
    explicit BreakpointSettings(QSettings& settings) : settings_(settings) {}
    std::set<int> breakpoints(const std::string& path) const override;
    void keepBreakpoints(const std::string& path, const std::set<int>& lines) override;

  private:
    QSettings& settings_;
};

} // namespace vrk
