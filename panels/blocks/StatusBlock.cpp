#include "panels/blocks/StatusBlock.h"

namespace vrk {

namespace {
enum StatusLamp : int { kWrite = 1, kRead = 2, kPart = 4 };
} // namespace

StatusBlock::StatusBlock(Panel& panel, BenchServices& services) : PanelBlock(panel) {
    lblUSBChk.setCaptions({"USB Attach", "Write VRK", "Read VRK", "Timer Status", "VRK COMM", "USB Comm"});
    ShpAttach.setCaption(lblUSBChk[0].caption());
    for (auto& lamp : Shape1)
        lamp->setCaption(lblUSBChk[lamp->index()].caption());
    Shp_USB_Transfer.setCaption(lblUSBChk[5].caption());
    if (services.link.attached())
        ShpAttach.setColour(Colour::LightGreen);
    attached_ = services.link.observeAttached([this] { ShpAttach.setColour(Colour::LightGreen); });
}

void StatusBlock::goodWrite() {
    Shape1[kPart].setColour(Colour::LightGreen);
    Shape1[kWrite].blinkGood();
}

void StatusBlock::goodRead() {
    Shape1[kRead].blinkGood();
    Shape1[kPart].setColour(Colour::LightGreen);
}

void StatusBlock::badWrite() {
    Shape1[kPart].setColour(Colour::LightRed);
    Shape1[kWrite].setColour(Colour::LightRed);
}

void StatusBlock::badRead() {
    Shape1[kRead].setColour(Colour::LightRed);
    Shape1[kPart].setColour(Colour::LightRed);
}

} // namespace vrk
