#include "platform/controls/controls.h"

#include "platform/controls/Panel.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <utility>

namespace vrk {

namespace {
void raise(const std::function<void()>& handler) {
    if (handler)
        handler();
}
} // namespace

// CheckBox

void CheckBox::setValue(int value) {
    if (std::exchange(value_, value) == value)
        return;
    notify(Aspect::Value);
    raise(click_);
}

void CheckBox::showValue(int value) {
    if (std::exchange(value_, value) != value)
        notify(Aspect::Value);
}

Outcome CheckBox::userClick() {
    return gesture([this] {
        takeFocus();
        setValue(checked() ? 0 : 1);
    });
}

// OptionButton

OptionButton::~OptionButton() {
    if (group_ != nullptr)
        std::erase(group_->buttons_, this);
}

OptionGroup::~OptionGroup() {
    for (OptionButton* button : buttons_)
        button->group_ = nullptr;
}

void OptionButton::join(OptionGroup& group) {
    group_ = &group;
    group.buttons_.push_back(this);
}

void OptionButton::setValue(bool selected) {
    if (selected_ == selected)
        return;
    if (selected) {
        showSelected();
        raise(click_);
    } else {
        selected_ = false;
        notify(Aspect::Value);
    }
}

void OptionButton::showSelected() {
    if (group_ != nullptr)
        for (OptionButton* sibling : group_->buttons_)
            if (sibling != this)
                sibling->setValue(false);
    if (!std::exchange(selected_, true))
        notify(Aspect::Value);
}

Outcome OptionButton::userClick() {
    return gesture([this] {
        takeFocus();
        setValue(true);
    });
}

// TextBox

void TextBox::setText(const std::string& text) {
    const std::string cut = maxLength_ > 0 && text.size() > static_cast<std::size_t>(maxLength_)
                                ? text.substr(0, maxLength_)
                                : text;
    if (cut == text_)
        return;
    selectionStart_ = 0;
    selectionLength_ = 0;
    assign(cut);
}

void TextBox::assign(const std::string& text) {
    if (text == text_)
        return;
    text_ = text;
    notify(Aspect::Value);
    raise(change_);
}

void TextBox::setMaxLength(int length) {
    maxLength_ = std::max(0, length);
    notify(Aspect::Range);
    setText(text_);
}

std::string TextBox::selectedText() const {
    return text_.substr(static_cast<std::size_t>(selectionStart_),
                        static_cast<std::size_t>(selectionLength_));
}

void TextBox::select(int start, int length) {
    const int size = static_cast<int>(text_.size());
    const int from = std::clamp(start, 0, size);
    const int count = std::clamp(length, 0, size - from);
    if (from == selectionStart_ && count == selectionLength_)
        return;
    selectionStart_ = from;
    selectionLength_ = count;
    notify(Aspect::Selection);
}

void TextBox::insert(char character) {
    const auto kept = text_.size() - static_cast<std::size_t>(selectionLength_);
    if (maxLength_ > 0 && kept >= static_cast<std::size_t>(maxLength_))
        return;
    std::string text = text_;
    text.replace(static_cast<std::size_t>(selectionStart_), static_cast<std::size_t>(selectionLength_), 1,
                 character);
    ++selectionStart_;
    selectionLength_ = 0;
    assign(text);
}

void TextBox::eraseBack() {
    if (selectionLength_ == 0) {
        if (selectionStart_ == 0)
            return;
        --selectionStart_;
        selectionLength_ = 1;
    }
    std::string text = text_;
    text.erase(static_cast<std::size_t>(selectionStart_), static_cast<std::size_t>(selectionLength_));
    selectionLength_ = 0;
    assign(text);
}

Outcome TextBox::userKey(int code, int shift) {
    return gesture([this, code, shift] {
        takeFocus();
        if (keyDown_)
            keyDown_(code, shift);
        constexpr int kCtrl = 2;
        if ((shift & kCtrl) != 0)
            return;
        const int key = keyPress_ ? keyPress_(code) : code;
        if (key == kBackspaceKey)
            eraseBack();
        else if (key >= ' ' && key < 127)
            insert(static_cast<char>(key));
    });
}

Outcome TextBox::userType(const std::string& text, std::function<void()> whenDone) {
    const Outcome outcome = gesture([this] {
        takeFocus();
        selectAll();
    });
    if (outcome.refused())
        return outcome;
    for (const char character : text)
        panel().events().post([this, character] { (void)userKey(static_cast<unsigned char>(character)); });
    if (whenDone)
        panel().events().post(std::move(whenDone));
    return outcome;
}

Outcome TextBox::userEdit(const std::string& text, int cursor) {
    return gesture([this, text, cursor] {
        takeFocus();
        selectionLength_ = 0;
        selectionStart_ = std::clamp(cursor, 0, static_cast<int>(text.size()));
        assign(maxLength_ > 0 ? text.substr(0, static_cast<std::size_t>(maxLength_)) : text);
    });
}

Outcome TextBox::userClick() {
    return gesture([this] {
        takeFocus();
        raise(click_);
    });
}

// Button, MenuEntry, Picture

Outcome Button::userClick() {
    return gesture([this] {
        takeFocus();
        raise(click_);
    });
}

Outcome MenuEntry::userClick() {
    return gesture([this] { raise(click_); });
}

Outcome Picture::userDoubleClick() {
    return gesture([this] { raise(doubleClick_); });
}

// RowControl

const RowControl::Row& RowControl::row(int index) const {
    if (index < 0 || index >= rowCount())
        throw subscriptOutOfRange();
    return rows_[static_cast<std::size_t>(index)];
}

void RowControl::clear() {
    setRows({});
}

void RowControl::addRow(const std::string& text, int itemData) {
    rows_.push_back({text, itemData});
    notify(Aspect::Rows);
}

void RowControl::setRows(std::vector<Row> rows) {
    rows_ = std::move(rows);
    listIndex_ = -1;
    notify(Aspect::Rows);
}

void RowControl::setListIndex(int index) {
    if (index != -1)
        (void)row(index);
    if (std::exchange(listIndex_, index) == index)
        return;
    notify(Aspect::Value);
    raise(click_);
}

void RowControl::showListIndex(int index) {
    if (index != -1)
        (void)row(index);
    if (std::exchange(listIndex_, index) != index)
        notify(Aspect::Value);
}

Outcome RowControl::userSelect(int index) {
    if (index != -1)
        (void)row(index);
    return gesture([this, index] {
        takeFocus();
        if (index >= rowCount())
            throw subscriptOutOfRange(); // the rows changed while the gesture was held back
        if (std::exchange(listIndex_, index) != index)
            notify(Aspect::Value);
        raise(click_);
    });
}

Outcome ListBox::userScroll() {
    return gesture([this] { raise(scroll_); });
}

// Slider

void Slider::setValue(int value) {
    const int kept = std::clamp(value, minimum_, std::max(minimum_, maximum_));
    if (std::exchange(value_, kept) == kept)
        return;
    notify(Aspect::Value);
    raise(change_);
}

void Slider::setRange(int minimum, int maximum) {
    if (minimum_ == minimum && maximum_ == maximum)
        return;
    minimum_ = minimum;
    maximum_ = maximum;
    notify(Aspect::Range);
    setValue(value_);
}

void Slider::setTickFrequency(int tick) {
    if (std::exchange(tick_, tick) != tick)
        notify(Aspect::Range);
}

Outcome Slider::userMouseDown() {
    return gesture([this] {
        takeFocus();
        raise(mouseDown_);
    });
}

void Slider::scrollTo(int value) {
    setValue(value);
    raise(scroll_);
}

Outcome Slider::userScroll(int value) {
    return gesture([this, value] { scrollTo(value); });
}

Outcome Slider::userMouseUp() {
    return gesture([this] { raise(mouseUp_); });
}

Outcome Slider::userDrag(int value) {
    return gesture([this, value] {
        takeFocus();
        raise(mouseDown_);
        scrollTo(value);
        raise(mouseUp_);
    });
}

// ProgressBar, Lamp

void ProgressBar::setValue(int value) {
    const int kept = std::clamp(value, 0, maximum_);
    if (std::exchange(value_, kept) != kept)
        notify(Aspect::Value);
}

void ProgressBar::setMaximum(int maximum) {
    if (std::exchange(maximum_, std::max(0, maximum)) == maximum_)
        return;
    notify(Aspect::Range);
    setValue(value_);
}

void Lamp::setColour(Colour colour) {
    if (std::exchange(colour_, colour) != colour)
        notify(Aspect::Colour);
    assigned_.emit();
}

// Grid

void Grid::setSize(int rows, int columns) {
    columns_ = std::max(0, columns);
    cells_.resize(static_cast<std::size_t>(std::max(0, rows)));
    for (auto& line : cells_)
        line.resize(static_cast<std::size_t>(columns_));
    notify(Aspect::Rows);
}

const Grid::Cell& Grid::at(int row, int column) const {
    if (row < 0 || row >= rows() || column < 0 || column >= columns_)
        throw subscriptOutOfRange();
    return cells_[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
}

const std::string& Grid::cell(int row, int column) const {
    return at(row, column).text;
}

void Grid::setCell(int row, int column, const std::string& text) {
    auto& cell = const_cast<Cell&>(at(row, column));
    if (cell.text == text)
        return;
    cell.text = text;
    notify(Aspect::Value);
}

Colour Grid::cellColour(int row, int column) const {
    return at(row, column).colour;
}

void Grid::setCellColour(int row, int column, Colour colour) {
    if (std::exchange(const_cast<Cell&>(at(row, column)).colour, colour) != colour)
        notify(Aspect::Colour);
}

void Grid::clearCells() {
    for (auto& line : cells_)
        std::fill(line.begin(), line.end(), Cell{});
    notify(Aspect::Value);
}

void Grid::setSelection(int row, int column) {
    row_ = row;
    column_ = column;
    notify(Aspect::Selection);
}

Outcome Grid::userSelect(int row, int column) {
    (void)at(row, column);
    return gesture([this, row, column] {
        takeFocus();
        setSelection(row, column);
        raise(click_);
    });
}

// Timer

Timer::~Timer() {
    disarm();
}

void Timer::setInterval(Milliseconds interval) {
    interval_ = interval;
    if (running_) {
        disarm();
        arm();
    }
}

void Timer::setRunning(bool running) {
    if (std::exchange(running_, running) == running)
        return;
    if (running)
        arm();
    else
        disarm();
    notify(Aspect::Value);
}

void Timer::arm() {
    if (interval_.count() <= 0 || pending_ != 0 || firing_)
        return;
    pending_ = panel().events().postAfter(interval_, [this] {
        pending_ = 0;
        firing_ = true;
        // Armed again behind the handler, on every way out: a handler that lets events run is not entered
        // twice.
        const OnScopeExit again([this, alive = std::weak_ptr(alive_)] {
            if (alive.expired())
                return;
            firing_ = false;
            if (running_)
                arm();
        });
        raise(timer_);
    });
}

void Timer::disarm() {
    if (pending_ != 0)
        panel().events().cancel(std::exchange(pending_, 0));
}

// Scope guards

DisabledWhile::DisabledWhile(std::vector<Control*> controls) : controls_(std::move(controls)) {
    for (Control* control : controls_)
        control->setEnabled(false);
}

void DisabledWhile::release() {
    for (Control* control : std::exchange(controls_, {}))
        control->setEnabled(true);
}

} // namespace vrk
