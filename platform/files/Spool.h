#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vrk {

/// Text that is too much for the memory, in a file without a name: it goes with the program, however that
/// ends.
class Spool {
  public:
    Spool() = default;
    ~Spool();
    Spool(const Spool&) = delete;
    Spool& operator=(const Spool&) = delete;

    /// Adds to the end, all of it or nothing. The first text opens the file, in $TMPDIR or /var/tmp: /tmp is
    /// often memory itself. \throws Fault with the system's description.
    void append(std::string_view text);
    /// \throws Fault with the system's description.
    std::string read(std::uint64_t offset, std::size_t length) const;
    /// Bytes held.
    std::uint64_t size() const { return size_; }
    void clear();

  private:
    int file_ = -1;
    std::uint64_t size_ = 0;
};

} // namespace vrk
