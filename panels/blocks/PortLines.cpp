#include "panels/blocks/PortLines.h"

#include "link/reportLayout.h"
#include "platform/runtime/text.h"

#include <utility>

namespace vrk {

namespace {
constexpr const char* kP0 = "80";
constexpr std::uint8_t kA0 = 0x40;
} // namespace

std::optional<std::uint8_t> PortLines::read() const {
    frmMainF340& console = services_.console();
    console.txtSFRAddress.setText(kP0);
    console.cmdGetSDFValue_Click();
    // The label knows its own exchange: where the request was not taken, the console's last reply may be one
    // of the search that Retry has run since.
    const Label& shown = console.lblSFRBuf[3];
    const auto& worth = shown.freshness();
    if (!worth || worth->state != Freshness::State::Fresh)
        return std::nullopt;
    return hexToByte(shown.caption());
}

bool PortLines::set(std::uint8_t value) const {
    frmMainF340& console = services_.console();
    console.txtSFRAddress.setText(kP0);
    console.txtSFRWRData.setText(byteToHex2(value));
    console.cmdSetSFR_Click();
    return services_.link.hidLinkCode != kLinkWriteFailed;
}

bool PortLines::send(std::uint8_t address, std::uint8_t value) const {
    modHID& link = services_.link;
    link.fillReportBuffer(0);
    link.setReportID();
    link.reportBuffer[report::kCommandByte] = static_cast<std::uint8_t>(report::Command::SfrAccess);
    link.reportBuffer[report::kSubCommandByte] = report::kWrite;
    link.reportBuffer[report::kSfrAddress] = address;
    link.reportBuffer[report::kSfrValue] = value;
    return link.writeReport();
}

RaisedA0::RaisedA0(const PortLines& port) : port_(port) {
    const auto now = port_.read();
    if (!now)
        return; // the other pins of the port are not known: none is touched
    raised_ = static_cast<std::uint8_t>(*now | kA0);
    port_.set(*raised_);
}

RaisedA0::~RaisedA0() {
    try {
        lower();
    } catch (...) {
        raised_.reset(); // the program ends under a link dialog: there is no board left to put right
    }
}

void RaisedA0::lower() {
    const auto raised = std::exchange(raised_, std::nullopt);
    if (!raised)
        return;
    const auto low = static_cast<std::uint8_t>(port_.read().value_or(*raised) & ~unsigned{kA0});
    if (!port_.set(low)) // a write is told to nobody, and no part would hear its address
        (void)port_.set(low);
}

} // namespace vrk
