#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace vrk {

/// CRC-32 as zip files have it (reflected polynomial EDB88320).
std::uint32_t crc32(std::string_view bytes);

/// A file that only grows, a record a line, each behind eight hexadecimal digits of its CRC-32 and a blank,
/// so that whoever reads it knows what of it is whole. Held by one process at a time.
class JournalFile {
  public:
    /// Makes the file; one that exists is never touched. \throws Fault
    static JournalFile create(const std::filesystem::path& path);
    /// Goes on behind the first `length` bytes: what stands behind them was torn. \throws Fault, also where
    /// somebody else has it in use.
    static JournalFile open(const std::filesystem::path& path, std::uint64_t length);

    JournalFile(JournalFile&&) noexcept;
    JournalFile& operator=(JournalFile&&) noexcept;
    /// Waits for the disk.
    ~JournalFile();

    /// Adds a record, which holds no line break. It outlives the program from here on, not yet the machine.
    /// \throws Fault; what of the record went out is torn, and the next record is refused.
    void add(std::string_view record);
    /// What was added shall outlive the machine too. Without `wait` the disk works beside the caller, whose
    /// rate must not hang on it; one flush at a time, the next takes what gathered meanwhile.
    /// \throws Fault, without `wait` for what failed since the last call.
    void flush(bool wait);

    const std::filesystem::path& path() const { return path_; }

  private:
    class Disk;
    JournalFile(std::filesystem::path path, int file);

    std::filesystem::path path_;
    std::unique_ptr<Disk> disk_;
    bool torn_ = false;
    std::string line_; ///< keeps its memory from record to record
};

/// Whether some process writes to the journal. Takes nothing and waits for nothing.
bool journalInUse(const std::filesystem::path& path);

/// How far a journal can be read.
struct JournalExtent {
    std::uint64_t good = 0; ///< bytes up to the last whole record
    bool torn = false;      ///< behind them stands a last line that is none: the program was killed in it
    bool damaged = false;   ///< behind them stands a line that is none, and more
    long long line = 0;     ///< records that are whole
};

/// Reads a journal record by record, however long it is, while somebody may be writing to it.
/// \param take gets each whole record; false ends the reading there. \throws Fault
JournalExtent readJournal(const std::filesystem::path& path,
                          const std::function<bool(std::string_view record)>& take);

} // namespace vrk
