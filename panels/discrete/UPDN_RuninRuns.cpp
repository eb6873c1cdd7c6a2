#include "panels/discrete/RunInReport.h"
#include "panels/discrete/UPDN_Runin.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <system_error>
#include <utility>

namespace vrk {

namespace fs = std::filesystem;

namespace {

constexpr int kWiperRow = 6;          ///< VIN0 on the channel list
constexpr Milliseconds kFalls{250};   ///< for VCC to fall below what keeps a part's wiper
constexpr Milliseconds kRecalls{100}; ///< for a part to recall its position once VCC is there
constexpr std::size_t kLogLines = 20'000;
constexpr int kRound = 4; ///< steps

/// "1:02:03"
std::string clockText(Milliseconds time) {
    const long long seconds = time.count() / 1000;
    const auto two = [](long long value) { return (value < 10 ? "0" : "") + decimalText(value); };
    return decimalText(seconds / 3600) + ":" + two(seconds / 60 % 60) + ":" + two(seconds % 60);
}

double numberOf(const TextBox& field, const std::string& name) {
    if (!isNumeric(field.text()))
        throw Fault(name + ": \"" + field.text() + "\" is no number.");
    return leadingNumber(field.text());
}

int wholeOf(const TextBox& field, const std::string& name) {
    return roundHalfEven(numberOf(field, name));
}

/// First log point that is not short of the steps asked for: log points that fall inside a round are none.
int endStepOf(const RunInSettings& settings) {
    const long long apart = std::lcm(static_cast<long long>(settings.logSteps), kRound);
    const long long points = std::max<long long>(1, (settings.testQty + apart - 1) / apart);
    return static_cast<int>(std::min<long long>(points * apart, std::numeric_limits<int>::max()));
}

std::string summary(const RunInHistory& history) {
    const RunInSettings& settings = history.header.settings;
    return settings.id + ", started " + history.header.started + ": step" +
           numberToText(history.progress.loopCount) + " of" + numberToText(settings.testQty) + "," +
           numberToText(history.progress.failCount) + " fails, " + clockText(history.progress.spent);
}

} // namespace

RunInSettings UPDN_Runin::takeSettings() {
    RunInSettings settings;
    settings.positions = toInt16(wholeOf(txtWipPositions, "Positions"));
    settings.logSteps = toInt16(wholeOf(txtLogSteps, "Log Progress every"));
    settings.testQty = wholeOf(txtTestQty, "End Test after");
    settings.tolerance = numberOf(txtLimitDiv, "Tolerance");
    settings.positionsText = txtWipPositions.text();
    settings.toleranceText = txtLimitDiv.text();
    settings.id = txtRunInID.text();
    settings.logAll = ChkLogAll.checked();
    settings.doublePurge = ChkFast.checked();
    for (int stage = 0; stage < kStages; ++stage) {
        const int steps = wholeOf(txtInitialIncr[stage], "Steps of stage" + numberToText(stage));
        if (steps < 0)
            throw Fault("Steps of stage" + numberToText(stage) + ": at least 0 are needed.");
        settings.stimulus.at(static_cast<std::size_t>(stage)) = steps;
    }
    settings.reference = services_.analog.ADRef;
    if (settings.positions < 1)
        throw Fault("Positions: at least 1 is needed.");
    if (settings.logSteps == 0)
        throw divisionByZero();
    if (settings.logSteps < 0)
        throw Fault("Log Progress every: at least 1 is needed.");
    if (settings.tolerance < 0)
        throw Fault("Tolerance: at least 0 is needed.");
    return settings;
}

void UPDN_Runin::cmdRunInitial_Click() {
    (void)run(
        {.journal = chkJournal.checked() ? journalPath() : fs::path(), .begun = [this](const RunInHeader&) {
             FrmUnfinished.setVisible(false);
             left_.insert(unfinished_);
         }});
}

fs::path UPDN_Runin::journalPath() const {
    std::string stamp = runInStamp(context().clock().wallTime());
    std::erase_if(stamp, [](char c) { return c == '-' || c == ':'; });
    std::replace(stamp.begin(), stamp.end(), ' ', '-');
    fs::path path = state_.home.folder / ("runin-" + stamp + ".journal");
    std::error_code ignored;
    for (int more = 2; fs::exists(path, ignored); ++more) // two runs in one second
        path = state_.home.folder / ("runin-" + stamp + "-" + decimalText(more) + ".journal");
    return path;
}

RunInHeader UPDN_Runin::headerOf(const RunInSettings& settings) const {
    RunInHeader header;
    header.run = newRunInId();
    header.started = runInStamp(context().clock().wallTime());
    header.program = state_.home.program;
    header.part = state_.home.part ? state_.home.part() : std::string();
    if (const SupplyBlock* block = supply(); block != nullptr && block->CboVCC.listIndex() >= 0)
        header.vcc = block->CboVCC.rows().at(static_cast<std::size_t>(block->CboVCC.listIndex())).text;
    header.calibration = services_.board().lblCal_header.caption();
    header.settings = settings;
    return header;
}

RunInJournal::Trouble UPDN_Runin::journalTrouble(const RunInOrder& order) {
    return [this, told = order.journalFailed](const std::string& why) {
        lblJournal.setCaption("The journal ends here: " + why);
        tell(false, "The journal of the run ends here; the run goes on", why, &chkJournal);
        if (told)
            told(why);
    };
}

std::unique_ptr<RunInJournal> UPDN_Runin::newJournal(const RunInOrder& order, const RunInHeader& header) {
    if (!order.asks)
        return std::make_unique<RunInJournal>(order.journal, header, journalTrouble(order));
    try {
        const fs::path folder = order.journal.parent_path();
        std::error_code error;
        if (fs::create_directories(folder, error); error)
            throw Fault("Cannot make the folder " + folder.string() + ": " + error.message());
        return std::make_unique<RunInJournal>(order.journal, header, journalTrouble(order));
    } catch (const std::exception& fault) { // of the file system too
        lblJournal.setCaption(std::string("No journal: ") + fault.what());
        context().say(std::string("No journal can be kept: ") + fault.what() +
                      "\r\nThe test begins without one; if it is stopped it cannot be gone on with.");
        return nullptr;
    }
}

RunInEnd UPDN_Runin::run(const RunInOrder& order) {
    if (running())
        throw Fault("A run-in test is running.");
    std::optional<RunInHistory> history;
    if (order.resume) {
        history = readRunIn(order.journal);
        if (const std::string why = whyNotResumable(order.journal, *history); !why.empty())
            throw Fault(why);
        showFields(history->header);
    }
    RunInSettings settings = history ? history->header.settings : takeSettings();
    settings.abort = order.abort;
    const RunInHeader header = history ? history->header : headerOf(settings);
    lblJournal.setCaption("");
    std::unique_ptr<RunInJournal> journal;
    if (history)
        journal = std::make_unique<RunInJournal>(order.journal, *history, journalTrouble(order));
    else if (!order.journal.empty())
        journal = newJournal(order, header);
    if (journal)
        lblJournal.setCaption(journal->path().string());

    DisabledWhile busy(
        {&Frame2, &cmdRunInitial, &FrmStaticIO, &txtLogSteps, &txtTestQty, &txtWipPositions, &FrmUnfinished});
    services_.run.ScriptAbort = false;
    resetShown();
    const bool traced = std::exchange(trace_.traceOn, false); // a line an edge would cost more than the edge
    services_.link.setUnattended(true);
    const OnScopeExit after([this, traced] {
        trace_.setOn(traced);
        services_.link.setUnattended(false);
        cmdAbortRun.setEnabled(false);
        activity_ = nullptr;
        test_ = nullptr;
    });
    cndTclear_Click();
    rtxt1.setLineLimit(journal ? kLogLines : std::numeric_limits<std::size_t>::max() / 2);
    cmdAbortRun.setEnabled(true);
    state_ = {.LogSteps = settings.logSteps,
              .TestQty = settings.testQty,
              .PosMax = settings.positions,
              .ADVoltsPerCount = 2 * settings.reference / 1023,
              .home = std::move(state_.home)};
    const auto awake =
        state_.home.awake != nullptr ? state_.home.awake->keepAwake("Run-in test") : std::shared_ptr<void>();
    Activity activity(context().activities, "Run-in test", [this] { services_.run.ScriptAbort = true; });
    activity_ = &activity;
    asks_ = order.asks;
    powered_ = services_.vccOn();
    minusOn_ = services_.board().OptVCCMinus[0].value();
    endStep_ = endStepOf(settings);
    lblEndStep.setCaption(decimalText(endStep_));
    rounds_.clear();
    began_ = roundBegan_ = context().clock().now();
    lblElapsed.setCaption(clockText(Milliseconds{0}));

    RunInAudience audience; // the journal before the fields: what is shown has been written
    if (journal)
        audience.add(*journal);
    audience.add(*this);
    for (RunInObserver* observer : order.observers)
        audience.add(*observer);
    RunInTest test(*this, audience, settings);
    test_ = &test;
    lost_ = edgeLost_ = false;
    const OnScopeExit unwound([this, &journal] {
        // The program ends under the run: the journal says why, and can be gone on with.
        if (journal && events().ended())
            journal->end(lost_ ? RunInEnd::LinkLost : RunInEnd::Interrupted);
    });
    if (order.begun)
        order.begun(header);
    begun_.emit(settings);
    if (!history)
        return test.run(services_.run.ScriptAbort);
    showProgress(history->progress);
    tellEarlier(order.journal);
    chooseLevel(header.vcc);
    powered_ = true; // what was on goes on again
    return test.resume(history->progress, services_.run.ScriptAbort);
}

// ---- the link

SupplyBlock* UPDN_Runin::supply() const {
    return dynamic_cast<SupplyBlock*>(services_.link.activePanel);
}

bool UPDN_Runin::exchange() {
    for (;;) {
        // Where an edge is missing the part does not stand where the tally says: that is no fail of the part.
        const bool edgeLost = std::exchange(edgeLost_, false) && test_ != nullptr;
        const int status = edgeLost ? static_cast<int>(kLinkWriteFailed) : convert();
        lost_ = status == kLinkReadFailed || status == kLinkWriteFailed;
        if (!lost_)
            return true;
        // A board that did not even take the request, or ended the wait for its reply, was unplugged.
        const bool gone = services_.link.health() == modHID::Health::Gone;
        if (test_ != nullptr)
            test_->linkLost(status == kLinkReadFailed ? "no reply" : "the board did not take the request");
        services_.link.reportLinkError(status, 0);
        const bool supplied = !powered_ || (!gone && services_.vccOn());
        const bool lookFor = edgeLost && powered_;
        if (test_ != nullptr)
            test_->linkBack(!supplied ? "the supply was away and is switched on again"
                            : lookFor ? "edges are missing, the part is looked for"
                                      : "the supply has stayed on");
        if ((!supplied || lookFor) && test_ != nullptr)
            return false;
        // What a lost reply leaves in the buffer is no conversion: the exchange is repeated.
    }
}

std::optional<int> UPDN_Runin::sample(bool doublePurge) {
    modHID& link = services_.link;
    if (doublePurge)
        link.purgeInputReports();
    if (!exchange())
        return std::nullopt;
    pump();
    link.purgeInputReports();
    pump();
    if (!exchange())
        return std::nullopt;
    return (link.reportBuffer[report::kFirstData] * 256 + link.reportBuffer[report::kFirstData + 1]) & 0x7FFF;
}

void UPDN_Runin::recall() {
    frmMotherboardDAQ2& board = services_.board();
    unsigned before = 0;
    do {
        before = services_.link.retries();
        board.OptVCC[1].setValue(true);
        // Without tracking that switch leaves VCC's pin as it is.
        board.setPin(frmMotherboardDAQ2::kPinVcc, 0);
        board.cmdWrtPipe1_Click();
        wait(kFalls);
        // Raising /CS without VCC stores nothing, whatever /INC was left at.
        cmdAlloutsHigh_Click(0);
        services_.motherboard.setUpSupplyDac();
        switchOn();
        wait(kRecalls);
        if (board.Combo1.listIndex() == kWiperRow) // the board may have forgotten what the list remembers
            board.Combo1_Click();
        prepare();
        cmdAlloutsHigh_Click(0);
        // The link may have broken on the way, and the supply with it.
    } while (services_.link.retries() != before);
}

void UPDN_Runin::switchOn() {
    frmMotherboardDAQ2& board = services_.board();
    if (SupplyBlock* block = supply()) {
        block->OptVCC[0].showSelected();
        block->OptVCC_Click(0);
    } else {
        board.OptVCC[0].setValue(true);
    }
    if (!services_.supply.TrackOn && minusOn_)
        board.OptVCCMinus[0].setValue(true);
}

void UPDN_Runin::chooseLevel(const std::string& level) {
    SupplyBlock* block = supply();
    if (block == nullptr || level.empty())
        return;
    const auto& rows = block->CboVCC.rows();
    const auto found =
        std::find_if(rows.begin(), rows.end(), [&level](const auto& row) { return row.text == level; });
    if (found == rows.end())
        throw Fault("The run had VCC at " + level + ", which the supply's list has not.");
    block->CboVCC.setListIndex(static_cast<int>(found - rows.begin()));
}

bool UPDN_Runin::goOn(const std::string& text) {
    if (!asks_)
        return true;
    return context().dialogs.show({text + "\r\n\r\nGo on all the same? The tally stays as it is.",
                                   {},
                                   {Choice::Yes, Choice::No}}) == Choice::Yes;
}

// ---- what a run shows

void UPDN_Runin::showTime(int count) {
    constexpr std::size_t kRounds = 63;
    const Milliseconds now = context().clock().now();
    rounds_.push_back(now - std::exchange(roundBegan_, now));
    if (rounds_.size() > kRounds)
        rounds_.pop_front();
    std::vector<Milliseconds> sorted(rounds_.begin(), rounds_.end());
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    lblElapsed.setCaption(clockText(now - began_));
    lblTimeLeft.setCaption(clockText(*middle * (std::max(0, endStep_ - count) / kRound)));
}

void UPDN_Runin::roundDone(int count, int /*fails*/) {
    lblRUnCount[0].setCaption(decimalText(count));
    showTime(count);
    if (activity_ != nullptr)
        activity_->progress(count, std::max(endStep_, count));
}

void UPDN_Runin::ended(RunInEnd how, int count, int fails) {
    const bool still = count > 0 && wiperStill(state_.VoltsPerStep);
    tell(fails == 0 && !still && how != RunInEnd::Mismatch, std::string("Run-in ") + runInEndName(how),
         decimalText(count) + " steps, " + decimalText(fails) + " fails" +
             (still ? std::string(", but ") + kWiperStill : ""),
         &lblRUnCount[1]);
}

void UPDN_Runin::showFields(const RunInHeader& header) {
    const RunInSettings& settings = header.settings;
    txtTestQty.setText(decimalText(settings.testQty));
    txtLogSteps.setText(decimalText(settings.logSteps));
    txtWipPositions.setText(settings.positionsText);
    txtLimitDiv.setText(settings.toleranceText);
    txtRunInID.setText(settings.id);
    ChkLogAll.setValue(settings.logAll ? 1 : 0);
    ChkFast.setValue(settings.doublePurge ? 1 : 0);
    for (int stage = 0; stage < kStages; ++stage)
        txtInitialIncr[stage].setText(decimalText(settings.stimulus.at(static_cast<std::size_t>(stage))));
}

void UPDN_Runin::showProgress(const RunInProgress& progress) {
    state_.LoopCount = progress.loopCount;
    state_.TestCount = progress.testCount;
    state_.FailCount = progress.failCount;
    state_.PassCount = progress.passCount;
    if (progress.range) {
        rangeFound(*progress.range);
        for (auto& volts : lblWIPRange) {
            const double value = volts->index() == 0 ? progress.range->max : progress.range->min;
            volts->showRead(formatNumber(value, "#0.00000"));
            volts->markStale("taken from the journal");
        }
    }
    lblRUnCount[0].setCaption(decimalText(progress.loopCount));
    if (progress.failCount > 0)
        lblRUnCount[1].setCaption(decimalText(progress.failCount));
    if (progress.last) {
        state_.WiperPos = progress.last->tally;
        lblPosition.setCaption(decimalText(progress.last->tally));
    }
    began_ -= progress.spent;
    lblElapsed.setCaption(clockText(progress.spent));
}

void UPDN_Runin::showEndStep() {
    if (running())
        return;
    lblEndStep.setCaption("-----");
    try {
        RunInSettings settings;
        settings.testQty = wholeOf(txtTestQty, "End Test after");
        settings.logSteps = toInt16(wholeOf(txtLogSteps, "Log Progress every"));
        if (settings.logSteps > 0)
            lblEndStep.setCaption(decimalText(endStepOf(settings)));
    } catch (const Fault&) {
        // Half typed, or no number: Run Test tells what is wrong.
    }
}

void UPDN_Runin::tellEarlier(const fs::path& journal) {
    if (earlier_.empty())
        return;
    bool resumed = false;
    RunInListener listener;
    listener.stage = [&](const RunInStage& stage) {
        if (stage.loop > 0)
            earlier_.emit(stage, std::exchange(resumed, false));
    };
    listener.event = [&resumed](const std::string& what, const std::string& /*text*/) {
        resumed = resumed || what == runInEventName(RunInEvent::Resumed);
    };
    (void)readRunIn(journal, listener);
}

// ---- unfinished runs

void UPDN_Runin::Form_Activate() {
    if (!running())
        offerUnfinished();
}

void UPDN_Runin::offerUnfinished() {
    FrmUnfinished.setVisible(false);
    if (!chkJournal.checked())
        return;
    for (const fs::path& path : unfinishedRunIns(state_.home.folder)) {
        if (left_.contains(path))
            continue;
        try {
            const RunInHistory history = readRunIn(path);
            if (!whyNotResumable(path, history).empty())
                continue;
            unfinished_ = path;
            lblUnfinished.setCaption(summary(history));
            lblUnfinished.setToolTip(path.string());
            FrmUnfinished.setVisible(true);
            return;
        } catch (const Fault&) {
            // Not a journal that this program can go on with: nothing to offer.
        }
    }
}

void UPDN_Runin::cmdResumeRun_Click() {
    (void)run({.journal = unfinished_, .resume = true, .begun = [this](const RunInHeader&) {
                   FrmUnfinished.setVisible(false);
               }});
    offerUnfinished(); // a run that stopped because the part is elsewhere can be gone on with once it is back
}

void UPDN_Runin::cmdNewRun_Click() {
    left_.insert(unfinished_);
    offerUnfinished(); // there may be an older one
}

void UPDN_Runin::cmdShowRun_Click() {
    cndTclear_Click();
    rtxt1.setLineLimit(kLogLines);
    const auto line = [this](const std::string& text) { rtxt1.append(text + "\r\n"); };
    RunInRange range;
    RunInListener listener;
    listener.header = [&](const RunInHeader& header) {
        line("Journal " + unfinished_.string());
        line(header.settings.id + " " + header.started + " " + header.program + " " + header.part);
        line("Positions " + header.settings.positionsText + " V Tolerence " + header.settings.toleranceText);
    };
    listener.range = [&range](const RunInRange& found) { range = found; };
    listener.stage = [&](const RunInStage& stage) {
        if (stage.verdict != RunInVerdict::Fail && stage.band != false)
            return;
        const auto volts = [](double value) { return formatNumber(value, "##.0000"); };
        line(" Step" + numberToText(stage.loop) + " Wiper Position" + numberToText(stage.tally) + "   Read " +
             volts(stage.volts) + "   Error " + volts(stage.error) + "  TOL " + volts(range.limit) +
             " Volts  FAIL");
    };
    listener.event = [&line](const std::string& /*what*/, const std::string& text) { line(" " + text); };
    line(summary(readRunIn(unfinished_, listener)));
}

} // namespace vrk
