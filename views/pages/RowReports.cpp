#include "views/pages/RowReports.h"

#include "script/frmScriptOps.h"

namespace vrk {

RowReports::RowReports(hid::WireRecorder& wire, frmScriptOps& panel)
    : rows_(panel.observeRows([this](int row, bool began) { rowSteps(row, began); })),
      reports_(wire.observe([this](const hid::WireEvent& event) { take(event); })) {}

void RowReports::rowSteps(int row, bool began) {
    if (began) {
        open_.push_back(++runs_);
        last_[row] = runs_;
    } else if (!open_.empty()) {
        open_.pop_back();
    }
}

void RowReports::take(const hid::WireEvent& event) {
    if (open_.empty())
        return;
    kept_.push_back({open_.back(), event});
    if (kept_.size() > kMost)
        kept_.pop_front();
}

std::vector<hid::WireEvent> RowReports::of(int row) const {
    std::vector<hid::WireEvent> events;
    const auto run = last_.find(row);
    if (run == last_.end())
        return events;
    for (const Kept& kept : kept_)
        if (kept.run == run->second)
            events.push_back(kept.event);
    return events;
}

void RowReports::forget() {
    last_.clear();
    kept_.clear();
}

} // namespace vrk
