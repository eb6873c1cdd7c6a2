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

void choosePart(Panel& panel, const std::string& part, const BenchStep& step) {
    for (Control* control : panel.controls())
        if (control->kind() == Control::Kind::MenuEntry && control->caption() == part)
            step([control] { return static_cast<MenuEntry*>(control)->userClick(); }, "choosing the part");
}

void chooseLevel(ComboBox& levels, const std::string& level, const BenchStep& step) {
    for (int row = 0; row < levels.rowCount(); ++row)
        if (sameLevel(levels.rows().at(static_cast<std::size_t>(row)).text, level)) {
            step([&levels, row] { return levels.userSelect(row); }, "choosing VCC's level");
            return;
        }
    throw Fault("the calibration file has no level " + level);
}

} // namespace

const char* busName(ScriptedBus bus) {
    return bus == ScriptedBus::I2C ? "i2c" : "spi";
}

BusMode busModeOf(ScriptedBus bus) {
    return {bus == ScriptedBus::I2C, bus == ScriptedBus::SPI};
}

void bringUp(Bench& bench, const BringUp& wanted, const BenchStep& step) {
    const int row = startRow(wanted.bus);
    const bool panel = hasPanel(bench, row);
    const auto select = [&bench](int start) {
        return [&bench, start] { return bench.frmStartup->cboVRKSelect.userSelect(start); };
    };
    step(select(panel ? row : static_cast<int>(frmStartup::kConsolesOnly)), "opening the panel");
    DevicePanel* device = panel ? bench.devicePanel() : nullptr;
    if (!bench.link().attached() || (panel && device == nullptr))
        throw NoBoardFault();
    if (device == nullptr) {
        // The switch that leads the socket to one of the two buses.
        bench.frmMotherboardDAQ2->setPin(frmMotherboardDAQ2::kPinMotherboardSwitch,
                                         wanted.bus == ScriptedBus::SPI ? 1 : 0);
    } else {
        if (!wanted.part.empty())
            choosePart(*device, wanted.part, step);
        if (!wanted.level.empty())
            chooseLevel(device->CboVCC, wanted.level, step);
    }
    if (!wanted.powered)
        return;
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
