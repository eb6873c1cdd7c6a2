#pragma once

#include "automation/BenchTarget.h"
#include "automation/RpcError.h"
#include "platform/controls/Panel.h"

#include <string>

namespace vrk {

/// "frmMotherboardDAQ2.chkPData(21)" in its pieces; a bare name has no panel.
struct Path {
    std::string panel;
    std::string name;
    int index = kNoIndex;

    bool bare() const { return panel.empty(); }
    std::string text() const;
};

/// \throws RpcError (invalid parameters) unless the text is `name`, `name(index)`, `panel.name` or
/// `panel.name(index)`.
Path parsePath(const std::string& text);

/// The functions below throw RpcError (invalid parameters) that says which piece is unknown, and what there
/// is instead where that is short.
PanelSlotBase& slotNamed(const BenchTarget& bench, const std::string& panel);
Control& controlAt(const Panel& panel, const Path& path);
const Panel::Action& actionAt(const Panel& panel, const Path& path);
const Panel::Action& moduleActionNamed(const BenchTarget& bench, const std::string& name);
/// What a path without a panel names, or the state of a panel; nullptr if the panel has no such state, as
/// when the path names a control. The index is checked against the value's bounds.
const SharedValues::Value* sharedValueAt(const BenchTarget& bench, const Path& path);

} // namespace vrk
