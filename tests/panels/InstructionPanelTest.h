#pragma once

#include "tests/panels/I2cPanelTest.h"

#include <string>
#include <vector>

namespace vrk {

/// The instruction panel of one bus beside the device panel that its quad part was chosen on.
class InstructionPanelTest : public I2cPanelTest {
  protected:
    explicit InstructionPanelTest(Bus on = Bus::I2C) : on_(on) {}

    bool spiBus() const { return on_ == Bus::SPI; }
    const char* partName() const { return spiBus() ? "Q4420" : "Q4410"; }
    PanelSlotBase& slot() {
        return spiBus() ? static_cast<PanelSlotBase&>(bench.frm_q4420) : bench.frm_q4410;
    }
    InstructionPanel& panel() { return static_cast<InstructionPanel&>(slot().load()); }
    WiperPanel& device() {
        if (spiBus())
            return spi();
        return i2c();
    }
    void open() {
        spiBus() ? openSpi() : openI2c();
        bus.socket(partName());
        EXPECT_THAT(spiBus() ? chooseSpiRow("Q4420/1,4,256,50,NA,NA,NA,NA,NA,A0,90,1,1,3,3")
                             : chooseRow("Q4410/9,4,256,50,NA,NA,NA,r,s,t,u,1,1"),
                    ::testing::IsEmpty());
        EXPECT_TRUE(device().cmdShowq4410.userClick().done());
        EXPECT_TRUE(slot().visible());
        wire.clear();
    }
    std::vector<std::string> chooseSpiRow(const std::string& fields) {
        return chooseFrom(spi().mnu_SPI_List,
                          folder.write("p.csv", "h,,,,,,,,,,,,,,,,,,\r\n," + fields + ",,,\r\n").string(), 1);
    }
    sim::PartState part() { return *bus.state().part; }
    int stored(int index) {
        return part().registers.at("DR" + decimalText(index / 4) + decimalText(index % 4));
    }
    void compose(int instruction, int pot = -1, int reg = -1) {
        EXPECT_TRUE(panel().OptInstruction[instruction].userClick().done());
        if (pot >= 0) {
            panel().OptWiper[pot].setValue(false); // it must be clicked anew
            EXPECT_TRUE(panel().OptWiper[pot].userClick().done());
        }
        if (reg >= 0) {
            panel().OptRegSel[reg].setValue(false);
            EXPECT_TRUE(panel().OptRegSel[reg].userClick().done());
        }
    }
    void send(int instruction, int pot = -1, int reg = -1) {
        compose(instruction, pot, reg);
        wire.clear();
        EXPECT_TRUE(panel().cmdDoInstruction.userClick().done());
    }
    Reading& reading(int cell) { return cell < 4 ? panel().lblRDWcr[cell] : panel().lblRdData[cell - 4]; }
    /// A cell that says it was read just now holds what the part holds.
    void expectTruth() {
        if (!bus.state().part)
            return;
        const sim::PartState now = part();
        std::vector<int> held = now.wipers;
        for (const auto& [name, value] : now.registers) // DR00 to DR33
            held.push_back(value);
        for (int cell = 0; cell < 20; ++cell)
            if (stateOf(reading(cell)) == Freshness::State::Fresh) {
                EXPECT_EQ(hexToInt(reading(cell).caption()), held.at(static_cast<std::size_t>(cell)))
                    << reading(cell).path();
            }
    }
    /// "2.0>WCR WCR>1.3": what the map draws, pot and register.
    std::string arrows() {
        std::string all;
        for (const auto& [place, intoWiper] : panel().transfers()) {
            const std::string data = decimalText(place.pot) + "." + decimalText(place.reg);
            all += (all.empty() ? "" : " ") + (intoWiper ? data + ">WCR" : "WCR>" + data);
        }
        return all;
    }
    void dropAnswers() {
        while (dialogs.queued() > 0)
            (void)dialogs.show({"", {}, {Choice::Retry, Choice::Cancel}});
    }
    void answerAll(Choice choice) {
        for (int dialog = 0; dialog < 60; ++dialog)
            answer(choice);
    }
    /// The lines that stood on P0 while the bus had no pins, one report after the other, as bits of the bus;
    /// the port's other pins must rest.
    std::string lines() {
        const int mine = spiBus() ? 0x0D : 0x30;
        std::string all;
        const int others = bus.state().sfr.at("80") & ~mine & 0xFF;
        for (const std::string& report : sent(report::Command::SfrAccess, 5)) {
            if (report.substr(6) == "00 E1 06")
                return all + " XBR0=06";
            if (report.substr(0, 11) == "01 12 00 80") {
                const int value = hexToInt(report.substr(12));
                EXPECT_EQ(value & ~mine & 0xFF, others) << report;
                all += (all.empty() ? "" : " ") + hexText(value & mine, 2);
            } else if (report.substr(6, 5) == "00 E1") {
                all += "XBR0=" + report.substr(12);
            }
        }
        return all;
    }
    /// The board as power leaves it, with the part at its address and VCC on.
    void restore() {
        bus.clear();
        bus.socket(partName());
        type(device().txtDeviceAdr, "50");
        device().OptVCC[0].setValue(false);
        device().OptVCC[0].userClick();
        boxes();
    }
    void expectNothingLeftBehind() {
        EXPECT_EQ(bus.state().sfr.at("E1"), 0x06) << "the bus has its pins";
        EXPECT_EQ(bus.state().sfr.at("80") & 0x40, 0) << "A0 is low";
        EXPECT_TRUE(device().enabled());
        for (const Control* control : panel().controls())
            if (control->name() != "OptRegSel" && control->name() != "OptWiper" &&
                control->name() != "txtWriteValue" && control->name() != "lblReadValue") {
                EXPECT_TRUE(control->responsive()) << control->path();
            }
        for (int pot = 0; pot < 4; ++pot)
            EXPECT_EQ(panel().txtWXWcr[pot].text().find_first_of("^v"), std::string::npos) << pot;
        EXPECT_EQ(bench.context().activities.current(), nullptr);
    }

  private:
    Bus on_;
};

/// What both buses do alike.
class BothInstructionPanels : public InstructionPanelTest, public ::testing::WithParamInterface<Bus> {
  protected:
    BothInstructionPanels() : InstructionPanelTest(GetParam()) {}
};

} // namespace vrk
