#pragma once

#include "platform/controls/Control.h"
#include "platform/controls/controls.h"

#include <QAction>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <vector>

namespace vrk::qt {

/// Ties one control to what shows it, in both directions: observers carry changes out, the user's hands come
/// in as gestures and as nothing else. Belongs to the widget as its child. The control must outlive the
/// binding or release() must come first.
///
/// A gesture may be refused, held back or answered by other values, so that a widget which has moved by
/// itself is always put back to what the control says.
class Binding : public QObject {
  public:
    Binding(Control& control, QObject& target);
    ~Binding() override;

    /// nullptr after release().
    Control* control() const { return control_; }
    QObject& target() const { return target_; }
    /// The control is going: the widget stays as it is and does nothing any more.
    void release();
    /// The widget has been put into its window.
    void placed();

  protected:
    /// Shows every aspect for the first time; the last thing that a binding's constructor does.
    void start();
    /// Shows one aspect of the control; never called for Enabled and Visible.
    virtual void showAspect(Aspect aspect) = 0;
    virtual void showEnabled(bool enabled) = 0;
    virtual void showVisible(bool visible) = 0;
    /// The control is about to go: forget what still points into it.
    virtual void released() {}
    void own(Subscription subscription) { subscriptions_.push_back(std::move(subscription)); }

  private:
    void changed(Aspect aspect);
    bool shownByItself() const;

    Control* control_;
    QObject& target_;
    std::vector<Subscription> subscriptions_;
};

/// A binding to a widget: names, tool tip, focus, and an enabled state that never flashes.
class WidgetBinding : public Binding {
  public:
    WidgetBinding(Control& control, QWidget& widget);
    QWidget& widget() const { return widget_; }

  protected:
    void showAspect(Aspect aspect) override;
    void showEnabled(bool enabled) override;
    void showVisible(bool visible) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void applyEnabled();
    void showNames();

    QWidget& widget_;
    QTimer lag_;
    QElapsedTimer shown_; ///< since the enabled state on the screen was last changed
    bool wanted_ = true;
};

/// A widget binding that knows the types at both ends.
template <class Model, class View>
class TypedBinding : public WidgetBinding {
  public:
    TypedBinding(Model& model, View& view) : WidgetBinding(model, view) {}
    /// nullptr after release().
    Model* model() const { return static_cast<Model*>(control()); }
    View& view() const { return static_cast<View&>(widget()); }

  protected:
    /// Does `gesture` and puts the widget back to what the control then says.
    void gesture(const std::function<void(Model&)>& act) {
        if (model() == nullptr)
            return;
        act(*model());
        if (model() != nullptr)
            showAspect(Aspect::Value);
    }
};

/// Caption of a control as a widget shows it; a lone "&" marks the mnemonic in both.
QString captionText(const Control& control);
/// The same without the mnemonic's mark.
QString plainCaption(const Control& control);

/// Why a gesture on the control would be refused now, in words; empty if it would not.
QString refusalOf(const Control& control);

/// True for focus changes that are no moves of the user's hand from one control to another: another window
/// came to the front, a menu or a list opened.
bool isPassingFocusChange(Qt::FocusReason reason);

} // namespace vrk::qt
