#include "platform/controls/TextLog.h"

#include "platform/controls/Panel.h"
#include "platform/runtime/Fault.h"

#include <algorithm>
#include <utility>

namespace vrk {

namespace {
constexpr std::string_view kLineEnd = "\r\n";
/// A block is what one look at an old line costs.
constexpr std::size_t kBlockLines = 256;
constexpr std::size_t kBlockBytes = 1'000'000;
} // namespace

void TextLog::add(std::string_view text) {
    size_ += text.size();
    const auto put = [this](char c) {
        lines_.back() += c;
        ++memory_;
    };
    for (const char c : text) {
        // A line break may come in two appends, so the CR waits for its LF.
        if (std::exchange(pendingReturn_, false) && c != '\n')
            put('\r');
        if (c == '\r') {
            pendingReturn_ = true;
        } else if (c == '\n') {
            lines_.emplace_back();
            memory_ += kLineEnd.size();
        } else {
            put(c);
        }
    }
    while ((memory_ > limit_ || lines_.size() > lineLimit_ + kBlockLines) && lines_.size() > 1 && !diskFails_)
        spoolOldest();
}

void TextLog::spoolOldest() {
    std::string block;
    std::size_t lines = 0;
    while (lines + 1 < lines_.size() && lines < kBlockLines && block.size() < kBlockBytes) {
        block += lines_[lines++];
        block += kLineEnd;
    }
    const std::uint64_t offset = spool_.size();
    try {
        spool_.append(block);
    } catch (const Fault& fault) {
        diskFails_ = true;
        tell(false, panel().title() + ": the text is too long for its place in memory", fault.what());
        return;
    }
    blocks_.push_back({spooledLines_, offset});
    lines_.erase(lines_.begin(), lines_.begin() + static_cast<std::ptrdiff_t>(lines));
    spooledLines_ += lines;
    memory_ -= block.size();
    if (!std::exchange(told_, true))
        tell(true, panel().title() + ": the oldest lines go to the disk from here on", "nothing is lost");
}

void TextLog::tell(bool good, const std::string& text, const std::string& detail) const {
    panel().context().results.add({.good = good,
                                   .text = text,
                                   .detail = detail,
                                   .field = panel().name() + "." + path(),
                                   .time = panel().context().clock().wallTime()});
}

void TextLog::append(std::string_view text) {
    if (text.empty())
        return;
    add(text);
    notify(Aspect::Appended);
}

void TextLog::setText(std::string_view text) {
    lines_.assign(1, std::string());
    size_ = memory_ = spooledLines_ = 0;
    pendingReturn_ = diskFails_ = told_ = false;
    spool_.clear();
    blocks_.clear();
    cachedBlock_ = 0;
    add(text);
    notify(Aspect::Value);
}

void TextLog::readBlock(std::size_t block) const {
    if (std::exchange(cachedBlock_, block + 1) == block + 1)
        return;
    const bool last = block + 1 == blocks_.size();
    const std::uint64_t end = last ? spool_.size() : blocks_[block + 1].offset;
    const std::size_t lines =
        (last ? spooledLines_ : blocks_[block + 1].firstLine) - blocks_[block].firstLine;
    cache_.clear();
    try {
        const std::string text =
            spool_.read(blocks_[block].offset, static_cast<std::size_t>(end - blocks_[block].offset));
        for (std::size_t at = 0; cache_.size() < lines;) {
            const std::size_t lineEnd = text.find('\n', at); // a line holds none
            cache_.push_back(text.substr(at, lineEnd + 1 - kLineEnd.size() - at));
            at = lineEnd + 1;
        }
    } catch (const Fault& fault) {
        cache_.assign(lines, std::string("(") + fault.what() + ")");
    }
}

const std::string& TextLog::line(std::size_t number) const {
    if (number >= spooledLines_)
        return lines_[number - spooledLines_];
    const auto after =
        std::upper_bound(blocks_.begin(), blocks_.end(), number,
                         [](std::size_t line, const Block& block) { return line < block.firstLine; });
    const auto block = static_cast<std::size_t>(after - blocks_.begin()) - 1;
    readBlock(block);
    return cache_[number - blocks_[block].firstLine];
}

std::string TextLog::text() const {
    std::string all;
    all.reserve(static_cast<std::size_t>(spool_.size()) + memory_);
    for (std::size_t block = 0; block < blocks_.size(); ++block) {
        readBlock(block);
        for (const std::string& line : cache_) {
            all += line;
            all += kLineEnd;
        }
    }
    for (std::size_t number = 0; number < lines_.size(); ++number) {
        if (number > 0)
            all += kLineEnd;
        all += lines_[number];
    }
    return all;
}

} // namespace vrk
