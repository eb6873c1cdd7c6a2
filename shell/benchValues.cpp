#include "shell/Bench.h"

#include "platform/files/files.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <type_traits>

namespace vrk {

namespace {

template <class T>
ActionValue valueOf(const T& field) {
    if constexpr (std::is_same_v<T, bool>)
        return field;
    else if constexpr (std::is_floating_point_v<T>)
        return static_cast<double>(field);
    else if constexpr (std::is_integral_v<T>)
        return static_cast<std::int64_t>(field);
    else
        return field;
}

template <class T>
void assign(T& field, const ActionValue& value) {
    const ActionArgs args = {value};
    if constexpr (std::is_same_v<T, bool>)
        field = wholeArgument(args, 0) != 0;
    else if constexpr (std::is_floating_point_v<T>)
        field = numberArgument(args, 0);
    else if constexpr (std::is_same_v<T, std::uint8_t>)
        field = toByte(wholeArgument(args, 0));
    else if constexpr (std::is_integral_v<T>)
        field = toInt16(wholeArgument(args, 0));
    else
        field = textArgument(args, 0);
}

template <class T>
SharedValues::Value scalar(const char* name, T& field) {
    return {name, kNoIndex, kNoIndex, [&field](int) { return valueOf(field); },
            [&field](int, const ActionValue& value) { assign(field, value); }};
}

template <class T, int Count>
SharedValues::Value array(const char* name, CheckedArray<T, Count>& field) {
    return {name, 0, Count - 1, [&field](int index) { return valueOf(field[index]); },
            [&field](int index, const ActionValue& value) { assign(field[index], value); }};
}

} // namespace

void Bench::registerSharedValues() {
    SharedValues& all = sharedValues_;
    all.add(scalar("i2cStatus", link_.i2cStatus));
    all.add(scalar("hidLinkCode", link_.hidLinkCode));
    all.add(scalar("linkOk", link_.linkOk));
    all.add(scalar("msgResult", link_.msgResult));
    all.add(scalar("i2cAddress", link_.i2cAddress));
    all.add(scalar("BoardConnected", link_.BoardConnected));
    all.add(scalar("suppressControlEvents", link_.suppressControlEvents));
    all.add({"hidHandle", kNoIndex, kNoIndex, [this](int) { return valueOf(link_.hidHandle); }, {}});
    all.add({"hidOverlappedHandle",
             kNoIndex,
             kNoIndex,
             [this](int) { return valueOf(link_.hidOverlappedHandle); },
             {}});
    all.add({"reportBuffer", kNoIndex, kNoIndex,
             [this](int) -> ActionValue {
                 std::string hex;
                 for (const std::uint8_t byte : link_.reportBuffer)
                     hex += byteToHex2(byte);
                 return hex;
             },
             [this](int, const ActionValue& value) {
                 const std::string hex = textArgument({value}, 0);
                 if (hex.size() > 2 * link_.reportBuffer.size() || hex.size() % 2 != 0 ||
                     hex.find_first_not_of("0123456789ABCDEFabcdef") != std::string::npos)
                     throw typeMismatch();
                 link_.reportBuffer.fill(0);
                 for (std::size_t byte = 0; 2 * byte < hex.size(); ++byte)
                     link_.reportBuffer.at(byte) = hexToByte(hex.substr(2 * byte, 2));
             }});
    all.add({"activePanel",
             kNoIndex,
             kNoIndex,
             [this](int) -> ActionValue {
                 const auto* panel = dynamic_cast<const Panel*>(link_.activePanel);
                 return panel != nullptr ? panel->name() : std::string();
             },
             {}});
    const auto traceSwitch = [this](void (Trace::*change)(bool)) {
        return [this, change](int, const ActionValue& value) {
            (trace_.*change)(wholeArgument({value}, 0) != 0);
        };
    };
    all.add({"traceOn", kNoIndex, kNoIndex, [this](int) { return valueOf(trace_.traceOn); },
             traceSwitch(&Trace::setOn)});
    all.add({"traceDetail", kNoIndex, kNoIndex, [this](int) { return valueOf(trace_.traceDetail); },
             traceSwitch(&Trace::setDetail)});
    all.add(scalar("traceVerbose", trace_.traceVerbose));
    all.add(scalar("ProcessorID", analog_.ProcessorID));
    all.add(scalar("ADRef", analog_.ADRef));
    all.add(scalar("VrefCal", analog_.VrefCal));
    all.add(scalar("ADVolts", analog_.ADVolts));
    all.add(scalar("ADVolts2", analog_.ADVolts2));
    all.add(scalar("ADHigh", analog_.ADHigh));
    all.add(scalar("ADLow", analog_.ADLow));
    all.add(scalar("MuxVCCIndex", analog_.MuxVCCIndex));
    all.add(scalar("MuxGroundIndex", analog_.MuxGroundIndex));
    all.add(scalar("EndSampling", analog_.EndSampling));
    all.add(array("PBuf", ports_.PBuf));
    all.add(array("SPIBuf", ports_.SPIBuf));
    all.add(scalar("pipeWriteBusy", ports_.pipeWriteBusy));
    all.add(scalar("TrackOn", supply_.TrackOn));
    all.add(array("VCCHex", supply_.VCCHex));
    all.add(scalar("lm73Enabled", shell_.lm73Enabled));
    all.add(scalar("returningToMenu", shell_.returningToMenu));
    all.add(scalar("reloadI2CList", shell_.reloadI2CList));
    all.add(scalar("reloadSPIList", shell_.reloadSPIList));
    all.add(scalar("I2CBusMode", busMode_.I2CBusMode));
    all.add(scalar("SPIBusMode", busMode_.SPIBusMode));
    all.add(scalar("ParamSelected", choice_.ParamSelected));
    all.add(scalar("ParamChanged", choice_.ParamChanged));
    all.add(scalar("ProductReturned", choice_.ProductReturned));
    all.add(scalar("showConsoles", shell_.showConsoles));
    all.add(scalar("TapCount", i2cWipers_.TapCount));
    all.add(scalar("channelCount", i2cWipers_.channelCount));
    all.add(array("ChanReg", i2cWipers_.ChanReg));
    all.add(array("WiperWrite", i2cWipers_.WiperWrite));
    all.add(array("WiperWriteHex", i2cWipers_.WiperWriteHex));
    all.add(array("WiperRead", i2cWipers_.WiperRead));
    all.add(scalar("ListTouched", i2cWipers_.ListTouched));
    all.add(scalar("SliderTouched", i2cWipers_.SliderTouched));
    all.add(scalar("SuppressTouch", i2cWipers_.SuppressTouch));
    all.add(scalar("SliderDrag", i2cWipers_.SliderDrag));
    all.add(scalar("ListDrive", i2cWipers_.ListDrive));
    all.add(scalar("HexPending", i2cWipers_.HexPending));
    all.add(scalar("HexPendingIndex", i2cWipers_.HexPendingIndex));
    all.add(scalar("DecPending", i2cWipers_.DecPending));
    all.add(scalar("DecPendingIndex", i2cWipers_.DecPendingIndex));
    all.add(scalar("EntryDone", i2cWipers_.EntryDone));
    all.add(scalar("ACRImage", i2cWipers_.ACRImage));
    all.add(scalar("I2CWriteAddress", i2cWipers_.I2CWriteAddress));
    all.add(scalar("I2CReadAddress", i2cWipers_.I2CReadAddress));
}

void Bench::registerModuleActions() {
    const auto add = [this](const char* name, std::size_t count, auto run) {
        moduleActions_.push_back({name, [count, run](const ActionArgs& args) -> ActionValue {
                                      requireArguments(args, count);
                                      return run(args);
                                  }});
    };
    const auto none = ActionValue{};
    add("initHIDConnection", 0, [this, none](const ActionArgs&) {
        link_.initHIDConnection();
        return none;
    });
    add("closeHIDHandles", 0, [this, none](const ActionArgs&) {
        link_.closeHIDHandles();
        return none;
    });
    add("fillReportBuffer", 1, [this, none](const ActionArgs& args) {
        link_.fillReportBuffer(toByte(wholeArgument(args, 0)));
        return none;
    });
    add("setReportID", 0, [this, none](const ActionArgs&) {
        link_.setReportID();
        return none;
    });
    add("purgeInputReports", 0, [this, none](const ActionArgs&) {
        link_.purgeInputReports();
        return none;
    });
    add("awaitInputReport", 0, [this](const ActionArgs&) -> ActionValue {
        return static_cast<std::int64_t>(link_.awaitInputReport());
    });
    add("checkStatus", 1, [this](const ActionArgs& args) -> ActionValue {
        return static_cast<std::int64_t>(link_.checkStatus(wholeArgument(args, 0) != 0));
    });
    add("reportLinkError", 2, [this, none](const ActionArgs& args) {
        link_.reportLinkError(static_cast<int>(wholeArgument(args, 0)),
                              static_cast<int>(wholeArgument(args, 1)));
        return none;
    });
    add("byteToHex2", 1,
        [](const ActionArgs& args) -> ActionValue { return byteToHex2(toByte(wholeArgument(args, 0))); });
    add("bytesToHexString", 2, [this](const ActionArgs& args) -> ActionValue {
        return link_.bytesToHexString(static_cast<int>(wholeArgument(args, 0)),
                                      static_cast<int>(wholeArgument(args, 1)));
    });
    add("hexToInt", 1, [](const ActionArgs& args) -> ActionValue {
        return static_cast<std::int64_t>(hexToInt(textArgument(args, 0)));
    });
    add("hexKeyFilter", 1, [](const ActionArgs& args) -> ActionValue {
        return static_cast<std::int64_t>(hexKeyFilter(static_cast<int>(wholeArgument(args, 0))));
    });
    add("fileExists", 1, [this](const ActionArgs& args) -> ActionValue {
        return fileExists(context_.workingFolder / textArgument(args, 0));
    });
    add("delaySeconds", 1, [this, none](const ActionArgs& args) {
        delaySeconds(context_.events, numberArgument(args, 0));
        return none;
    });
    add("showSupplyState", 1, [this, none](const ActionArgs& args) {
        motherboard_.showSupplyState(static_cast<int>(wholeArgument(args, 0)));
        return none;
    });
    add("initSupplyDefaults", 0, [this, none](const ActionArgs&) {
        motherboard_.initSupplyDefaults();
        return none;
    });
}

} // namespace vrk
