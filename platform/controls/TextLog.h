#pragma once

#include "platform/controls/Control.h"
#include "platform/files/Spool.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace vrk {

/// A growing text. Appending costs the same however long the text is. What exceeds 50 MB goes to a temporary
/// file on the disk, oldest lines first, which the user is told once; a last line without an end stays in
/// memory, however long. Where the disk takes nothing the text stays in memory whole.
class TextLog final : public Control {
  public:
    static constexpr std::size_t kMostInMemory = 50'000'000;

    TextLog(Panel& panel, std::string name, int index = kNoIndex) : Control(panel, std::move(name), index) {}
    Kind kind() const override { return Kind::TextLog; }

    /// Adds to the end; lines break at CR LF. Observers hear Aspect::Appended.
    void append(std::string_view text);
    /// Replaces everything. Observers hear Aspect::Value.
    void setText(std::string_view text);
    void clear() { setText({}); }

    /// At least 1: the last line is what stands behind the last line break, maybe empty.
    std::size_t lineCount() const { return spooledLines_ + lines_.size(); }
    /// Holds until the next call: a line may come from the disk. One that cannot be read back says so.
    const std::string& line(std::size_t number) const;
    /// The whole text, lines ended by CR LF.
    std::string text() const;
    /// Bytes of the text, as appended.
    std::size_t size() const { return size_; }

    /// Bytes kept in memory; kMostInMemory at first.
    void setMemoryLimit(std::size_t bytes) { limit_ = bytes; }
    /// Lines kept in memory at least; the bytes' limit alone at first.
    void setLineLimit(std::size_t lines) { lineLimit_ = lines; }
    /// Bytes of text in memory now.
    std::size_t inMemory() const { return memory_; }

  private:
    /// Lines that went to the disk together and come back together.
    struct Block {
        std::size_t firstLine;
        std::uint64_t offset;
    };

    void add(std::string_view text);
    void spoolOldest();
    void tell(bool good, const std::string& text, const std::string& detail) const;
    void readBlock(std::size_t block) const;

    std::deque<std::string> lines_{std::string()};
    std::size_t size_ = 0;
    bool pendingReturn_ = false;

    std::size_t limit_ = kMostInMemory;
    std::size_t lineLimit_ = std::numeric_limits<std::size_t>::max() / 2;
    std::size_t memory_ = 0;
    Spool spool_;
    std::vector<Block> blocks_;
    std::size_t spooledLines_ = 0;
    bool diskFails_ = false;
    bool told_ = false;
    mutable std::size_t cachedBlock_ = 0; ///< number of the block in cache_, from 1; 0 is none
    mutable std::vector<std::string> cache_;
};

} // namespace vrk
