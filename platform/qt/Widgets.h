#pragma once

#include "platform/controls/Control.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QSlider>
#include <QTimer>
#include <QWidget>

#include <functional>

namespace vrk::qt {

/// A round lamp that can be read without its colour: a tick, a cross, a dot, and the word in the accessible
/// description.
class LampWidget final : public QWidget {
  public:
    /// What light red stands for: a failure, or a supply that is on.
    enum class Meaning { Status, Supply };

    explicit LampWidget(QWidget* parent = nullptr);
    void setMeaning(Meaning meaning);
    void setColour(Colour colour);
    Colour colour() const { return colour_; }
    /// A halo for a moment, so that each of a row of good results shows.
    void blink();
    /// "good", "failed", "on", "off" and so on.
    QString word() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    Colour colour_ = Colour::Black;
    Meaning meaning_ = Meaning::Status;
    QTimer halo_;
};

/// The console palette's colours, as lamps and table cells paint them.
QColor lampColour(Colour colour);

/// A bar for a position in its range.
class LevelBar final : public QWidget {
  public:
    explicit LevelBar(QWidget* parent = nullptr);
    void setRange(int maximum);
    void setValue(int value);
    int maximum() const { return maximum_; }
    int value() const { return value_; }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void describe();

    int maximum_ = 100;
    int value_ = 0;
};

/// A list to choose from that a passing mouse wheel does not change.
class ComboWidget final : public QComboBox {
  public:
    explicit ComboWidget(QWidget* parent = nullptr);
    /// Room for this many characters, whatever the rows hold.
    void setCharacters(int characters);

  protected:
    void wheelEvent(QWheelEvent* event) override;
};

/// A slider whose thumb comes to the mouse, and whose keys are a press, moves and a release as the mouse's
/// are.
class ThumbSlider final : public QSlider {
  public:
    explicit ThumbSlider(Qt::Orientation orientation = Qt::Horizontal, QWidget* parent = nullptr);
    /// The user's hand, by mouse, wheel or keys.
    std::function<void()> pressed;
    std::function<void(int)> moved;
    std::function<void()> released;

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    void keysReleased();

    int movingKey_ = 0;
};

/// Text that is a value: digits of one width, room for the widest value, selectable.
class ValueLabel final : public QLabel {
  public:
    /// \param widest a text as wide as any value. \param scale size relative to the window's font.
    ValueLabel(const QString& widest, double scale, QWidget* parent = nullptr);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  private:
    QString widest_;
};

} // namespace vrk::qt
