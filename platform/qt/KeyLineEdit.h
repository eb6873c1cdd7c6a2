#pragma once

#include "platform/controls/Control.h"

#include <QLineEdit>

#include <functional>

namespace vrk::qt {

/// A line edit that hands every character key on instead of taking it, so that the model's key filters decide
/// what is entered. Editing by other means (delete, cut, undo, paste from the menu, an input method) happens
/// in the line edit and is then told as an edited text.
class KeyLineEdit final : public QLineEdit {
  public:
    explicit KeyLineEdit(QWidget* parent = nullptr);

    /// Room for this many characters of the value face.
    void setCharacters(int characters);
    /// A box for ordinary text, a path for example: "?" is a character there and no call for help.
    void setPlainText(bool plain) { plain_ = plain; }
    /// What the reading in the box is worth: never read is a dash, stale steps back. Shown while the box has
    /// not the keyboard.
    void setReading(Freshness::State state);

    /// A character, 13 for Enter, 8 for Backspace; `shift` bit 1 is Ctrl.
    std::function<void(int code, int shift)> keyPressed;
    /// Whether Ctrl+A, C and V are keys like others.
    std::function<bool()> takesControlKeys;
    std::function<void(const QString& characters)> pasted;

    /// True while the user's own edit is being reported that no filter may touch: delete, cut, undo.
    bool editsDirectly() const { return direct_; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    int characters_ = 8;
    bool plain_ = false;
    bool direct_ = false;
    Freshness::State reading_ = Freshness::State::Fresh;
};

} // namespace vrk::qt
