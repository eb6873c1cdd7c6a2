#include "script/ScriptRehearsal.h"

#include "link/frmMainF340.h"
#include "link/reportLayout.h"
#include "panels/blocks/ShellControl.h"
#include "platform/hid/HidHost.h"
#include "platform/runtime/text.h"
#include "script/ScriptFile.h"

#include <algorithm>
#include <set>

namespace vrk {

namespace {

/// Nobody is asked, nobody waits, nothing is written.
class RehearsalHost final : public ScriptHost {
  public:
    RehearsalHost(RehearsalBench* bench, std::vector<std::string>& messages)
        : bench_(bench), messages_(messages) {}

    Milliseconds now() const override { return bench_ != nullptr ? bench_->now() : Milliseconds{0}; }
    void letEventsRun() override {}
    void hold(Milliseconds duration) override {
        if (bench_ != nullptr)
            bench_->pass(duration);
    }
    void wait(Milliseconds duration) override { hold(duration); }
    void waitForEvents() override {}
    bool confirm(const std::string& /*text*/) override { return true; }
    void say(const std::string& text) override { messages_.push_back(text); }
    void saveScript() override {}

  private:
    RehearsalBench* bench_;
    std::vector<std::string>& messages_;
};

/// A part that answers every read with what the row expects, so that a row which fails even here fails
/// whatever a part answers.
class AgreeableBus final : public ScriptBus, public ScriptObserver {
  public:
    AgreeableBus(const ScriptState& script, bool sendsRegister)
        : script_(script), sendsRegister_(sendsRegister) {}

    void setAddress(std::uint8_t /*address*/) override {}
    bool sendsRegister() const override { return sendsRegister_; }
    void purge() override {}
    int writeI2C(std::span<const std::uint8_t> data, std::span<const std::uint8_t> registers) override {
        fit(data.size() + registers.size() + report::kI2cPayload);
        return kGood;
    }
    int readI2C(std::span<std::uint8_t> data, std::span<const std::uint8_t> registers) override {
        fit(data.size() + report::kFirstData);
        fit(registers.size() + report::kI2cPayload);
        for (std::size_t k = 0; k < data.size(); ++k)
            data[k] = hexToByte(wanted(k));
        return kGood;
    }
    void clearReadBoxes() override {}
    void showRead(int /*box*/, std::uint8_t /*value*/) override {}
    void prepareSpi(int count, std::span<const std::string> bytes) override {
        fit(static_cast<std::size_t>(std::max(0, count)) + report::kSpiPayload);
        if (bytes.size() > std::size_t{frmMainF340::kByteBoxes})
            throw subscriptOutOfRange();
    }
    bool exchangeSpi() override { return true; }
    std::string readBox(int box) override {
        // A byte comes back as two hexadecimal digits whatever the part says.
        const std::string text = wanted(static_cast<std::size_t>(box));
        return byteToHex2(hexToByte(text));
    }
    void setPort(int /*index*/, std::uint8_t /*value*/) override {}

    void rowBegan(int row) override { expected_ = script_.table.text(row, ScriptColumn::Expected); }

  private:
    /// What would be a fault before anything is sent.
    static void fit(std::size_t bytes) {
        if (bytes > hid::kReportSize)
            throw subscriptOutOfRange();
    }
    std::string wanted(std::size_t byte) const {
        return 2 * byte < expected_.size() ? expected_.substr(2 * byte, 2) : std::string();
    }

    const ScriptState& script_;
    bool sendsRegister_;
    std::string expected_;
};

/// Asks at each row whether the rehearsal is to go on. A pass without rows counts as one.
class Patience final : public ScriptObserver {
  public:
    Patience(const std::function<bool()>& goOn, bool& ScriptAbort) : goOn_(goOn), abort_(ScriptAbort) {}

    bool lost() const { return lost_; }
    void passBegan(int /*first*/, int /*last*/) override { look(); }
    void rowBegan(int /*row*/) override { look(); }

  private:
    void look() {
        lost_ = lost_ || (goOn_ && !goOn_());
        if (lost_)
            abort_ = true;
    }

    const std::function<bool()>& goOn_;
    bool& abort_;
    bool lost_ = false;
};

/// One script loaded, with all that a run of it needs.
class Stage {
  public:
    Stage(const std::vector<std::string>& lines, const RehearsalOptions& options, RehearsalBench* bench)
        : options_(options), host(bench, messages), collector(script, fields, host) {
        script.setBase(options.base);
        if (options.sizes != nullptr)
            script.table.takeSizes(*options.sizes);
        loadScript(script, fields, lines, options.mode);
    }

    /// \return false if it was broken off
    bool run(ScriptBus& bus, ScriptObserver* also, int passes) {
        ScriptRun run({script, options_.mode, abort_, fields, bus, host});
        Patience patience(options_.goOn, abort_);
        run.observe(collector);
        run.observe(patience);
        if (also != nullptr)
            run.observe(*also);
        ScriptRun::Range range = run.mainPart();
        range = {options_.from.value_or(range.first), options_.to.value_or(range.last)};
        collector.begin(options_.name, options_.mode.SPIBusMode ? "spi" : "i2c", options_.started);
        const ScriptEnd end = run.runPasses(passes, range);
        collector.finish(patience.lost() ? ScriptEnd::Interrupted : end);
        return !patience.lost();
    }

  private:
    const RehearsalOptions& options_;
    bool abort_ = false;

  public:
    ScriptState script;
    PlainFields fields;
    std::vector<std::string> messages;
    RehearsalHost host;
    ResultCollector collector;
};

std::vector<int> neverPassing(const std::vector<std::string>& lines, const RehearsalOptions& options,
                              bool sendsRegister) {
    Stage stage(lines, options, nullptr);
    AgreeableBus bus(stage.script, sendsRegister);
    (void)stage.run(bus, &bus, 1); // broken off: of the rows until then
    std::set<int> never;
    std::set<int> passed;
    for (const RowResult& row : stage.collector.results().passes.back().rows) {
        if (row.verdict == RowVerdict::Pass)
            passed.insert(row.line);
        else if (!row.expected.empty() && row.verdict != RowVerdict::NotReached)
            never.insert(row.line);
    }
    std::vector<int> found;
    std::set_difference(never.begin(), never.end(), passed.begin(), passed.end(), std::back_inserter(found));
    return found;
}

} // namespace

int Rehearsal::totalWrites() const {
    int total = 0;
    for (const auto& [reg, count] : nonvolatileWrites)
        total += count;
    return total;
}

Rehearsal rehearse(std::string_view bytes, const RehearsalOptions& options, const RehearsalFactory& factory) {
    const std::vector<std::string> lines = scriptLines(bytes);
    const std::unique_ptr<RehearsalBench> bench = factory();
    Stage stage(lines, options, bench.get());
    stage.fields.stopOnFail = options.stopOnFail;
    const Milliseconds began = bench->now();
    const long long reports = bench->reports();
    const std::map<std::string, int> written = bench->nonvolatileWrites();
    Rehearsal rehearsal;
    rehearsal.whole = stage.run(bench->bus(), nullptr, std::max(1, options.passes));
    rehearsal.lasted = bench->now() - began;
    rehearsal.reports = bench->reports() - reports;
    for (const auto& [reg, count] : bench->nonvolatileWrites()) {
        const auto before = written.find(reg);
        if (const int own = count - (before == written.end() ? 0 : before->second); own > 0)
            rehearsal.nonvolatileWrites[reg] = own;
    }
    rehearsal.results = stage.collector.results();
    std::set<int> failing;
    for (const PassResult& pass : rehearsal.results.passes)
        for (const RowResult& row : pass.rows)
            if (row.verdict >= RowVerdict::Fail)
                failing.insert(row.line);
    rehearsal.wouldFail.assign(failing.begin(), failing.end());
    rehearsal.messages = std::move(stage.messages);
    if (rehearsal.whole)
        rehearsal.neverPass = neverPassing(lines, options, bench->bus().sendsRegister());
    return rehearsal;
}

} // namespace vrk
