#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/Terminal.h"
#include "apps/vrkctl/WiperBench.h"

#include <cstdio>

namespace vrk {

namespace {
std::string shown(const Position& position) {
    return std::to_string(position.value) + " (" + position.hex + ")";
}

void print(const Options& options, const WiperResult& result) {
    if (options.json) {
        std::printf("%s\n", result.json().dump().c_str());
        return;
    }
    std::printf("channel %d", result.channel);
    if (result.written)
        std::printf("  %s %s", result.read ? "written" : "sent", shown(*result.written).c_str());
    std::printf("  %s", result.read ? ("read " + shown(*result.read)).c_str() : "no answer");
    if (result.volts)
        std::printf("  %.3f V", *result.volts);
    std::printf("  bus status %d\n", result.status);
}

ExitCode finish(const Options& options, WiperBench& bench, const WiperResult& result) {
    print(options, result);
    bench.explain(result);
    if (bench.interrupted())
        return ExitCode::Interrupted;
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
    const WiperResult result = bench.write(position);
    // A wiper forgets its position with VCC; who writes one from the terminal wants to measure it then.
    if (result.good() && !bench.interrupted())
        bench.leavePowered();
    return finish(options, bench, result);
}

} // namespace vrk
