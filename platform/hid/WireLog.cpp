#include "platform/hid/WireLog.h"

#include "platform/files/files.h"
#include "platform/runtime/Fault.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <map>

namespace vrk::hid {

namespace {

constexpr std::string_view kFormat = "vrkbench wire log 1";
constexpr int kMaxBoards = 128; ///< more than a USB bus has addresses
/// Of a device's path; each report of the board carries it.
constexpr std::size_t kMostPath = 4096;

std::string padded(std::string text, std::size_t width) {
    if (text.size() < width)
        text.insert(0, width - text.size(), ' ');
    return text;
}

std::string startedText(const WallTime& time) {
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d.%03d", time.year, time.month, time.day,
                  time.hour, time.minute, time.second, time.millisecond);
    return text;
}

/// Takes words off the front of a line.
class Words {
  public:
    explicit Words(std::string_view line) : rest_(line) {}

    std::string_view next() {
        skipBlanks();
        const auto end = std::min(rest_.find_first_of(" \t"), rest_.size());
        const auto word = rest_.substr(0, end);
        rest_.remove_prefix(end);
        return word;
    }
    std::string_view rest() {
        skipBlanks();
        return rest_;
    }

  private:
    void skipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t"), rest_.size())); }

    std::string_view rest_;
};

template <class Number>
bool readNumber(std::string_view word, Number& number, int base) {
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number, base);
    return error == std::errc{} && end == word.data() + word.size();
}

bool readBoardNumber(std::string_view word, int& number) {
    return readNumber(word, number, 10) && number >= 0 && number < kMaxBoards;
}

/// \return false if the line is not one report as the log writes it.
bool readReport(std::string_view line, WireEvent& event) {
    Words words(line);
    std::int64_t at = 0;
    if (!readNumber(words.next(), at, 10) || at < 0)
        return false;
    event.at = Milliseconds{at};
    const auto direction = words.next();
    if (direction != "out" && direction != "in")
        return false;
    event.direction = direction == "out" ? WireEvent::Direction::Out : WireEvent::Direction::In;
    if (!readBoardNumber(words.next(), event.board))
        return false;
    for (std::uint8_t& byte : event.report) {
        const auto word = words.next();
        if (word.size() != 2 || !readNumber(word, byte, 16))
            return false;
    }
    const auto mark = words.next();
    event.failed = mark == "failed";
    return (mark.empty() || event.failed) && words.rest().empty();
}

/// \return false if the line is no "board" line.
bool readBoard(std::string_view line, std::map<int, std::string>& paths) {
    Words words(line);
    int number = 0;
    if (words.next() != "board" || !readBoardNumber(words.next(), number) || words.rest().size() > kMostPath)
        return false;
    paths[number] = words.rest();
    return true;
}

} // namespace

std::string reportText(const Report& report) {
    std::string text;
    for (const std::uint8_t byte : report) {
        if (!text.empty())
            text += ' ';
        text += byteToHex2(byte);
    }
    return text;
}

WireLog::WireLog(WireRecorder& recorder, const Clock& clock, const std::filesystem::path& path,
                 std::function<void(const std::string&)> onFailure)
    : path_(path.string()),
      file_(std::make_unique<OutputFile>(path, OutputFile::Mode::Anew)),
      onFailure_(std::move(onFailure)) {
    if (const int error = file_->write(std::string(kFormat) + "\n# started " + startedText(clock.wallTime()) +
                                       "\n# ms, direction, board, 64 bytes\n"))
        throw fileFault("write", path_, error);
    subscription_ = recorder.observe([this](const WireEvent& event) { write(event); });
}

void WireLog::write(const WireEvent& event) {
    if (!file_)
        return;
    std::string text;
    if (const auto named = named_.find(event.board);
        named == named_.end() || named->second != event.boardPath) {
        named_.insert_or_assign(event.board, event.boardPath);
        text = "board " + std::to_string(event.board) + ' ' + event.boardPath + '\n';
    }
    text += padded(std::to_string(event.at.count()), 8);
    text += event.direction == WireEvent::Direction::Out ? " out " : " in  ";
    text +=
        std::to_string(event.board) + ' ' + reportText(event.report) + (event.failed ? " failed\n" : "\n");
    if (const int error = file_->write(text)) {
        file_.reset();
        end(error);
    }
}

void WireLog::end(int error) {
    if (onFailure_)
        onFailure_(std::string(fileFault("write", path_, error).what()) + ". The wire log ends here.");
}

WireLog::~WireLog() {
    const int error = file_ == nullptr ? 0 : file_->close();
    if (error == 0)
        return;
    try {
        end(error);
    } catch (...) {
        // Who is told of it fails as well: there is nobody else.
    }
}

void requireOtherFile(const std::filesystem::path& replay, const std::filesystem::path& log) {
    if (!replay.empty() && !log.empty() && sameFile(replay, log))
        throw Fault("The wire log would overwrite the recording that is played back: " + log.string());
}

std::vector<WireEvent> parseWireLog(std::string_view text) {
    std::vector<WireEvent> events;
    std::map<int, std::string> paths;
    for (int number = 1; !text.empty(); ++number) {
        const auto end = text.find('\n');
        const bool whole = end != std::string_view::npos;
        auto line = text.substr(0, end);
        text.remove_prefix(whole ? end + 1 : text.size());
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);

        if (number == 1) {
            if (line != kFormat)
                throw Fault("This is no wire log: the first line is not \"" + std::string(kFormat) + "\"");
            continue;
        }
        const auto content = Words(line).rest();
        if (content.empty() || content.front() == '#' || readBoard(content, paths))
            continue;
        WireEvent event;
        if (readReport(content, event)) {
            event.boardPath = paths[event.board];
            events.push_back(std::move(event));
        } else if (whole) {
            throw Fault("Line " + std::to_string(number) + " of the wire log is no report: \"" +
                        std::string(content.substr(0, 60)) + "\"");
        }
    }
    return events;
}

} // namespace vrk::hid
