#include "apps/vrkctl/Interrupt.h"
#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/Terminal.h"
#include "apps/vrkctl/WiperBench.h"

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace vrk {

namespace {
/// The rows as they come, so that a sweep that is stopped has shown what it measured.
class SweepOutput {
  public:
    SweepOutput(const Options& options, const SweepOptions& sweep) : json_(options.json), csv_(sweep.csv) {
        if (csv_)
            put("position,hex,read,readHex,volts,status\n");
        else if (!json_)
            put("position  hex   read  hex    volts  bus\n");
    }

    void row(const WiperResult& result) {
        if (json_) {
            points_.push_back(result.json());
            return;
        }
        const Position& written = *result.written;
        const std::string read = result.read ? std::to_string(result.read->value) : "";
        const std::string readHex = result.read ? result.read->hex : "";
        char volts[32] = "";
        if (result.volts)
            std::snprintf(volts, sizeof volts, "%.3f", *result.volts);
        if (csv_) {
            putf("%d,%s,%s,%s,%s,%d\n", written.value, written.hex.c_str(), read.c_str(), readHex.c_str(),
                 volts, result.status);
            return;
        }
        const bool red = !result.good() && colouredOutput();
        putf("%s%8d  %3s  %5s  %3s  %7s  %3s%s\n", red ? "\033[31m" : "", written.value, written.hex.c_str(),
             read.c_str(), readHex.c_str(), volts, statusText(result.status).c_str(), red ? "\033[0m" : "");
    }

    void end(WiperBench& bench, int channel, int bad, bool whole) const {
        if (!json_)
            return;
        const nlohmann::ordered_json all = {{"part", bench.partName().empty() ? "manual" : bench.partName()},
                                            {"address", bench.address()},
                                            {"taps", bench.taps()},
                                            {"channel", channel},
                                            {"complete", whole},
                                            {"bad", bad},
                                            {"points", points_}};
        put(all.dump() + "\n");
    }

  private:
    bool json_;
    bool csv_;
    nlohmann::ordered_json points_ = nlohmann::ordered_json::array();
};

std::vector<int> positionsOf(const SweepOptions& sweep, const WiperBench& bench) {
    const int last = sweep.to.value_or(bench.taps() - 1);
    bench.requirePosition(sweep.from, "--from");
    bench.requirePosition(last, "--to");
    if (sweep.step < 1)
        throw CommandError(ExitCode::Usage,
                           "--step: it is at least 1; a sweep downwards has --from above --to");
    std::vector<int> positions;
    const int step = sweep.from <= last ? sweep.step : -sweep.step;
    for (int position = sweep.from; step > 0 ? position <= last : position >= last; position += step)
        positions.push_back(position);
    // The end of the range is what shows whether the part reaches it.
    if (positions.back() != last)
        positions.push_back(last);
    return positions;
}
} // namespace

ExitCode sweepWiper(const Options& options, const SweepOptions& sweep) {
    if (options.json && sweep.csv)
        throw CommandError(ExitCode::Usage, "--json and --csv exclude each other");
    WiperBench bench(options, sweep);
    const std::vector<int> positions = positionsOf(sweep, bench);
    bench.open();

    SweepOutput output(options, sweep);
    ProgressBarLine progress("sweep", static_cast<int>(positions.size()));
    int done = 0;
    int bad = 0;
    bool answers = true;
    for (const int position : positions) {
        if (interrupt::requested() || !answers)
            break;
        const WiperResult result = bench.write(position);
        progress.clear();
        output.row(result);
        if (!result.good()) {
            ++bad;
            bench.explain(result);
        }
        // A part that does not answer would not at the next position either.
        answers = result.read.has_value();
        progress.done(++done);
    }
    progress.clear();
    const bool whole = done == static_cast<int>(positions.size()) && answers;
    output.end(bench, sweep.channel, bad, whole);
    if (const auto signalled = interrupt::requested()) {
        tell("interrupted after " + std::to_string(done) + " of " + std::to_string(positions.size()) +
             " positions; VCC goes off");
        return *signalled;
    }
    bench.requireReplayed();
    if (bad > 0)
        tell(std::to_string(bad) + " of " + std::to_string(done) + " positions bad");
    return bad == 0 ? ExitCode::Done : ExitCode::CheckFailed;
}

} // namespace vrk
