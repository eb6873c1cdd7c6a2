#pragma once

#include "platform/runtime/EventLoop.h"
#include "platform/runtime/Signal.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vrk {

class Panel;
class Frame;

/// What a control tells its observers has changed.
enum class Aspect {
    Value,    ///< value, text, list index, cells: what the control is there for
    Appended, ///< text was added at the end of a TextLog
    Rows,     ///< list rows, grid size
    Range,    ///< limits of a slider, bar or text
    Caption,
    ToolTip,
    Colour,
    Enabled,
    Visible,
    Selection, ///< selected text of a TextBox
    Freshness  ///< what the shown reading is worth
};

/// What a value that the board told is worth. A number on the screen looks the same whether it was read a
/// second ago or belongs to another part; this tells them apart.
struct Freshness {
    enum class State {
        Never, ///< not read yet: what the control shows is a start value
        Fresh, ///< as the last exchange told it
        Stale  ///< read once, but the part, its address or its supply has changed since, or the last read
               ///< failed
    };
    State state = State::Never;
    Milliseconds since{0}; ///< time of the last good read, on the bench's clock
    std::string cause;     ///< why it is stale, in words: "the address changed since"
    bool failed = false;   ///< stale because the last read failed
};

/// "never", "fresh" or "stale".
std::string_view freshnessName(Freshness::State state);

/// The 16-colour console palette, and the two pure colours that some grids use.
enum class Colour {
    Black,
    Blue,
    Green,
    Cyan,
    Red,
    Magenta,
    Brown,
    LightGray,
    DarkGray,
    LightBlue,
    LightGreen,
    LightCyan,
    LightRed,
    LightMagenta,
    Yellow,
    White,
    PureRed,
    PureGreen
};

/// "light green", "pure red" and so on.
std::string_view colourName(Colour colour);

/// Index of a control that stands alone.
inline constexpr int kNoIndex = -1;

/// What a control shows and what it raises, without any rendering. The rendering, the automation and the
/// tests use gestures (user...) and nothing else; code assigns (set...).
class Control {
  public:
    enum class Kind {
        CheckBox,
        OptionButton,
        TextBox,
        Button,
        MenuEntry,
        ComboBox,
        ListBox,
        Slider,
        ProgressBar,
        Label,
        Lamp,
        Frame,
        Grid,
        TextLog,
        Timer,
        Picture
    };

    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;
    virtual ~Control();

    virtual Kind kind() const = 0;
    std::string_view kindName() const;

    Panel& panel() const { return panel_; }
    const std::string& name() const { return name_; }
    int index() const { return index_; }
    /// "chkPData(21)", or the bare name of a control that stands alone.
    std::string path() const;

    bool enabled() const { return enabled_; }
    void setEnabled(bool enabled);
    bool visible() const { return visible_; }
    void setVisible(bool visible);
    const std::string& caption() const { return caption_; }
    void setCaption(const std::string& caption);
    const std::string& toolTip() const { return toolTip_; }
    void setToolTip(const std::string& tip);

    /// The group that the control stands in: hidden or disabled with it.
    void setContainer(const Frame& frame) { container_ = &frame; }
    const Frame* container() const { return container_; }
    /// Visible, and every group around it as well. A tab that is not in front hides nothing.
    bool reachable() const;
    /// Enabled, and every group and the panel as well.
    bool responsive() const;

    /// Nothing for a control that shows no reading.
    const std::optional<Freshness>& freshness() const { return freshness_; }
    /// Makes the control one that shows readings, without one so far.
    void markUnread();
    /// What the control shows has just been read.
    void markRead();
    /// What it shows no longer holds. A control that never had a reading stays as it is.
    /// \param failed true if a read has failed. \param cause in words, for the user.
    void markStale(const std::string& cause, bool failed = false);

    /// True while the user's keys go to this control.
    bool focused() const;

    [[nodiscard]] Subscription observe(std::function<void(Aspect)> observer) {
        return changed_.connect(std::move(observer));
    }

    /// The user moves the focus here. The control that had it is left first.
    Outcome userFocus();
    /// The user leaves the control for no other one.
    Outcome userLeave();

    void onGotFocus(std::function<void()> handler) { gotFocus_ = std::move(handler); }
    void onLostFocus(std::function<void()> handler) { lostFocus_ = std::move(handler); }
    bool hasGotFocus() const { return static_cast<bool>(gotFocus_); }

  protected:
    Control(Panel& panel, std::string name, int index);

    void notify(Aspect aspect) { changed_.emit(aspect); }

    /// Runs `act` as the user's event, unless the control is hidden or disabled.
    Outcome gesture(std::function<void()> act);
    /// Moves the focus as part of a gesture that is already being delivered.
    void takeFocus();

  private:
    friend class FocusKeeper;
    void raiseGotFocus() const;
    void raiseLostFocus() const;

    Panel& panel_;
    std::string name_;
    int index_;
    bool enabled_ = true;
    bool visible_ = true;
    std::string caption_;
    std::string toolTip_;
    const Frame* container_ = nullptr;
    std::optional<Freshness> freshness_;
    Signal<Aspect> changed_;
    std::function<void()> gotFocus_;
    std::function<void()> lostFocus_;
    std::shared_ptr<char> alive_ = std::make_shared<char>();
};

/// Which control of the whole program has the keyboard.
class FocusKeeper {
  public:
    Control* focused() const { return focused_; }
    void move(Control* to);
    void forget(const Control& control) {
        if (focused_ == &control)
            focused_ = nullptr;
    }

  private:
    Control* focused_ = nullptr;
};

} // namespace vrk
