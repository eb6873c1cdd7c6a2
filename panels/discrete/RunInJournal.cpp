#include "panels/discrete/RunInJournal.h"

#include "platform/files/JsonObject.h"
#include "platform/files/markup.h"
#include "platform/runtime/Fault.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <random>
#include <system_error>
#include <utility>

namespace vrk {

namespace fs = std::filesystem;

namespace {

constexpr int kVersion = 1;
constexpr const char* kVerdicts[] = {"measured", "pass", "fail"};

std::string word(const char* name, const std::string& text) {
    return std::string("\"") + name + "\":" + jsonText(text);
}
std::string value(const char* name, double number) {
    return std::string("\"") + name + "\":" + jsonNumber(number);
}
std::string value(const char* name, int number) {
    return std::string("\"") + name + "\":" + decimalText(number);
}
std::string flag(const char* name, bool set) {
    return std::string("\"") + name + "\":" + (set ? "true" : "false");
}

std::string headerRecord(const RunInHeader& header) {
    const RunInSettings& settings = header.settings;
    std::string stimulus;
    for (const int steps : settings.stimulus)
        stimulus += (stimulus.empty() ? "" : ",") + decimalText(steps);
    return "{\"kind\":\"header\"," + value("version", kVersion) + "," + word("run", header.run) + "," +
           word("started", header.started) + "," + word("program", header.program) + "," +
           word("part", header.part) + "," + value("reference", settings.reference) + ",\"fields\":{" +
           value("steps", settings.testQty) + "," + value("logEvery", settings.logSteps) + "," +
           value("positions", settings.positions) + "," + value("tolerance", settings.tolerance) + "," +
           word("id", settings.id) + "," + flag("logAll", settings.logAll) + "," +
           flag("doublePurge", settings.doublePurge) + ",\"stimulus\":[" + stimulus + "]," +
           word("vcc", header.vcc) + "," + word("calibration", header.calibration) + "}}";
}

RunInHeader headerOf(const JsonObject& record) {
    RunInHeader header;
    header.run = record.text("run");
    header.started = record.text("started");
    header.program = record.text("program");
    header.part = record.text("part");
    const JsonObject fields = record.object("fields");
    RunInSettings& settings = header.settings;
    settings.reference = record.number("reference");
    settings.testQty = fields.whole("steps");
    settings.logSteps = fields.whole("logEvery");
    settings.positions = fields.whole("positions");
    settings.tolerance = fields.number("tolerance");
    settings.positionsText = decimalText(settings.positions);
    settings.toleranceText = doubleText(settings.tolerance);
    settings.id = fields.text("id");
    settings.logAll = fields.flag("logAll");
    settings.doublePurge = fields.flag("doublePurge");
    const std::vector<int> stimulus = fields.wholes("stimulus");
    if (stimulus.size() != settings.stimulus.size() || settings.logSteps < 1 || settings.positions < 1)
        throw Fault("its fields are not those of a run");
    std::copy(stimulus.begin(), stimulus.end(), settings.stimulus.begin());
    header.vcc = fields.text("vcc");
    header.calibration = fields.text("calibration");
    return header;
}

RunInStage stageOf(const JsonObject& record) {
    RunInStage stage;
    stage.loop = record.whole("loop");
    stage.stage = record.whole("stage");
    stage.shown = stage.tally = record.whole("tally");
    stage.counts = record.whole("counts");
    stage.volts = record.number("volts");
    stage.error = record.number("error");
    const std::string verdict = record.text("verdict");
    const auto* const found = std::find(std::begin(kVerdicts), std::end(kVerdicts), verdict);
    if (found == std::end(kVerdicts) || stage.stage < 0 || stage.stage >= RunInSettings::kStages)
        throw Fault("a stage is none of a run");
    stage.verdict = static_cast<RunInVerdict>(found - std::begin(kVerdicts));
    if (record.has("band"))
        stage.band = record.text("band") == "pass";
    constexpr double kAges = 1e15; // beyond any run, and still a whole number
    const double ms = record.number("ms");
    if (!(ms >= 0 && ms < kAges))
        throw Fault("a stage is none of a run");
    stage.ms = Milliseconds{static_cast<long long>(ms)};
    return stage;
}

void count(RunInProgress& progress, const RunInStage& stage) {
    progress.spent = stage.ms;
    if (stage.verdict == RunInVerdict::Measured)
        return;
    progress.last = stage;
    progress.loopCount = stage.loop;
    progress.roundServed = stage.stage != RunInSettings::kStages - 1;
    const auto judged = [&progress](bool pass) {
        ++progress.testCount;
        ++(pass ? progress.passCount : progress.failCount);
    };
    judged(stage.verdict == RunInVerdict::Pass);
    if (stage.band)
        judged(*stage.band);
}

/// Takes the records of a journal one by one.
class Reader {
  public:
    Reader(RunInHistory& history, const RunInListener& listener) : history_(history), listener_(listener) {}

    void take(const JsonObject& record) {
        const std::string kind = record.text("kind");
        if (first_ != (kind == "header"))
            throw Fault("it does not begin with a header");
        if (kind == "header")
            header(record);
        else if (kind == "range")
            range(record);
        else if (kind == "stage")
            stage(record);
        else if (kind == "event")
            event(record);
        else if (kind == "end")
            end(record);
        // Another kind is a later program's addition, which changes no count.
    }
    bool any() const { return !first_; }

  private:
    void header(const JsonObject& record) {
        if (const int version = record.whole("version"); version != kVersion)
            throw Fault("it is of version " + decimalText(version) + "; this program knows version " +
                        decimalText(kVersion));
        first_ = false;
        history_.header = headerOf(record);
        if (listener_.header)
            listener_.header(history_.header);
    }
    void range(const JsonObject& record) {
        history_.progress.range = RunInRange{record.number("max"), record.number("min"),
                                             record.number("voltsPerStep"), record.number("limit")};
        if (listener_.range)
            listener_.range(*history_.progress.range);
    }
    void stage(const JsonObject& record) {
        RunInStage stage = stageOf(record);
        if (stage.loop < 0 || stage.tally < 0 || stage.tally > history_.header.settings.positions)
            throw Fault("a stage is none of this run");
        // On the first two rows the measured value is what is expected.
        stage.expected = stage.verdict == RunInVerdict::Measured ? stage.volts : stage.error + stage.volts;
        count(history_.progress, stage);
        if (listener_.stage)
            listener_.stage(stage);
    }
    void event(const JsonObject& record) {
        const std::string what = record.text("what");
        if (what == runInEventName(RunInEvent::Resumed)) {
            ++history_.resumed;
            history_.ended.reset();
        }
        if (listener_.event)
            listener_.event(what, record.text("text"));
    }
    void end(const JsonObject& record) {
        history_.ended = record.text("ended");
        history_.progress.roundServed = true;
        if (listener_.ended)
            listener_.ended(*history_.ended);
    }

    RunInHistory& history_;
    const RunInListener& listener_;
    bool first_ = true;
};

Fault noJournal(const fs::path& path, const std::string& why) {
    return Fault("Cannot read " + path.string() + " as the journal of a run: " + why);
}

} // namespace

std::string newRunInId() {
    std::random_device device;
    std::string id;
    for (int part = 0; part < 4; ++part)
        id += hexText(static_cast<int>(device() & 0xFFFFU), 4);
    return id;
}

RunInHistory readRunIn(const fs::path& path, const RunInListener& listener) {
    RunInHistory history;
    Reader reader(history, listener);
    history.extent = readJournal(path, [&](std::string_view text) {
        const auto record = JsonObject::parse(text);
        if (!record)
            throw noJournal(path, "a record is no JSON object");
        try {
            reader.take(*record);
        } catch (const Fault& fault) {
            throw noJournal(path, fault.what());
        }
        return true;
    });
    if (!reader.any())
        throw noJournal(path, "it has no whole header");
    return history;
}

std::string whyNotResumable(const fs::path& path, const RunInHistory& history) {
    const std::string journal = "The journal " + path.string();
    if (history.extent.damaged)
        return journal + " is damaged behind line " + std::to_string(history.extent.line) +
               ": nobody can tell how the run went on";
    if (history.finished())
        return journal + " is of a run that was " + *history.ended + ": there is nothing to go on with";
    if (journalInUse(path))
        return journal + " is in use by another process";
    return {};
}

std::string stageRecord(const RunInStage& stage) {
    std::string text = "{\"kind\":\"stage\"," + value("loop", stage.loop) + "," +
                       value("stage", stage.stage) + "," + value("tally", stage.tally) + "," +
                       value("counts", stage.counts) + "," + value("volts", stage.volts) + "," +
                       value("error", stage.error) + "," +
                       word("verdict", kVerdicts[static_cast<int>(stage.verdict)]);
    if (stage.band)
        text += "," + word("band", *stage.band ? "pass" : "fail");
    return text + ",\"ms\":" + std::to_string(stage.ms.count()) + "}";
}

RunInJournal::RunInJournal(const fs::path& path, const RunInHeader& header, Trouble trouble)
    : file_(JournalFile::create(path)), trouble_(std::move(trouble)) {
    try {
        file_.add(headerRecord(header));
        file_.flush(true);
    } catch (const Fault&) {
        // Nothing has been run: a file without a header is of no use to anybody.
        std::error_code ignored;
        fs::remove(path, ignored);
        throw;
    }
}

RunInJournal::RunInJournal(const fs::path& path, const RunInHistory& history, Trouble trouble)
    : file_(JournalFile::open(path, history.extent.good)), trouble_(std::move(trouble)) {}

void RunInJournal::failed(const std::string& why) {
    whole_ = false;
    if (trouble_)
        trouble_(why);
}

void RunInJournal::add(const std::string& record) {
    if (!whole_)
        return;
    try {
        file_.add(record);
    } catch (const Fault& fault) {
        failed(fault.what());
    }
}

void RunInJournal::flush(bool wait) {
    if (!whole_)
        return;
    try {
        file_.flush(wait);
    } catch (const Fault& fault) {
        failed(fault.what());
    }
}

void RunInJournal::rangeFound(const RunInRange& range) {
    add("{\"kind\":\"range\"," + value("max", range.max) + "," + value("min", range.min) + "," +
        value("voltsPerStep", range.voltsPerStep) + "," + value("limit", range.limit) + "}");
}

void RunInJournal::stageDone(const RunInStage& stage) {
    add(stageRecord(stage));
    if (stage.stage == 2)
        flush(false);
}

void RunInJournal::roundDone(int /*count*/, int /*fails*/) {
    flush(false);
}

void RunInJournal::event(RunInEvent what, const std::string& text) {
    add("{\"kind\":\"event\"," + word("what", runInEventName(what)) + "," + word("text", text) + "}");
    flush(true);
}

void RunInJournal::end(RunInEnd how) {
    add("{\"kind\":\"end\"," + word("ended", runInEndName(how)) + "}");
    flush(true);
}

namespace {

/// A look at the end alone: the journals of finished runs are many and long.
bool endsFinished(const fs::path& path) {
    constexpr std::streamoff kTail = 300;
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    file.seekg(std::max<std::streamoff>(0, size - kTail));
    std::string tail(static_cast<std::size_t>(std::clamp<std::streamoff>(size, 0, kTail)), '\0');
    file.read(tail.data(), static_cast<std::streamsize>(tail.size()));
    const auto last = tail.rfind("{\"kind\":\"end\",");
    return last != std::string::npos && tail.find('\n', last) + 1 == tail.size() &&
           (tail.find("completed", last) != std::string::npos ||
            tail.find("terminated", last) != std::string::npos);
}

/// When its run was started; empty for a file that is no journal of a run.
std::string startOf(const fs::path& path) {
    std::string started;
    try {
        (void)readJournal(path, [&started](std::string_view text) {
            const auto record = JsonObject::parse(text);
            if (record && record->text("kind") == "header")
                started = record->text("started");
            return false;
        });
    } catch (const Fault&) {
        // Gone since, or not for us to read: nothing to offer.
        return {};
    }
    return started;
}

} // namespace

std::vector<fs::path> unfinishedRunIns(const fs::path& folder) {
    std::vector<std::pair<std::string, fs::path>> all;
    std::error_code error;
    std::error_code ignored;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        // The open of a pipe would wait for somebody to write to it.
        if (entry->path().extension() != ".journal" || !entry->is_regular_file(ignored) ||
            endsFinished(entry->path()))
            continue;
        if (std::string started = startOf(entry->path()); !started.empty())
            all.emplace_back(std::move(started), entry->path());
    }
    std::sort(all.begin(), all.end(), std::greater<>());
    std::vector<fs::path> paths;
    for (const auto& [started, path] : all)
        paths.push_back(path);
    return paths;
}

} // namespace vrk
