#pragma once

#include <string>

namespace vrk {

class Clipboard {
  public:
    Clipboard() = default;
    Clipboard(const Clipboard&) = delete;
    Clipboard& operator=(const Clipboard&) = delete;
    virtual ~Clipboard() = default;
    virtual std::string text() const = 0;
    virtual void setText(const std::string& text) = 0;
};

/// A clipboard of the program's own, for headless runs.
class MemoryClipboard final : public Clipboard {
  public:
    std::string text() const override { return text_; }
    void setText(const std::string& text) override { text_ = text; }

  private:
    std::string text_;
};

} // namespace vrk
