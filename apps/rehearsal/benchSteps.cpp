#include "apps/rehearsal/benchSteps.h"

#include "platform/runtime/text.h"

namespace vrk {

namespace {

constexpr int kVccOn = 0;

int startRow(ScriptedBus bus) {
    return bus == ScriptedBus::I2C ? frmStartup::kI2C : frmStartup::kSPI;
}

bool hasPanel(Bench& bench, int row) {
    for (const PanelRow& entry : bench.panelTable())
        if (entry.startRow == row)
            return true;
    return false;
}

} // namespace

const char* busName(ScriptedBus bus) {
    return bus == ScriptedBus::I2C ? "i2c" : "spi";
}

BusMode busModeOf(ScriptedBus bus) {
    return {bus == ScriptedBus::I2C, bus == ScriptedBus::SPI};
}

void choosePart(Panel& panel, const std::string& part, const BenchStep& step) {
    for (Control* control : panel.controls())
        if (control->kind() == Control::Kind::MenuEntry && !part.empty() && control->caption() == part)
            step([control] { return static_cast<MenuEntry*>(control)->userClick(); }, "choosing the part");
}

void bringUp(Bench& bench, ScriptedBus bus, const std::string& part, const BenchStep& step) {
    const int row = startRow(bus);
    const bool panel = hasPanel(bench, row);
    step(
        [&bench, row, panel] {
            return bench.frmStartup->cboVRKSelect.userSelect(
                panel ? row : static_cast<int>(frmStartup::kConsolesOnly));
        },
        "opening the panel");
    DevicePanel* device = panel ? bench.devicePanel() : nullptr;
    if (device != nullptr)
        choosePart(*device, part, step);
    else // the switch that leads the socket to one of the two buses
        bench.frmMotherboardDAQ2->setPin(frmMotherboardDAQ2::kPinMotherboardSwitch,
                                         bus == ScriptedBus::SPI ? 1 : 0);
    OptionButton& on = device != nullptr ? device->OptVCC[kVccOn] : bench.frmMotherboardDAQ2->OptVCC[kVccOn];
    step([&on] { return on.userClick(); }, "switching VCC on");
}

void switchVccOn(Bench& bench) {
    if (DevicePanel* device = bench.devicePanel()) {
        device->OptVCC[kVccOn].showSelected();
        device->OptVCC_Click(kVccOn); // sends the level's code as well, which went with the board's power
    } else {
        bench.frmMotherboardDAQ2->OptVCC[kVccOn].showSelected();
        bench.frmMotherboardDAQ2->OptVCC_Click(kVccOn);
    }
}

bool sameLevel(const std::string& one, const std::string& other) {
    if (isNumeric(one) && isNumeric(other))
        return leadingNumber(one) == leadingNumber(other);
    return upperCase(one) == upperCase(other);
}

} // namespace vrk
