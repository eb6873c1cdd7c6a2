#include "platform/qt/bind.h"
#include "platform/runtime/text.h"

#include <QMouseEvent>

#include <algorithm>

namespace vrk::qt {

namespace {

/// Where an edit has changed a text: the same before and behind it.
struct Edit {
    qsizetype start = 0;
    qsizetype removed = 0;
    QString inserted;
};

Edit difference(const QString& before, const QString& after) {
    const qsizetype shorter = std::min(before.size(), after.size());
    qsizetype front = 0;
    while (front < shorter && before[front] == after[front])
        ++front;
    qsizetype back = 0;
    while (back < shorter - front && before[before.size() - 1 - back] == after[after.size() - 1 - back])
        ++back;
    return {front, before.size() - front - back, after.mid(front, after.size() - front - back)};
}

/// The model counts bytes, the widget characters.
int bytes(const QString& text, qsizetype characters) {
    return static_cast<int>(text.left(characters).toUtf8().size());
}
int characters(const std::string& text, int byteCount) {
    return static_cast<int>(QString::fromUtf8(text.data(), byteCount).size());
}

class TextBinding final : public TypedBinding<TextBox, KeyLineEdit> {
  public:
    TextBinding(TextBox& model, KeyLineEdit& view) : TypedBinding(model, view) {
        view.keyPressed = [this](int code, int shift) { key(code, shift); };
        view.takesControlKeys = [this] { return this->model() != nullptr && this->model()->hasKeyDown(); };
        view.pasted = [this](const QString& text) { type(text); };
        connect(&view, &QLineEdit::textEdited, this, [this] { edited(); });
        connect(&view, &QLineEdit::selectionChanged, this, [this] { selected(); });
        connect(&view, &QLineEdit::cursorPositionChanged, this, [this] { selected(); });
        start();
    }

  protected:
    void showAspect(Aspect aspect) override {
        TypedBinding::showAspect(aspect);
        if (aspect == Aspect::Range) {
            view().setMaxLength(model()->maxLength() > 0 ? model()->maxLength() : 32767);
            view().setAlignment(model()->centred() ? Qt::AlignCenter : Qt::AlignLeft);
        } else if (aspect == Aspect::Value) {
            showText();
        } else if (aspect == Aspect::Freshness) {
            view().setReading(model()->freshness() ? model()->freshness()->state : Freshness::State::Fresh);
        } else if (aspect == Aspect::Selection) {
            showSelection();
        } else if (aspect == Aspect::Freshness && model()->freshness()) {
            setTone(view(), model()->freshness()->failed ? Tone::Failed : Tone::Plain);
        }
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::MouseButtonRelease && model() != nullptr &&
            static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton)
            (void)model()->userClick();
        return TypedBinding::eventFilter(watched, event);
    }

  private:
    QString modelText() const { return QString::fromStdString(model()->text()); }

    void key(int code, int shift) {
        if (model() == nullptr)
            return;
        typing_ = true; // so that undo still knows what stood there before
        (void)model()->userKey(code, shift);
        typing_ = false;
        if (model() != nullptr) {
            showText();
            showSelection();
        }
    }

    void type(const QString& text) {
        for (const QChar character : text) {
            if (character == '\n' || character == '\r')
                break; // one line; a line break would be an Enter that nobody pressed
            key(character.unicode(), 0);
        }
    }

    /// The line edit has changed its text by itself.
    void edited() {
        if (model() == nullptr)
            return;
        const QString after = view().text();
        const Edit edit = difference(modelText(), after);
        if (view().editsDirectly() || edit.inserted.isEmpty()) {
            (void)model()->userEdit(after.toStdString(), bytes(after, view().cursorPosition()));
        } else {
            // Pasted or dropped with the mouse: each character passes the filter as a key would.
            const QString before = modelText();
            const int from = bytes(before, edit.start);
            model()->userSelect(from, bytes(before, edit.start + edit.removed) - from);
            type(edit.inserted);
        }
        if (model() != nullptr) {
            showText();
            showSelection();
        }
    }

    void selected() {
        if (model() == nullptr || showing_ || view().text() != modelText())
            return;
        const QString text = view().text();
        const bool some = view().hasSelectedText();
        const int from = bytes(text, some ? view().selectionStart() : view().cursorPosition());
        const int to = some ? bytes(text, view().selectionEnd()) : from;
        showing_ = true;
        model()->userSelect(from, to - from);
        showing_ = false;
    }

    void showText() {
        const QString text = modelText();
        if (view().text() == text)
            return;
        showing_ = true;
        if (typing_) {
            const Edit edit = difference(view().text(), text);
            view().setSelection(static_cast<int>(edit.start), static_cast<int>(edit.removed));
            view().insert(edit.inserted);
        } else {
            view().setText(text);
        }
        if (view().text() != text) // the line edit's own limits must not win over the model
            view().setText(text);
        if (!view().hasFocus())
            view().setCursorPosition(0);
        showing_ = false;
    }

    void showSelection() {
        if (showing_ || view().text() != modelText())
            return;
        const std::string& text = model()->text();
        const int from = characters(text, model()->selectionStart());
        const int to = characters(text, model()->selectionStart() + model()->selectionLength());
        showing_ = true;
        if (to > from)
            view().setSelection(from, to - from);
        else if (view().hasSelectedText() || view().cursorPosition() != from)
            view().setCursorPosition(from);
        showing_ = false;
    }

    bool showing_ = false;
    bool typing_ = false;
};

} // namespace

Binding* bind(TextBox& control, KeyLineEdit& widget) {
    return new TextBinding(control, widget);
}

} // namespace vrk::qt
