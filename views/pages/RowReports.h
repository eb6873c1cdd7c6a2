#pragma once

#include "platform/hid/WireRecorder.h"
#include "platform/runtime/Signal.h"

#include <cstdint>
#include <deque>
#include <map>
#include <vector>

namespace vrk {

class frmScriptOps;

/// Remembers which reports each row of a script has moved, so that a failed cell leads to its bytes.
class RowReports {
  public:
    /// Reports that are kept; of a longer run those of the last rows.
    static constexpr std::size_t kMost = 20000;

    RowReports(hid::WireRecorder& wire, frmScriptOps& panel);

    /// Of the last time that the row ran; empty if it has not, or moved nothing.
    std::vector<hid::WireEvent> of(int row) const;
    /// Other rows stand in the table.
    void forget();

  private:
    struct Kept {
        std::uint64_t run; ///< of a row
        hid::WireEvent event;
    };
    void rowSteps(int row, bool began);
    void take(const hid::WireEvent& event);

    std::deque<Kept> kept_;
    std::vector<std::uint64_t> open_; ///< rows nest: one that samples runs the service block
    std::map<int, std::uint64_t> last_;
    std::uint64_t runs_ = 0;
    Subscription rows_;
    Subscription reports_;
};

} // namespace vrk
