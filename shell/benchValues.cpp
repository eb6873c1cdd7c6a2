#include "shell/Bench.h"

#include "platform/files/files.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <memory>
#include <span>
#include <type_traits>

namespace vrk {

namespace {

/// Bytes as text, two hexadecimal digits each, blanks allowed between them. \throws Fault "Type mismatch"
std::vector<std::uint8_t> bytesOf(std::string hex) {
    std::erase(hex, ' ');
    if (hex.size() % 2 != 0 || hex.find_first_not_of("0123456789ABCDEFabcdef") != std::string::npos)
        throw typeMismatch();
    std::vector<std::uint8_t> bytes;
    for (std::size_t at = 0; at < hex.size(); at += 2)
        bytes.push_back(hexToByte(hex.substr(at, 2)));
    return bytes;
}

std::string hexOf(std::span<const std::uint8_t> bytes) {
    std::string hex;
    for (const std::uint8_t byte : bytes)
        hex += byteToHex2(byte);
    return hex;
}

} // namespace

void Bench::registerSharedValues() {
    SharedValues& all = sharedValues_;
    all.scalar("i2cStatus", link_.i2cStatus);
    all.scalar("hidLinkCode", link_.hidLinkCode);
    all.scalar("linkOk", link_.linkOk);
    all.scalar("msgResult", link_.msgResult);
    all.scalar("i2cAddress", link_.i2cAddress);
    all.scalar("BoardConnected", link_.BoardConnected);
    all.scalar("suppressControlEvents", link_.suppressControlEvents);
    all.add({"hidHandle",
             kNoIndex,
             kNoIndex,
             [this](int) -> ActionValue { return static_cast<std::int64_t>(link_.hidHandle); },
             {}});
    all.add({"hidOverlappedHandle",
             kNoIndex,
             kNoIndex,
             [this](int) -> ActionValue { return static_cast<std::int64_t>(link_.hidOverlappedHandle); },
             {}});
    all.add({"reportBuffer", kNoIndex, kNoIndex,
             [this](int) -> ActionValue { return hexOf(link_.reportBuffer); },
             [this](int, const ActionValue& value) {
                 const auto bytes = bytesOf(textArgument({value}, 0));
                 if (bytes.size() > link_.reportBuffer.size())
                     throw typeMismatch();
                 link_.reportBuffer.fill(0);
                 std::copy(bytes.begin(), bytes.end(), link_.reportBuffer.begin());
             }});
    all.add({"activePanel",
             kNoIndex,
             kNoIndex,
             [this](int) -> ActionValue {
                 const auto* panel = dynamic_cast<const Panel*>(link_.activePanel);
                 return panel != nullptr ? panel->name() : std::string();
             },
             {}});
    all.add({"runningActivities",
             kNoIndex,
             kNoIndex,
             [this](int) -> ActionValue {
                 std::string names;
                 for (const Activity* activity : context_.activities.running())
                     names += (names.empty() ? "" : ", ") + activity->name();
                 return names;
             },
             {}});
    const auto traceSwitch = [this](void (Trace::*change)(bool)) {
        return [this, change](int, const ActionValue& value) {
            (trace_.*change)(wholeArgument({value}, 0) != 0);
        };
    };
    all.add({"traceOn", kNoIndex, kNoIndex, [this](int) -> ActionValue { return trace_.traceOn; },
             traceSwitch(&Trace::setOn)});
    all.add({"traceDetail", kNoIndex, kNoIndex, [this](int) -> ActionValue { return trace_.traceDetail; },
             traceSwitch(&Trace::setDetail)});
    all.scalar("traceVerbose", trace_.traceVerbose);
    all.scalar("ParamSelected", choice_.ParamSelected);
    all.scalar("ParamChanged", choice_.ParamChanged);
    all.scalar("ProductReturned", choice_.ProductReturned);
    publish(all, analog_);
    publish(all, ports_);
    publish(all, supply_);
    publish(all, calibration_);
    publish(all, shell_);
    publish(all, busMode_);
    publish(all, run_);
    publish(all, script_);
    publish(all, i2cWipers_, frmVRK_User1.name());
    publish(all, spiWipers_, frmVRK_SPI1.name());
    publish(all, upDown_, frmVRK_UD1.name());
    publish(all, pushButton_, frmVRK_PB1.name());
    publish(all, runIn_, UPDN_Runin.name());
    publish(all, instructionFields_);
    publish(all, i2cInstruction_, frm_q4410.name());
    publish(all, spiInstruction_, frm_q4420.name());
    all.setFront([this] { return lastDevicePanel_; });
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
    // What these routines give back through their arguments stands in values of their own.
    const auto data = std::make_shared<std::vector<std::uint8_t>>();
    sharedValues_.add({"i2cData", kNoIndex, kNoIndex, [data](int) { return ActionValue(hexOf(*data)); }, {}});
    const auto address = [](const ActionArgs& args) { return toByte(wholeArgument(args, 0)); };
    const auto room = [data](const ActionArgs& args) {
        data->assign(toByte(wholeArgument(args, 1)), 0);
        return std::span(*data);
    };
    const auto done = [data](int status) -> ActionValue {
        if (status != kLinkGood)
            data->clear();
        return static_cast<std::int64_t>(status);
    };
    add("readI2COnce", 3, [this, address, room, done](const ActionArgs& args) {
        return done(link_.readI2COnce(address(args), room(args), bytesOf(textArgument(args, 2))));
    });
    add("readI2C", 4, [this, address, room, done](const ActionArgs& args) {
        return done(link_.readI2C(address(args), room(args), bytesOf(textArgument(args, 2)),
                                  static_cast<int>(wholeArgument(args, 3))));
    });
    add("writeI2COnce", 3, [this, address](const ActionArgs& args) -> ActionValue {
        return static_cast<std::int64_t>(link_.writeI2COnce(address(args), bytesOf(textArgument(args, 1)),
                                                            bytesOf(textArgument(args, 2))));
    });
    add("writeI2C", 4, [this, address](const ActionArgs& args) -> ActionValue {
        return static_cast<std::int64_t>(link_.writeI2C(address(args), bytesOf(textArgument(args, 1)),
                                                        bytesOf(textArgument(args, 2)),
                                                        static_cast<int>(wholeArgument(args, 3))));
    });
    constexpr int kMostFields = 64;
    const auto fields = std::make_shared<CheckedArray<std::string, kMostFields>>();
    sharedValues_.add({"splitField",
                       0,
                       kMostFields - 1,
                       [fields](int index) { return ActionValue((*fields)[index]); },
                       {}});
    add("splitFields", 3, [fields](const ActionArgs& args) -> ActionValue {
        std::string text = textArgument(args, 0);
        const std::int64_t size = wholeArgument(args, 1);
        const std::string delimiter = textArgument(args, 2);
        if (size < 1 || size > kMostFields)
            throw subscriptOutOfRange();
        if (delimiter.size() != 1)
            throw typeMismatch();
        std::vector<std::string> cut(static_cast<std::size_t>(size));
        const int last = splitFields(text, cut, delimiter.front());
        for (int index = 0; index < kMostFields; ++index)
            (*fields)[index] = index < size ? cut.at(static_cast<std::size_t>(index)) : std::string();
        return static_cast<std::int64_t>(last);
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
