#include "script/ScriptResults.h"

#include "platform/runtime/text.h"

#include <algorithm>
#include <set>
#include <utility>

namespace vrk {

const char* rowVerdictName(RowVerdict verdict) {
    switch (verdict) {
    case RowVerdict::Ran:
        return "ran";
    case RowVerdict::Pass:
        return "pass";
    case RowVerdict::Fail:
        return "fail";
    case RowVerdict::Error:
        return "error";
    case RowVerdict::NotReached:
        break;
    }
    return "not reached";
}

namespace {

RowVerdict worstOf(const PassResult& pass) {
    auto worst = pass.errors > 0 ? RowVerdict::Error : pass.failed > 0 ? RowVerdict::Fail : RowVerdict::Pass;
    for (const RowResult& row : pass.rows)
        worst = std::max(worst, row.verdict);
    return worst;
}

} // namespace

std::string ScriptResults::verdict() const {
    RowVerdict worst = before.worst;
    for (const PassResult& pass : passes)
        worst = std::max(worst, worstOf(pass));
    return rowVerdictName(worst);
}

void ResultCollector::begin(const std::string& script, const std::string& bus, const WallTime& started) {
    results_ = {};
    last_.clear();
    passBegan_ = {};
    results_.script = script;
    results_.bus = bus;
    results_.started = started;
    open_.clear();
    inPass_ = false;
}

void ResultCollector::finish(ScriptEnd end) {
    results_.ended = true;
    results_.end = end;
}

RowResult ResultCollector::described(int row) const {
    const ScriptRow& texts = script_.table.row(row);
    RowResult result;
    result.line = row;
    result.operation = texts[ScriptColumn::Operation];
    // Port bytes stand in the table as the user wrote them.
    result.address = upperCase(texts[ScriptColumn::Address]);
    result.reg = upperCase(texts[ScriptColumn::Register]);
    result.write = upperCase(texts[ScriptColumn::Write]);
    result.expected = upperCase(texts[ScriptColumn::Expected]);
    return result;
}

void ResultCollector::passBegan(int /*first*/, int /*last*/) {
    const int number = results_.passes.empty() ? 1 : results_.passes.back().pass + 1;
    if (keepRows_ != 0)
        forgetOldest();
    results_.passes.emplace_back().pass = number;
    inPass_ = true;
    anyRow_ = false;
    lastEnded_ = kNone;
    open_.clear();
    last_.clear();
    passBegan_ = host_.now();
    listNotReached();
}

void ResultCollector::forgetOldest() {
    std::deque<PassResult>& passes = results_.passes;
    if (passes.size() >= keepRows_)
        passes[passes.size() - keepRows_].rows = std::vector<RowResult>(); // "= {}" would keep its memory
    if (passes.size() < kMostPasses)
        return;
    results_.before.worst = std::max(results_.before.worst, worstOf(passes.front()));
    results_.before.lasted += passes.front().lasted;
    passes.pop_front();
}

void ResultCollector::listNotReached() {
    std::vector<RowResult>& all = results_.passes.back().rows;
    std::set<int> reached;
    for (const RowResult& row : all)
        reached.insert(row.line);
    for (int row = 1; row < script_.EndMainStep && row <= script_.table.rows(); ++row)
        if (!reached.contains(row))
            all.push_back(described(row));
}

void ResultCollector::passEnded(ScriptEnd end) {
    if (!inPass_)
        return; // with the table that its rows were of
    PassResult& pass = results_.passes.back();
    if (anyRow_)
        listNotReached();
    pass.lasted = host_.now() - passBegan_;
    pass.ended = true;
    pass.end = end;
    inPass_ = false;
    open_.clear();
}

void ResultCollector::count() {
    PassResult& pass = results_.passes.back();
    pass.lasted = host_.now() - passBegan_;
    pass.passed = fields_.number(ScriptFields::Text::RdPass);
    pass.failed = fields_.number(ScriptFields::Text::RdFails);
}

void ResultCollector::rowBegan(int row) {
    RowResult result = described(row);
    result.began = host_.now();
    result.verdict = RowVerdict::Ran;
    std::vector<RowResult>& all = rows();
    if (inPass_ && !std::exchange(anyRow_, true))
        all.clear(); // of what has not been reached; listed again at the end
    if (!inPass_ && open_.empty() && all.size() >= kMostByHand)
        all.erase(all.begin());
    open_.push_back(all.size());
    if (inPass_) {
        Ran& ran = last_[row];
        ran.at = all.size();
        ++ran.runs;
    }
    all.push_back(std::move(result));
}

const RowResult* ResultCollector::latest(int row) const {
    for (auto at = results_.byHand.rbegin(); at != results_.byHand.rend() && at->began >= passBegan_; ++at)
        if (at->line == row)
            return &*at;
    const auto found = last_.find(row);
    return found == last_.end() ? nullptr : &results_.passes.back().rows[found->second.at];
}

int ResultCollector::runs(int row) const {
    const auto found = last_.find(row);
    int count = found == last_.end() ? 0 : found->second.runs;
    for (auto at = results_.byHand.rbegin(); at != results_.byHand.rend() && at->began >= passBegan_; ++at)
        count += at->line == row ? 1 : 0;
    return count;
}

void ResultCollector::newTable() {
    last_.clear();
    if (inPass_) {
        // The run ends at its next row. What it came to is told while its rows and its counters still stand.
        for (const std::size_t at : open_)
            rows()[at].lasted = host_.now() - rows()[at].began;
        passEnded(ScriptEnd::Stopped);
    } else if (results_.ended) {
        results_ = {};
    }
    results_.byHand.clear();
    open_.clear();
}

RowResult* ResultCollector::current() {
    return open_.empty() || open_.back() >= rows().size() ? nullptr : &rows()[open_.back()];
}

const RowResult* ResultCollector::lastEnded() const {
    return lastEnded_ < rows().size() ? &rows()[lastEnded_] : nullptr;
}

void ResultCollector::rowCompared(int /*row*/, bool equal) {
    if (RowResult* result = current())
        result->verdict = std::max(result->verdict, equal ? RowVerdict::Pass : RowVerdict::Fail);
    if (inPass_)
        count();
}

void ResultCollector::rowInError(int /*row*/, const std::string& why) {
    RowResult* result = current();
    if (result == nullptr)
        return;
    if (result->verdict != RowVerdict::Error && inPass_)
        ++results_.passes.back().errors;
    result->verdict = RowVerdict::Error;
    result->why += (result->why.empty() ? "" : "; ") + why;
}

void ResultCollector::rowEnded(int row) {
    RowResult* result = current();
    if (result == nullptr)
        return;
    result->lasted = host_.now() - result->began;
    if (row <= script_.table.rows() && !result->expected.empty()) {
        const std::string& actual = script_.table.text(row, ScriptColumn::Actual);
        result->read = actual == "--" ? "" : actual;
    }
    lastEnded_ = open_.back();
    open_.pop_back();
    if (inPass_)
        count();
}

} // namespace vrk
