#pragma once

#include "platform/controls/Control.h"
#include "platform/qt/theme.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QSlider>
#include <QTimer>
#include <QWidget>

#include <array>
#include <functional>
#include <utility>

namespace vrk::qt {

/// A lamp that can be read without its colour: every state has a shape of its own, and the colour's name is
/// in the accessible name and the tool tip.
class LampWidget final : public QWidget {
  public:
    /// What the model's colours stand for where the lamp is.
    enum class Role {
        Status, ///< of an action: good, failed, not yet
        Map,    ///< of a register: read or written, received a transfer, source of one
        Stage,  ///< of a test: passed, failed, in progress, measured
        Supply, ///< any colour but black is on
        Pin     ///< any colour but black is high
    };

    explicit LampWidget(QWidget* parent = nullptr);
    /// What the lamp tells about.
    void setName(const QString& name);
    void setRole(Role role);
    Role role() const { return role_; }
    /// \param side of the sign at 100%: 16, in rows of pins and supplies 20, in the band 24.
    void setSide(int side);
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
    void describe();

    Colour colour_ = Colour::Black;
    Role role_ = Role::Status;
    QString name_;
    int side_ = 16;
    QTimer halo_;
};

/// The console palette's colours as text and table cells show them. Red is told from the others by more than
/// its colour wherever it stands.
QColor lampColour(Colour colour);
/// The lamp's picture, for tables that draw their own cells.
void drawLamp(QPainter& painter, const QRectF& place, Colour colour, LampWidget::Role role,
              const QPalette& palette);

/// A bar for a position in its range.
class LevelBar final : public QWidget {
  public:
    explicit LevelBar(QWidget* parent = nullptr);
    void setRange(int maximum);
    void setValue(int value);
    int maximum() const { return maximum_; }
    int value() const { return value_; }
    /// Never read: empty; stale: dimmed.
    void setState(Freshness::State state);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void describe();

    int maximum_ = 100;
    int value_ = 0;
    Freshness::State state_ = Freshness::State::Fresh;
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

/// Stands for a value that was never read.
inline const QString kNeverRead = QStringLiteral("—");

/// Text that may step back, or tell a failure, in whatever shade is in use.
class ToneLabel : public QLabel {
  public:
    explicit ToneLabel(QWidget* parent = nullptr);
    void setTone(Tone tone);
    Tone tone() const { return tone_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    Tone tone_ = Tone::Plain;
};

/// Text that is a value: digits of one width, room for the widest value, selectable.
class ValueLabel final : public ToneLabel {
  public:
    /// \param widest a text as wide as any value. \param scale size relative to the window's font.
    ValueLabel(const QString& widest, double scale, QWidget* parent = nullptr);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  private:
    QString widest_;
};

/// How old a reading is, in words that grow older by themselves: "read 3 s ago", "not read yet", "4 min old,
/// the address changed since", "last read failed; good 2 min ago".
class AgeLabel final : public ToneLabel {
  public:
    AgeLabel();
    /// Called for the words whenever they may have changed; the second word is the tone they are said in.
    std::function<std::pair<QString, Tone>()> words;
    void refresh();

  protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    QTimer older_;
};
std::pair<QString, Tone> ageWords(const Freshness& freshness, Milliseconds now);

/// Two states side by side, one of them chosen: On | Off.
class SegmentedSwitch final : public QWidget {
  public:
    SegmentedSwitch(const QString& first, const QString& second);
    /// The user's hand. The switch itself moves only when setChosen() says so.
    std::function<void(int)> picked;
    void setChosen(int segment); ///< 0, 1; -1 for neither
    int chosen() const { return chosen_; }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    std::array<QString, 2> words_;
    int chosen_ = -1;
};

} // namespace vrk::qt
