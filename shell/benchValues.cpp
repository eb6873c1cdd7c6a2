#include "shell/Bench.h"

#include "platform/files/files.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <type_traits>

namespace vrk {

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
    publish(all, shell_);
    publish(all, busMode_);
    publish(all, run_);
    publish(all, i2cWipers_, frmVRK_User1.name());
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
