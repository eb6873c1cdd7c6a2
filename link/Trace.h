#pragma once

#include "platform/runtime/Signal.h"

#include <functional>
#include <initializer_list>
#include <string_view>

namespace vrk {

/// The trace's switches and the way of its lines. The trace panel sets the switches and takes the text.
class Trace {
  public:
    bool traceOn = false;      ///< nothing is written without it
    bool traceDetail = false;  ///< second level
    bool traceVerbose = false; ///< kept for the panel; no line depends on it
    bool baseIo = false;       ///< the buffer line, at second level

    /// Texts arrive in pieces, as they were appended; a line break is a piece of its own.
    void setSink(std::function<void(std::string_view)> sink) { sink_ = std::move(sink); }

    /// The boxes of the panels show what the switches are, whoever moved them; the second level's stands on
    /// two.
    void setOn(bool on) {
        traceOn = on;
        switched_.emit();
    }
    void setDetail(bool on) {
        traceDetail = on;
        switched_.emit();
    }
    [[nodiscard]] Subscription observeSwitches(std::function<void()> observer) {
        return switched_.connect(std::move(observer));
    }

    bool detailOn() const { return traceOn && traceDetail; }

    /// One line at the first level, from its pieces.
    void line(std::initializer_list<std::string_view> pieces) {
        if (traceOn)
            write(pieces);
    }
    /// One line at the second level.
    void detail(std::initializer_list<std::string_view> pieces) {
        if (detailOn())
            write(pieces);
    }
    /// An empty line at the first level.
    void blankLine() { line({}); }

  private:
    void write(std::initializer_list<std::string_view> pieces) {
        if (!sink_)
            return;
        for (const std::string_view piece : pieces)
            sink_(piece);
        sink_("\r\n");
    }

    std::function<void(std::string_view)> sink_;
    Signal<> switched_;
};

/// The indent that some lines start with.
inline constexpr std::string_view kTraceIndent = "     ";

} // namespace vrk
