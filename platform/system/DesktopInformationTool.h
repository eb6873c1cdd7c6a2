#pragma once

#include "platform/runtime/InformationTool.h"
#include "platform/system/DesktopEntry.h"

#include <optional>
#include <string>

namespace vrk {

/// Finds the tool where the desktop keeps what it knows of its programs: in the folders `applications` of
/// `XDG_DATA_HOME` and `XDG_DATA_DIRS`. A file of an earlier folder stands for those of the same name in
/// later ones, so that a user can hide or replace what the system has.
class DesktopInformationTool final : public InformationTool {
  public:
    std::optional<std::string> name() override;
    void open() override;

  private:
    static std::optional<DesktopEntry> find();
};

} // namespace vrk
