#include "apps/vrkctl/Interrupt.h"
#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/PanelBench.h"
#include "apps/vrkctl/Terminal.h"
#include "apps/vrkctl/entries.h"
#include "link/modHID.h"
#include "motherboard/CalibrationFile.h"
#include "platform/files/files.h"
#include "platform/runtime/text.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <functional>

namespace vrk {

namespace {
constexpr int kPort = 2;
constexpr int kDacSelect = 4; ///< low: the SPI bus goes to the DAC that sets the level
constexpr int kVccSwitch = 5;
constexpr int kMinusSwitch = 6;
constexpr int kVccChannel = 10; ///< VIN4, on the lists of the converter
constexpr double kDivider = 2.0;

/// The supplies of a board as its pins, its DAC and its converter tell. Works on the controller's console
/// alone: the motherboard's resets both supplies when it loads.
class Supplies {
  public:
    explicit Supplies(PanelBench& bench) : bench_(bench) {}

    void switchOff() {
        whole("switching the supplies off", [this] {
            console().chkGPvalueP2[kVccSwitch].setValue(0);
            console().chkGPvalueP2[kMinusSwitch].setValue(0);
            console().cmdWrGPData_Click(kPort);
        });
    }

    void measure() {
        whole("measuring the supplies", [this] {
            console().getGPvalue();
            on_ = console().chkGPvalueP2[kVccSwitch].checked();
            minus_ = console().chkGPvalueP2[kMinusSwitch].checked();
            readCode();
            readVolts();
        });
    }

    bool on() const { return on_; }
    bool minus() const { return minus_; }
    double volts() const { return volts_; }
    const std::string& code() const { return code_; }

  private:
    frmMainF340& console() { return *bench_.bench().frmMainF340; }

    /// Runs `work`, and once more behind each loss of the link: the discovery's replies stand then where
    /// those of its own exchanges would.
    void whole(const std::string& what, const std::function<void()>& work) {
        bench_.act(what, [this, &work] {
            const modHID& link = bench_.bench().link();
            unsigned retries = 0;
            do {
                retries = link.retries();
                work();
            } while (link.retries() != retries);
        });
    }

    void selectDac(bool selected) {
        console().chkGPvalueP2[kDacSelect].setValue(selected ? 0 : 1);
        console().cmdWrGPData_Click(kPort);
    }
    void readCode() {
        selectDac(true);
        console().chkSPIread.setValue(1);
        console().txtNumToWrite.setText("3");
        int place = 0;
        for (const char* byte : {"50", "B0", "00"}) // read of its wiper
            console().txtWriteVal[place++].setText(byte);
        console().cmdSPIWrite_Click();
        code_ = byteToHex2(hexToByte(console().txtReadVal[2].text()));
        selectDac(false);
    }
    void readVolts() {
        console().cboAnamux[0].setListIndex(kVccChannel);
        console().cmdMuxWrite_Click();
        if (console().connectedInput().empty()) // refused: a board that has gone tells so at the conversion
            console().cmdMuxWrite_Click();
        console().chkADCEnable.setValue(1);
        int count = 0;
        for (int conversion = 0; conversion < 2; ++conversion) { // the first is of the channel before
            console().cmdADCWrEn_Click();
            console().cmdADCRDData_Click();
            const hid::Report& reply = bench_.bench().link().reportBuffer;
            count = reply[2] * 256 + reply[3];
        }
        volts_ = leadingNumber(formatNumber(reference() / 1023 * count * kDivider, "#0.000"));
    }
    double reference() {
        constexpr double kBuiltIn = 3.3;
        const auto path = bench_.bench().context().programFolder / CalibrationFile::kName;
        if (!fileExists(path))
            return kBuiltIn;
        return CalibrationFile::volts(CalibrationFile::read(path, {}).reference).value_or(kBuiltIn);
    }

    PanelBench& bench_;
    bool on_ = false;
    bool minus_ = false;
    double volts_ = 0;
    std::string code_;
};

void print(const Options& options, const Supplies& supplies) {
    const std::string minus = supplies.minus() ? "on" : "off";
    if (options.json)
        put(nlohmann::ordered_json({{"on", supplies.on()},
                                    {"vcc", supplies.volts()},
                                    {"code", supplies.code()},
                                    {"vminus", minus}})
                .dump() +
            "\n");
    else
        put("VCC " + std::string(supplies.on() ? "on" : "off") + "  " +
            formatNumber(supplies.volts(), "#0.000") + " V  code " + supplies.code() + "  V- " + minus +
            "\n");
}

ExitCode finish(PanelBench& bench, bool good) {
    bench.tellMessages();
    if (const auto signalled = interrupt::requested())
        return *signalled;
    bench.requireReplayed();
    return good ? ExitCode::Done : ExitCode::CheckFailed;
}
} // namespace

ExitCode supplyOn(const Options& options, const SupplyOptions& asked) {
    if (asked.vcc) {
        requireLevel(*asked.vcc);
        if (*asked.vcc == "off")
            throw usage("--vcc: \"supply off\" switches off");
    }
    PanelBench bench(options);
    bench.open(PartBus::I2C);
    bench.switchVccOn(asked.vcc.value_or("on"));
    Supplies supplies(bench);
    supplies.measure();
    print(options, supplies);
    // The least level is above 1 V: without it the switch has not closed.
    // A board that is not calibrated is off by a few percent; a level that was not taken leaves another one.
    constexpr double kShare = 0.1;
    const double level = leadingNumber(bench.panel().CboVCC.text()); // 0: Min, Mid, Max
    const bool taken = level <= 0 || std::abs(supplies.volts() - level) <= kShare * level;
    const bool good = supplies.on() && supplies.volts() > 1.0 && taken;
    if (!good)
        tell("VCC was switched on, but measures " + formatNumber(supplies.volts(), "#0.000") + " V");
    const ExitCode code = finish(bench, good);
    if (code == ExitCode::Done)
        bench.leavePowered("");
    else if (interrupt::requested())
        tell("interrupted; VCC goes off");
    return code;
}

ExitCode supplyOff(const Options& options) {
    PanelBench bench(options);
    bench.openConsole();
    Supplies supplies(bench);
    supplies.switchOff();
    supplies.measure();
    print(options, supplies);
    return finish(bench, !supplies.on() && !supplies.minus());
}

ExitCode supplyStatus(const Options& options) {
    PanelBench bench(options);
    bench.session().touchNoSupplies(); // what another command has left on is only looked at
    bench.openConsole();
    Supplies supplies(bench);
    supplies.measure();
    print(options, supplies);
    return finish(bench, true);
}

} // namespace vrk
