#pragma once

#include <QWidget>

namespace vrk {

class PageUi;
class WiperPanel;

namespace qt {
class KeyLineEdit;
}

/// One channel from top to bottom: the position read, its volts and the bar, then everything that sets the
/// wiper.
class WiperStrip final : public QWidget {
  public:
    WiperStrip(PageUi& page, WiperPanel& panel, int channel);
    /// True if the keyboard is on one of its fields.
    bool hasKeyboard() const;
    void focusEntry();

  private:
    qt::KeyLineEdit* entry_;
};

} // namespace vrk
