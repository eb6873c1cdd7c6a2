#include "script/ScriptState.h"

#include "platform/controls/longValues.h"

namespace vrk {

namespace {

void publishSizes(SharedValues& values, ScriptState& state, const char* name, int StepSizes::*size) {
    values.add({name, 0, ScriptTable::kMostLines,
                [&state, size](int row) -> ActionValue {
                    return static_cast<std::int64_t>(state.table.sizes(row).*size);
                },
                [&state, size](int row, const ActionValue& value) {
                    state.table.sizes(row).*size = toInt16(wholeArgument({value}, 0));
                }});
}

} // namespace

void publish(SharedValues& values, ScriptState& state) {
    publishSizes(values, state, "RegCount", &StepSizes::RegCount);
    publishSizes(values, state, "WrCount", &StepSizes::WrCount);
    publishSizes(values, state, "RdCount", &StepSizes::RdCount);
    publishSizes(values, state, "DelayMs", &StepSizes::DelayMs);
    values.add({"ScriptRaw",
                1,
                3000,
                [&state](int line) -> ActionValue {
                    const auto at = static_cast<std::size_t>(line) - 1;
                    return at < state.ScriptRaw.size() ? state.ScriptRaw[at] : std::string();
                },
                {}});
    values.add({"ScriptRawNext",
                kNoIndex,
                kNoIndex,
                [&state](int) -> ActionValue { return static_cast<std::int64_t>(state.ScriptRawNext()); },
                {}});
    values.scalar("StepNo", state.StepNo);
    values.scalar("I2CAdrText", state.I2CAdrText);
    values.scalar("IntStartStep", state.IntStartStep);
    values.scalar("IntEndStep", state.IntEndStep);
    values.scalar("EndMainStep", state.EndMainStep);
    publishLong(values, "ExpectedReads", state.ExpectedReads);
    values.scalar("TotalLines", state.TotalLines);
    values.scalar("ScriptLoaded", state.ScriptLoaded);
    values.scalar("ScriptI2CBase", state.ScriptI2CBase);
    values.scalar("ScriptI2CBase1", state.ScriptI2CBase1);
    values.scalar("RunStep", state.RunStep);
    values.scalar("IntRunStep", state.IntRunStep);
    values.scalar("IntSavedStep", state.IntSavedStep);
    values.scalar("ScriptRunning", state.ScriptRunning);
    values.scalar("FailsAtStep", state.FailsAtStep);
    values.scalar("FailsNow", state.FailsNow);
    values.scalar("AdrBytes", state.AdrBytes);
    values.scalar("WrTotal", state.WrTotal);
    values.scalar("RdTotal", state.RdTotal);
    values.scalar("GPWrText", state.GPWrText);
    values.scalar("GPRdText", state.GPRdText);
    values.add({"ByteBuffer",
                0,
                65535,
                [&state](int index) -> ActionValue {
                    return static_cast<std::int64_t>(state.buffered(static_cast<std::size_t>(index)));
                },
                {}});
    values.add({"ByteBufferLen",
                kNoIndex,
                kNoIndex,
                [&state](int) -> ActionValue { return static_cast<std::int64_t>(state.ByteBuffer.size()); },
                {}});
}

} // namespace vrk
