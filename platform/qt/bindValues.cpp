#include "platform/qt/PanelUi.h"
#include "platform/qt/PictureWidget.h"
#include "platform/qt/bind.h"
#include "platform/qt/layout.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

#include <algorithm>

namespace vrk::qt {

namespace {

template <class Button>
void showCaption(const Control& control, Button& button) {
    if (!control.caption().empty())
        button.setText(withMnemonic(captionText(control).trimmed(), button));
}

class CheckBinding final : public TypedBinding<CheckBox, QCheckBox> {
  public:
    CheckBinding(CheckBox& model, QCheckBox& view) : TypedBinding(model, view) {
        connect(&view, &QCheckBox::clicked, this,
                [this] { gesture([](CheckBox& box) { (void)box.userClick(); }); });
        start();
    }

  protected:
    void showAspect(Aspect aspect) override {
        TypedBinding::showAspect(aspect);
        if (aspect == Aspect::Value)
            view().setChecked(model()->checked());
        else if (aspect == Aspect::Caption)
            showCaption(*model(), view());
    }
};

class OptionBinding final : public TypedBinding<OptionButton, QRadioButton> {
  public:
    OptionBinding(OptionButton& model, QRadioButton& view) : TypedBinding(model, view) {
        view.setAutoExclusive(false);
        connect(&view, &QRadioButton::clicked, this,
                [this] { gesture([](OptionButton& option) { (void)option.userClick(); }); });
        start();
    }

  protected:
    void showAspect(Aspect aspect) override {
        TypedBinding::showAspect(aspect);
        if (aspect == Aspect::Value)
            view().setChecked(model()->value());
        else if (aspect == Aspect::Caption)
            showCaption(*model(), view());
    }
};

class ButtonBinding final : public TypedBinding<Button, QPushButton> {
  public:
    ButtonBinding(Button& model, QPushButton& view) : TypedBinding(model, view) {
        connect(&view, &QPushButton::clicked, this,
                [this] { gesture([](Button& button) { (void)button.userClick(); }); });
        start();
    }

  protected:
    void showAspect(Aspect aspect) override {
        TypedBinding::showAspect(aspect);
        if (aspect == Aspect::Caption)
            showCaption(*model(), view());
    }
};

class MenuBinding final : public Binding {
  public:
    MenuBinding(MenuEntry& model, QAction& action) : Binding(model, action), action_(action) {
        connect(&action, &QAction::triggered, this, [this] {
            if (control() != nullptr)
                (void)static_cast<MenuEntry*>(control())->userClick();
        });
        start();
    }

  protected:
    void showAspect(Aspect aspect) override {
        if (aspect == Aspect::Caption)
            action_.setText(captionText(*control()));
    }
    void showEnabled(bool enabled) override { action_.setEnabled(enabled); }
    void showVisible(bool visible) override { action_.setVisible(visible); }

  private:
    QAction& action_;
};

class LabelBinding final : public TypedBinding<Label, QLabel> {
  public:
    LabelBinding(Label& model, QLabel& view) : TypedBinding(model, view) {
        view.setTextFormat(Qt::PlainText);
        start();
    }

  protected:
    void showAspect(Aspect aspect) override {
        if (aspect == Aspect::Caption || aspect == Aspect::Freshness)
            showText();
        else
            TypedBinding::showAspect(aspect); // its text is its name to a screen reader already
    }

  private:
    void showText() {
        const auto& freshness = model()->freshness();
        auto* toned = dynamic_cast<ToneLabel*>(&view());
        if (toned != nullptr && freshness && freshness->state == Freshness::State::Never) {
            toned->setText(kNeverRead);
            toned->setTone(Tone::Quiet);
            return;
        }
        view().setText(withMnemonic(captionText(*model()).trimmed(), view()));
        if (toned != nullptr && freshness)
            toned->setTone(freshness->state == Freshness::State::Stale ? Tone::Stale : Tone::Plain);
    }
};

class LampBinding final : public TypedBinding<Lamp, LampWidget> {
  public:
    LampBinding(Lamp& model, LampWidget& view) : TypedBinding(model, view) {
        start();
        own(model.observeAssignments([this] {
            const Colour colour = this->model()->colour();
            if (colour == Colour::LightGreen || colour == Colour::Green)
                this->view().blink();
        }));
    }

  protected:
    void showAspect(Aspect aspect) override {
        if (aspect == Aspect::Colour)
            view().setColour(model()->colour());
        else if (aspect == Aspect::ToolTip && !model()->toolTip().empty())
            view().setName(QString::fromStdString(model()->toolTip()));
    }
    void showEnabled(bool) override {} // a lamp tells; it takes no gesture
};

class ProgressBinding final : public TypedBinding<ProgressBar, LevelBar> {
  public:
    ProgressBinding(ProgressBar& model, LevelBar& view) : TypedBinding(model, view) { start(); }

  protected:
    void showAspect(Aspect aspect) override {
        TypedBinding::showAspect(aspect);
        if (aspect == Aspect::Range)
            view().setRange(model()->maximum());
        else if (aspect == Aspect::Value)
            view().setValue(model()->value());
        else if (aspect == Aspect::Freshness && model()->freshness())
            view().setState(model()->freshness()->state);
    }
};

class SliderBinding final : public TypedBinding<Slider, ThumbSlider> {
  public:
    SliderBinding(Slider& model, ThumbSlider& view) : TypedBinding(model, view) {
        view.pressed = [this] {
            const int place = this->view().sliderPosition();
            gesture([place](Slider& slider) {
                // A click in the groove has moved the thumb before it counts as held.
                if (!slider.userMouseDown().refused() && place != slider.value())
                    (void)slider.userScroll(place);
            });
        };
        view.moved = [this](int value) {
            gesture([value](Slider& slider) { (void)slider.userScroll(value); });
        };
        view.released = [this] { gesture([](Slider& slider) { (void)slider.userMouseUp(); }); };
        start();
    }

  protected:
    void showAspect(Aspect aspect) override {
        TypedBinding::showAspect(aspect);
        if (aspect == Aspect::Range) {
            view().setRange(model()->minimum(), model()->maximum());
            // More marks than this run into one another on a slider's length.
            constexpr int kMostTicks = 32;
            const int length = model()->maximum() - model()->minimum() + 1;
            const int tick = std::max(model()->tickFrequency(), length / kMostTicks);
            view().setTickInterval(tick);
            view().setPageStep(tick);
        }
        if (aspect == Aspect::Range || aspect == Aspect::Value)
            view().setValue(model()->value());
    }
};

class FrameBinding final : public TypedBinding<Frame, GroupWidget> {
  public:
    FrameBinding(Frame& model, GroupWidget& view) : TypedBinding(model, view) { start(); }

  protected:
    void showAspect(Aspect aspect) override {
        TypedBinding::showAspect(aspect);
        if (aspect == Aspect::Caption && !model()->caption().empty())
            view().setTitle(plainCaption(*model()));
    }
    void showEnabled(bool) override {} // each control in it shows its own state
};

class PictureBinding final : public TypedBinding<Picture, PictureWidget> {
  public:
    PictureBinding(Picture& model, PictureWidget& view) : TypedBinding(model, view) {
        view.doubleClicked = [this] { gesture([](Picture& picture) { (void)picture.userDoubleClick(); }); };
        start();
    }
};

} // namespace

Binding* bind(CheckBox& control, QCheckBox& widget) {
    return new CheckBinding(control, widget);
}
Binding* bind(OptionButton& control, QRadioButton& widget) {
    return new OptionBinding(control, widget);
}
Binding* bind(Button& control, QPushButton& widget) {
    return new ButtonBinding(control, widget);
}
Binding* bind(MenuEntry& control, QAction& action) {
    return new MenuBinding(control, action);
}
Binding* bind(Label& control, QLabel& widget) {
    return new LabelBinding(control, widget);
}
Binding* bind(Lamp& control, LampWidget& widget) {
    return new LampBinding(control, widget);
}
Binding* bind(ProgressBar& control, LevelBar& widget) {
    return new ProgressBinding(control, widget);
}
Binding* bind(Slider& control, ThumbSlider& widget) {
    return new SliderBinding(control, widget);
}
Binding* bind(Frame& control, GroupWidget& widget) {
    return new FrameBinding(control, widget);
}
Binding* bind(Picture& control, PictureWidget& widget) {
    return new PictureBinding(control, widget);
}

} // namespace vrk::qt
