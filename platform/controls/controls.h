#pragma once

#include "platform/controls/Control.h"
#include "platform/controls/TextLog.h"
#include "platform/runtime/text.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// The control kinds. Each holds what the control shows; assigning is a named call and raises what the
/// control raises; user...() calls are gestures, refused when the control is hidden or disabled.
namespace vrk {

class CheckBox final : public Control {
  public:
    CheckBox(Panel& panel, std::string name, int index = kNoIndex) : Control(panel, std::move(name), index) {}
    Kind kind() const override { return Kind::CheckBox; }

    /// 0 clear, anything else set. The value of a reply byte may be stored as it came.
    int value() const { return value_; }
    bool checked() const { return value_ != 0; }
    /// A changed value raises the click, as a user's would.
    void setValue(int value);
    /// Shows the value without raising anything: the state that a panel opens with.
    void showValue(int value);
    Outcome userClick();
    void onClick(std::function<void()> handler) { click_ = std::move(handler); }

  private:
    int value_ = 0;
    std::function<void()> click_;
};

/// The buttons of one group: at most one is selected.
class OptionGroup;

class OptionButton final : public Control {
  public:
    OptionButton(Panel& panel, std::string name, int index = kNoIndex)
        : Control(panel, std::move(name), index) {}
    ~OptionButton() override;
    Kind kind() const override { return Kind::OptionButton; }

    bool value() const { return selected_; }
    /// Becoming selected clears the siblings and raises the click; clearing raises nothing.
    void setValue(bool selected);
    /// Shows the button as selected without raising anything: the state that a panel opens with.
    void showSelected();
    /// A click on the selected button changes nothing and raises nothing.
    Outcome userClick();
    void onClick(std::function<void()> handler) { click_ = std::move(handler); }
    void join(OptionGroup& group);

  private:
    friend class OptionGroup;
    bool selected_ = false;
    OptionGroup* group_ = nullptr;
    std::function<void()> click_;
};

class OptionGroup {
  public:
    OptionGroup() = default;
    OptionGroup(const OptionGroup&) = delete;
    OptionGroup& operator=(const OptionGroup&) = delete;
    /// A panel may declare its groups behind their buttons.
    ~OptionGroup();
    const std::vector<OptionButton*>& buttons() const { return buttons_; }

  private:
    friend class OptionButton;
    std::vector<OptionButton*> buttons_;
};

class TextBox final : public Control {
  public:
    TextBox(Panel& panel, std::string name, int index = kNoIndex) : Control(panel, std::move(name), index) {}
    Kind kind() const override { return Kind::TextBox; }

    const std::string& text() const { return text_; }
    /// Cut to the limit. A changed text raises the change.
    void setText(const std::string& text);

    /// Characters that the box takes; 0 is no limit.
    int maxLength() const { return maxLength_; }
    void setMaxLength(int length);
    bool centred() const { return centred_; }
    void setCentred(bool centred) { centred_ = centred; }

    int selectionStart() const { return selectionStart_; }
    int selectionLength() const { return selectionLength_; }
    std::string selectedText() const;
    void select(int start, int length);
    void selectAll() { select(0, static_cast<int>(text_.size())); }

    /// One key as the keyboard sends it: `code` is the character, 13 Enter, 8 Backspace; `shift` bit 0 Shift,
    /// bit 1 Ctrl. With Ctrl only the key-down handler sees it. The key passes the box's filter, then edits
    /// the selection.
    Outcome userKey(int code, int shift = 0);
    /// Focuses, selects all, then posts each character as a key event of its own; `whenDone` runs after the
    /// last.
    Outcome userType(const std::string& text, std::function<void()> whenDone = {});
    Outcome userEnter() { return userKey(kEnterKey); }
    /// The rendering edited the text in a way that is no single key: cut, delete, undo. No filter applies.
    Outcome userEdit(const std::string& text, int cursor);
    /// The rendering's editing (cursor, mouse selection) changed the selection.
    void userSelect(int start, int length) { select(start, length); }

    Outcome userClick();
    void onClick(std::function<void()> handler) { click_ = std::move(handler); }

    /// Key codes go in, what the box takes comes out, 0 to drop it.
    void onKeyPress(std::function<int(int)> filter) { keyPress_ = std::move(filter); }
    void onKeyDown(std::function<void(int code, int shift)> handler) { keyDown_ = std::move(handler); }
    bool hasKeyDown() const { return static_cast<bool>(keyDown_); }
    void onChange(std::function<void()> handler) { change_ = std::move(handler); }

  private:
    void insert(char character);
    void eraseBack();
    void assign(const std::string& text);

    std::string text_;
    int maxLength_ = 0;
    bool centred_ = false;
    int selectionStart_ = 0;
    int selectionLength_ = 0;
    std::function<int(int)> keyPress_;
    std::function<void(int, int)> keyDown_;
    std::function<void()> change_;
    std::function<void()> click_;
};

class Button final : public Control {
  public:
    Button(Panel& panel, std::string name, int index = kNoIndex) : Control(panel, std::move(name), index) {}
    Kind kind() const override { return Kind::Button; }
    Outcome userClick();
    void onClick(std::function<void()> handler) { click_ = std::move(handler); }

  private:
    std::function<void()> click_;
};

class MenuEntry final : public Control {
  public:
    MenuEntry(Panel& panel, std::string name, int index = kNoIndex)
        : Control(panel, std::move(name), index) {}
    Kind kind() const override { return Kind::MenuEntry; }
    Outcome userClick();
    void onClick(std::function<void()> handler) { click_ = std::move(handler); }
    bool hasAction() const { return static_cast<bool>(click_); }

  private:
    std::function<void()> click_;
};

/// Rows with a number each, one of them selected or none.
class RowControl : public Control {
  public:
    struct Row {
        std::string text;
        int itemData = 0;
        bool operator==(const Row&) const = default;
    };

    const std::vector<Row>& rows() const { return rows_; }
    int rowCount() const { return static_cast<int>(rows_.size()); }
    /// \throws Fault "Subscript out of range"
    const Row& row(int index) const;
    void clear();
    void addRow(const std::string& text, int itemData = 0);
    /// All rows at once; nothing is selected then.
    void setRows(std::vector<Row> rows);

    int listIndex() const { return listIndex_; }
    /// -1 selects none; a changed index raises the click. \throws Fault "Subscript out of range"
    void setListIndex(int index);
    /// Selects without raising anything: the state that a panel opens with.
    void showListIndex(int index);
    /// Text of the selected row, empty if there is none.
    std::string text() const {
        return listIndex_ < 0 ? std::string() : rows_[static_cast<std::size_t>(listIndex_)].text;
    }
    /// Number of the selected row. \throws Fault "Subscript out of range" if there is none.
    int itemData() const { return row(listIndex_).itemData; }

    /// The user picks a row; raises the click even where it was selected already. \throws Fault for a bad
    /// index.
    Outcome userSelect(int index);
    void onClick(std::function<void()> handler) { click_ = std::move(handler); }

  protected:
    using Control::Control;

  private:
    std::vector<Row> rows_;
    int listIndex_ = -1;
    std::function<void()> click_;
};

class ComboBox final : public RowControl {
  public:
    ComboBox(Panel& panel, std::string name, int index = kNoIndex)
        : RowControl(panel, std::move(name), index) {}
    Kind kind() const override { return Kind::ComboBox; }
};

class ListBox final : public RowControl {
  public:
    ListBox(Panel& panel, std::string name, int index = kNoIndex)
        : RowControl(panel, std::move(name), index) {}
    Kind kind() const override { return Kind::ListBox; }
    /// The user scrolls; no row is picked.
    Outcome userScroll();
    void onScroll(std::function<void()> handler) { scroll_ = std::move(handler); }

  private:
    std::function<void()> scroll_;
};

class Slider final : public Control {
  public:
    Slider(Panel& panel, std::string name, int index = kNoIndex) : Control(panel, std::move(name), index) {}
    Kind kind() const override { return Kind::Slider; }

    int value() const { return value_; }
    /// Kept inside the range; a changed value raises the change.
    void setValue(int value);
    int minimum() const { return minimum_; }
    int maximum() const { return maximum_; }
    /// The value follows into the new range.
    void setRange(int minimum, int maximum);
    void setMaximum(int maximum) { setRange(minimum_, maximum); }
    int tickFrequency() const { return tick_; }
    void setTickFrequency(int tick);

    Outcome userMouseDown();
    /// The thumb is at `value` now, the mouse button still down.
    Outcome userScroll(int value);
    Outcome userMouseUp();
    /// Mouse down, scroll to `value`, mouse up. Keys do the same.
    Outcome userDrag(int value);

    void onChange(std::function<void()> handler) { change_ = std::move(handler); }
    void onScroll(std::function<void()> handler) { scroll_ = std::move(handler); }
    void onMouseDown(std::function<void()> handler) { mouseDown_ = std::move(handler); }
    void onMouseUp(std::function<void()> handler) { mouseUp_ = std::move(handler); }

  private:
    void scrollTo(int value);

    int value_ = 0;
    int minimum_ = 0;
    int maximum_ = 10;
    int tick_ = 1;
    std::function<void()> change_;
    std::function<void()> scroll_;
    std::function<void()> mouseDown_;
    std::function<void()> mouseUp_;
};

class ProgressBar final : public Control {
  public:
    ProgressBar(Panel& panel, std::string name, int index = kNoIndex)
        : Control(panel, std::move(name), index) {}
    Kind kind() const override { return Kind::ProgressBar; }
    int value() const { return value_; }
    /// Kept inside 0 to maximum.
    void setValue(int value);
    int maximum() const { return maximum_; }
    void setMaximum(int maximum);

  private:
    int value_ = 0;
    int maximum_ = 100;
};

/// Text is the caption.
class Label : public Control {
  public:
    Label(Panel& panel, std::string name, int index = kNoIndex) : Control(panel, std::move(name), index) {}
    Kind kind() const final { return Kind::Label; }
};

/// A label whose text came from the board.
class Reading final : public Label {
  public:
    Reading(Panel& panel, std::string name, int index = kNoIndex) : Label(panel, std::move(name), index) {
        markUnread();
    }
    /// Shows what has just been read.
    void showRead(const std::string& text) {
        setCaption(text);
        markRead();
    }
    /// Shows a start text: nothing has been read for what the panel is set to now.
    void showUnread(const std::string& text) {
        setCaption(text);
        markUnread();
    }
};

class Lamp final : public Control {
  public:
    Lamp(Panel& panel, std::string name, int index = kNoIndex) : Control(panel, std::move(name), index) {}
    Kind kind() const override { return Kind::Lamp; }
    Colour colour() const { return colour_; }
    void setColour(Colour colour);
    /// Light green becomes green, any other colour light green: each of a row of good results shows.
    void blinkGood() { setColour(colour_ == Colour::LightGreen ? Colour::Green : Colour::LightGreen); }
    /// Raised at every assignment, also of the same colour.
    [[nodiscard]] Subscription observeAssignments(std::function<void()> observer) {
        return assigned_.connect(std::move(observer));
    }

  private:
    Colour colour_ = Colour::Black;
    Signal<> assigned_;
};

/// A group of controls, hidden and disabled as one.
class Frame final : public Control {
  public:
    Frame(Panel& panel, std::string name, int index = kNoIndex) : Control(panel, std::move(name), index) {}
    Kind kind() const override { return Kind::Frame; }
};

/// A picture that can be double-clicked.
class Picture final : public Control {
  public:
    Picture(Panel& panel, std::string name, int index = kNoIndex) : Control(panel, std::move(name), index) {}
    Kind kind() const override { return Kind::Picture; }
    Outcome userDoubleClick();
    void onDoubleClick(std::function<void()> handler) { doubleClick_ = std::move(handler); }

  private:
    std::function<void()> doubleClick_;
};

/// A table of text cells. Row 0 is the heading.
class Grid final : public Control {
  public:
    Grid(Panel& panel, std::string name, int index = kNoIndex) : Control(panel, std::move(name), index) {}
    Kind kind() const override { return Kind::Grid; }

    int rows() const { return static_cast<int>(cells_.size()); }
    int columns() const { return columns_; }
    /// Keeps the cells that exist in both sizes.
    void setSize(int rows, int columns);
    /// \throws Fault "Subscript out of range" from every cell access outside the table.
    const std::string& cell(int row, int column) const;
    void setCell(int row, int column, const std::string& text);
    Colour cellColour(int row, int column) const;
    void setCellColour(int row, int column, Colour colour);
    void clearCells();
    int row() const { return row_; }
    int column() const { return column_; }
    void setSelection(int row, int column);

    Outcome userSelect(int row, int column);
    void onClick(std::function<void()> handler) { click_ = std::move(handler); }

  private:
    struct Cell {
        std::string text;
        Colour colour = Colour::Black;
    };
    const Cell& at(int row, int column) const;

    std::vector<std::vector<Cell>> cells_;
    int columns_ = 0;
    int row_ = 0;
    int column_ = 0;
    std::function<void()> click_;
};

class Timer final : public Control {
  public:
    Timer(Panel& panel, std::string name, int index = kNoIndex) : Control(panel, std::move(name), index) {}
    ~Timer() override;
    Kind kind() const override { return Kind::Timer; }
    Milliseconds interval() const { return interval_; }
    void setInterval(Milliseconds interval);
    bool running() const { return running_; }
    void setRunning(bool running);
    void onTimer(std::function<void()> handler) { timer_ = std::move(handler); }

  private:
    void arm();
    void disarm();

    Milliseconds interval_{0};
    bool running_ = false;
    bool firing_ = false; ///< the handler is on the stack
    EventLoop::EventId pending_ = 0;
    std::function<void()> timer_;
    std::shared_ptr<char> alive_ = std::make_shared<char>();
};

/// Controls of one name, numbered first() to last(). \throws Fault "Subscript out of range" outside.
template <class C>
class ControlArray {
  public:
    ControlArray(Panel& panel, const std::string& name, int first, int last) : name_(name), first_(first) {
        for (int index = first; index <= last; ++index)
            items_.push_back(std::make_unique<C>(panel, name, index));
    }

    const std::string& name() const { return name_; }
    int first() const { return first_; }
    int last() const { return first_ + static_cast<int>(items_.size()) - 1; }
    int count() const { return static_cast<int>(items_.size()); }

    C& operator[](int index) {
        if (index < first() || index > last())
            throw subscriptOutOfRange();
        return *items_[static_cast<std::size_t>(index - first_)];
    }
    const C& operator[](int index) const { return const_cast<ControlArray&>(*this)[index]; }

    void setCaptions(std::initializer_list<const char*> captions) {
        int index = first_;
        for (const char* caption : captions)
            (*this)[index++].setCaption(caption);
    }

    auto begin() { return items_.begin(); }
    auto end() { return items_.end(); }
    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

  private:
    std::string name_;
    int first_;
    std::vector<std::unique_ptr<C>> items_;
};

/// Disables controls for the length of an action. release() enables them at the place where the action says
/// so; a fault on the way enables them too, so that no button stays dead.
class DisabledWhile {
  public:
    explicit DisabledWhile(std::vector<Control*> controls);
    ~DisabledWhile() { release(); }
    DisabledWhile(const DisabledWhile&) = delete;
    DisabledWhile& operator=(const DisabledWhile&) = delete;
    void release();

  private:
    std::vector<Control*> controls_;
};

/// Runs on every way out of a scope unless dismissed.
class OnScopeExit {
  public:
    explicit OnScopeExit(std::function<void()> action) : action_(std::move(action)) {}
    ~OnScopeExit() {
        if (action_)
            action_();
    }
    OnScopeExit(const OnScopeExit&) = delete;
    OnScopeExit& operator=(const OnScopeExit&) = delete;
    void dismiss() { action_ = nullptr; }

  private:
    std::function<void()> action_;
};

} // namespace vrk
