#pragma once

#include "automation/BenchTarget.h"
#include "automation/RpcError.h"
#include "automation/paths.h"

#include <string>
#include <utility>
#include <vector>

namespace vrk {

/// The methods that have their result when they return. All throw RpcError.
class BenchMethods {
  public:
    explicit BenchMethods(const BenchTarget& bench) : bench_(bench) {}

    using Method = Json (BenchMethods::*)(const Json& params);
    /// nullptr if it is none of these.
    static Method find(const std::string& name);
    static std::vector<std::string> names();

    Json gesture(const std::string& method, const Json& params);

    /// A control as code uses it: the first use loads its panel.
    Control& usedControl(const Path& path);
    /// A control of a panel that is loaded already: loading does things to the board, which looking must not.
    Control& loadedControl(const Path& path) const;

  private:
    static const std::vector<std::pair<std::string, Method>>& table();

    Json panels(const Json& params);
    Json describe(const Json& params);
    Json get(const Json& params);
    Json set(const Json& params);
    Json call(const Json& params);
    Json show(const Json& params);
    Json close(const Json& params);
    Json answer(const Json& params);
    Json dialogs(const Json& params);
    Json clipboard(const Json& params);
    Json log(const Json& params);
    Json now(const Json& params);
    Json advanceTime(const Json& params);
    Json simulate(const Json& params);

    /// Runs `act` as a user's event.
    void asEvent(const EventLoop::Action& act);
    /// The same; what takes other arguments is an error of the request and no fault of the program.
    void withArguments(const std::string& path, const EventLoop::Action& act);
    Panel& used(PanelSlotBase& slot);
    Json read(const std::string& path) const;
    ScriptedDialogs::Answer answerOf(const Json& choice) const;

    BenchTarget bench_;
};

} // namespace vrk
