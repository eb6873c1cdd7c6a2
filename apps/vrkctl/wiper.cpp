#include "apps/vrkctl/Interrupt.h"
#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/Terminal.h"
#include "apps/vrkctl/WiperBench.h"
#include "platform/runtime/text.h"

namespace vrk {

namespace {
std::string shown(const Position& position) {
    return std::to_string(position.value) + " (" + position.hex + ")";
}

void print(const Options& options, const WiperResult& result) {
    if (options.json) {
        put(result.json().dump() + "\n");
        return;
    }
    std::string line = "channel " + std::to_string(result.channel);
    if (result.written)
        line += (result.read ? "  written " : "  sent ") + shown(*result.written);
    line += result.read ? "  read " + shown(*result.read) : "  no answer";
    if (result.volts)
        line += "  " + formatNumber(*result.volts, "#0.000") + " V";
    put(line + "  bus " + statusText(result.status) + "\n");
}

/// All that is left to say; the exit code.
ExitCode finish(const Options& options, WiperBench& bench, const WiperResult& result) {
    print(options, result);
    bench.explain(result);
    if (const auto signalled = interrupt::requested())
        return *signalled;
    bench.requireReplayed();
    return result.good() ? ExitCode::Done : ExitCode::CheckFailed;
}
} // namespace

ExitCode readWiper(const Options& options, const WiperOptions& wiper) {
    WiperBench bench(options, wiper);
    bench.open();
    return finish(options, bench, bench.read());
}

ExitCode writeWiper(const Options& options, const WriteOptions& wiper) {
    const int position = parsePosition(wiper.value);
    WiperBench bench(options, wiper);
    bench.requirePosition(position, "VALUE");
    bench.open();
    // A wiper forgets its position with VCC; who writes one from the terminal wants to measure it then.
    const ExitCode code = finish(options, bench, bench.write(position));
    if (code == ExitCode::Done)
        bench.leavePowered();
    else if (interrupt::requested())
        tell("interrupted; VCC goes off");
    return code;
}

} // namespace vrk
