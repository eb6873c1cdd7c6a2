#include "views/blocks/rows.h"

#include "platform/controls/controls.h"
#include "platform/qt/theme.h"
#include "platform/runtime/text.h"
#include "views/workspace/Page.h"
#include "views/workspace/Section.h"

#include <QEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <memory>
#include <optional>
#include <utility>

namespace vrk {

using namespace qt;

namespace {

constexpr int kLabelColumn = 69;
constexpr int kRow = 24; ///< with the distance of 4 a row of 28

/// Calls `changed` for events of one kind of another widget.
class Listener final : public QObject {
  public:
    Listener(QObject& target, std::vector<QEvent::Type> types, std::function<void()> changed)
        : QObject(&target), types_(std::move(types)), changed_(std::move(changed)) {
        target.installEventFilter(this);
    }

  private:
    bool eventFilter(QObject*, QEvent* event) override {
        for (const QEvent::Type type : types_)
            if (event->type() == type)
                changed_();
        return false;
    }

    std::vector<QEvent::Type> types_;
    std::function<void()> changed_;
};

} // namespace

QWidget* columnLabel(const QString& text, QWidget* field) {
    QLabel* label = field != nullptr ? caption(text, field) : quietText(text);
    label->setMinimumSize(dp(kLabelColumn), dp(kRow));
    label->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    return label;
}

QLabel* smallCaption(const QString& text, QWidget* field) {
    QLabel* label = caption(text, field);
    label->setFont(textFont(kSmall));
    return label;
}

QBoxLayout* rows(const std::vector<Item>& items) {
    return tightColumn(items);
}

QWidget* wideButton(QWidget* button, int width) {
    button->setFixedWidth(dp(width));
    return button;
}

QWidget* byteField(PageUi& page, TextBox& box) {
    KeyLineEdit* field = page.ui()(box, 2);
    field->setFixedWidth(dp(36));
    field->setAlignment(Qt::AlignCenter);
    return field;
}

void keepWhole(PageUi& page, Control& control, QLabel& label) {
    label.setWordWrap(true);
    // Not from inside the layout that has just given the width: it would not hear of the new height. A folded
    // label has no width yet to go by.
    const auto fit = [&label] {
        if (label.isVisible())
            label.setMinimumHeight(label.heightForWidth(label.width()));
    };
    const auto later = [&label, fit] { QMetaObject::invokeMethod(&label, fit, Qt::QueuedConnection); };
    page.ui().watch(control, later);
    new Listener(label, {QEvent::Resize, QEvent::Show}, later);
}

void followEnabled(QWidget& follower, QWidget& leader) {
    follower.setEnabled(leader.isEnabled());
    auto* listener = new Listener(leader, {QEvent::EnabledChange},
                                  [&follower, &leader] { follower.setEnabled(leader.isEnabled()); });
    listener->setParent(&follower); // the leader may outlive it
}

void summarise(PageUi& page, Section& section, std::function<QString()> folded,
               std::function<QString()> unfolded, const std::vector<Control*>& watched) {
    section.setSummary([&section, folded = std::move(folded), unfolded = std::move(unfolded)] {
        return section.folded() ? folded() : unfolded();
    });
    for (Control* control : watched)
        page.ui().watch(*control, [&section] { section.refresh(); });
    new Listener(*section.content(), {QEvent::HideToParent, QEvent::ShowToParent},
                 [&section] { section.refresh(); });
}

void showWhileFolded(Section& section, QWidget* extra) {
    section.setSummary(extra);
    setShown(*extra, section.folded());
    new Listener(*section.content(), {QEvent::HideToParent, QEvent::ShowToParent},
                 [extra, content = section.content()] { setShown(*extra, content->isHidden()); });
}

void tintDifference(PageUi& page, const TextBox& written, QLineEdit& field, const Control& read,
                    ComparedValues values, QWidget* words) {
    struct Good {
        Milliseconds since{0};
        int value = 0;
    };
    const auto show = [&field, &read, words, values = std::move(values),
                       last = std::make_shared<std::optional<Good>>()] {
        const auto& worth = read.freshness();
        const bool fresh = worth && worth->state == Freshness::State::Fresh;
        // By its time: the digits of a read that fails stand there a moment before the reading says so.
        if (fresh && (!*last || (*last)->since != worth->since))
            *last = Good{worth->since, values.read()};
        const bool failed = worth && worth->state == Freshness::State::Stale && worth->failed;
        const bool tinted =
            fresh ? values.written() != values.read() : failed && *last && values.written() != (*last)->value;
        setTone(field, tinted ? Tone::Differs : Tone::Plain);
        field.setAccessibleDescription(tinted ? "differs from read" : QString());
        if (words != nullptr)
            setShown(*words, tinted);
    };
    page.ui().watch(const_cast<TextBox&>(written), show);
    page.ui().watch(const_cast<Control&>(read), show);
}

void tintHexDifference(PageUi& page, TextBox& written, QLineEdit& field, Control& read,
                       std::function<std::string()> readText, QWidget* words) {
    tintDifference(page, written, field, read,
                   {[&written] { return hexToInt(written.text()); },
                    [readText = std::move(readText)] { return hexToInt(readText()); }},
                   words);
}

QLineEdit* readByte(PageUi& page, TextBox& box) {
    KeyLineEdit* field = page.ui()(box, 2);
    field->setFixedWidth(dp(36));
    field->setAlignment(Qt::AlignCenter);
    field->setFrame(false);
    const auto show = [field, &box] {
        const auto& worth = box.freshness();
        const Freshness::State state = worth ? worth->state : Freshness::State::Fresh;
        QPalette colours;
        colours.setColor(QPalette::Base, Qt::transparent);
        if (state != Freshness::State::Fresh)
            colours.setColor(QPalette::Text,
                             toneColour(state == Freshness::State::Never ? Tone::Quiet : Tone::Stale));
        if (field->palette() != colours)
            field->setPalette(colours);
    };
    page.ui().watch(box, show);
    new Listener(*field, {QEvent::ApplicationPaletteChange}, show);
    return field;
}

} // namespace vrk
