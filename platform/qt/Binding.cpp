#include "platform/qt/Binding.h"

#include "platform/controls/Panel.h"
#include "platform/qt/keyboard.h"

#include <QEvent>
#include <QFocusEvent>
#include <QHelpEvent>
#include <QToolTip>

#include <algorithm>

namespace vrk::qt {

namespace {
/// Shorter than this no enabled state stands on the screen.
constexpr int kCalmMs = 150;
/// A widget that has the keyboard keeps it while its action disables it for a moment.
constexpr int kCalmWithFocusMs = 1000;
} // namespace

QString captionText(const Control& control) {
    return QString::fromStdString(control.caption());
}

QString plainCaption(const Control& control) {
    QString text = captionText(control);
    text.remove('&');
    return text.trimmed();
}

bool isPassingFocusChange(Qt::FocusReason reason) {
    return reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason ||
           reason == Qt::MenuBarFocusReason;
}

QString refusalOf(const Control& control) {
    if (control.reachable() && control.responsive())
        return {};
    const PanelContext& context = control.panel().context();
    const Activity* running = context.activities.current();
    const QString runs = running == nullptr ? QString() : QString::fromStdString(running->name()) + " runs";
    if (!control.panel().enabled())
        return runs.isEmpty() ? "this page waits for what lies over it" : "this page waits; " + runs;
    if (!control.reachable())
        return "hidden for this part";
    if (!runs.isEmpty())
        return runs;
    if (context.events.depth() > 0)
        return "an action runs";
    return "not available now";
}

Binding::Binding(Control& control, QObject& target) : QObject(&target), control_(&control), target_(target) {
    target.setObjectName(QString::fromStdString(control.path()));
}

Binding::~Binding() = default;

void Binding::start() {
    const auto hear = [this](Aspect aspect) { changed(aspect); };
    own(control_->observe(hear));
    for (const Frame* frame = control_->container(); frame != nullptr; frame = frame->container())
        own(const_cast<Frame*>(frame)->observe([this](Aspect aspect) {
            if (aspect == Aspect::Enabled || aspect == Aspect::Visible)
                changed(aspect);
        }));
    own(control_->panel().observeEnabled([this] { changed(Aspect::Enabled); }));
    for (const Aspect aspect : {Aspect::Range, Aspect::Rows, Aspect::Caption, Aspect::ToolTip, Aspect::Value,
                                Aspect::Colour, Aspect::Freshness, Aspect::Enabled, Aspect::Visible})
        changed(aspect);
}

void Binding::changed(Aspect aspect) {
    if (control_ == nullptr)
        return;
    if (aspect == Aspect::Enabled)
        showEnabled(control_->responsive());
    else if (aspect == Aspect::Visible)
        showVisible(shownByItself());
    else
        showAspect(aspect);
}

void Binding::placed() {
    changed(Aspect::Visible);
}

bool Binding::shownByItself() const {
    if (!control_->visible())
        return false;
    // A group's widget hides what stands in it, and keeps its place only if what stands in it does not hide
    // as well.
    for (const Frame* frame = control_->container(); frame != nullptr; frame = frame->container()) {
        if (frame->visible())
            continue;
        const QString name = QString::fromStdString(frame->path());
        const QObject* around = target_.parent();
        while (around != nullptr && around->objectName() != name)
            around = around->parent();
        if (around == nullptr)
            return false;
    }
    return true;
}

void Binding::release() {
    subscriptions_.clear();
    released();
    control_ = nullptr;
}

WidgetBinding::WidgetBinding(Control& control, QWidget& widget) : Binding(control, widget), widget_(widget) {
    lag_.setSingleShot(true);
    connect(&lag_, &QTimer::timeout, this, [this] { applyEnabled(); });
    widget.installEventFilter(this);
}

void WidgetBinding::showAspect(Aspect aspect) {
    if (aspect == Aspect::Caption || aspect == Aspect::ToolTip)
        showNames();
}

void WidgetBinding::showNames() {
    const QString tip = QString::fromStdString(control()->toolTip());
    if (!tip.isEmpty())
        widget_.setToolTip(tip);
    const QString caption = plainCaption(*control());
    if (!caption.isEmpty())
        widget_.setAccessibleName(caption);
    else if (!tip.isEmpty() && widget_.accessibleName().isEmpty())
        widget_.setAccessibleName(tip);
}

void WidgetBinding::showEnabled(bool enabled) {
    wanted_ = enabled;
    if (!shown_.isValid()) { // nothing is on the screen yet
        shown_.start();
        widget_.setEnabled(enabled);
        return;
    }
    if (enabled == widget_.isEnabledTo(widget_.parentWidget())) {
        lag_.stop();
        return;
    }
    // The control refuses at once; only the picture lags behind.
    if (!enabled)
        lag_.start(widget_.hasFocus() ? kCalmWithFocusMs : kCalmMs);
    else if (const auto stood = shown_.elapsed(); stood < kCalmMs)
        lag_.start(static_cast<int>(kCalmMs - stood));
    else
        applyEnabled();
}

void WidgetBinding::applyEnabled() {
    lag_.stop();
    if (widget_.isEnabledTo(widget_.parentWidget()) == wanted_)
        return;
    setEnabledWithKeyboard(widget_, wanted_);
    shown_.restart();
}

void WidgetBinding::showVisible(bool visible) {
    if (!visible)
        hideWithKeyboard(widget_);
    else if (widget_.isHidden() && widget_.parentWidget() != nullptr)
        widget_.show();
}

bool WidgetBinding::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut && lag_.isActive() && !wanted_)
        lag_.start(kCalmMs); // nothing keeps its looks any more
    if (control() != nullptr && (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)) {
        const auto* focus = static_cast<QFocusEvent*>(event);
        if (!isPassingFocusChange(focus->reason())) {
            if (event->type() == QEvent::FocusIn)
                (void)control()->userFocus();
            else
                (void)control()->userLeave();
        }
    }
    if (event->type() == QEvent::ToolTip && control() != nullptr)
        if (const QString why = refusalOf(*control()); !why.isEmpty()) {
            const QString tip = widget_.toolTip();
            QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                               (tip.isEmpty() ? QString() : tip + "\n") + "Not now: " + why, &widget_);
            return true;
        }
    return QObject::eventFilter(watched, event);
}

} // namespace vrk::qt
