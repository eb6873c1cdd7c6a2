#pragma once

#include "platform/clipboard/Clipboard.h"
#include "platform/controls/Activities.h"
#include "platform/controls/ResultLog.h"
#include "platform/controls/controls.h"
#include "platform/dialogs/Dialogs.h"
#include "platform/runtime/EventLoop.h"
#include "platform/runtime/Fault.h"
#include "platform/runtime/Signal.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace vrk {

/// A parameter or result of an action that is called by name.
using ActionValue = std::variant<std::monostate, bool, std::int64_t, double, std::string>;
using ActionArgs = std::vector<ActionValue>;

/// An action was called with arguments that it does not take; it has not begun.
class ArgumentError : public Fault {
  public:
    using Fault::Fault;
};

/// Named arguments to C++ ones, all \throws ArgumentError; whole numbers also come as text or as a double
/// without fraction.
std::int64_t wholeArgument(const ActionArgs& args, std::size_t index);
double numberArgument(const ActionArgs& args, std::size_t index);
std::string textArgument(const ActionArgs& args, std::size_t index);
void requireArguments(const ActionArgs& args, std::size_t count);

class PanelSlotBase;

/// What every panel works with. One for each bench; outlives its panels.
struct PanelContext {
    EventLoop& events;
    Dialogs& dialogs;
    Clipboard& clipboard;
    /// Holds the calibration file.
    std::filesystem::path programFolder{};
    /// Where register files and relative names are looked for.
    std::filesystem::path workingFolder{};
    FocusKeeper focus{};
    /// The panel whose window is in front; nullptr if none is.
    PanelSlotBase* front = nullptr;
    ResultLog results{};
    Activities activities{events.clock()};

    Clock& clock() const { return events.clock(); }
    /// A message with OK alone.
    void say(const std::string& text, const std::string& title = {}) const {
        dialogs.show({text, title, {Choice::Ok}});
    }
};

/// A window's model: public controls under their control names, public actions under their handler names.
/// Derived classes wire both in the constructor.
class Panel {
  public:
    Panel(PanelContext& context, std::string name, std::string title);
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;
    virtual ~Panel();

    const std::string& name() const { return name_; }
    const std::string& title() const { return title_; }
    PanelContext& context() const { return context_; }
    EventLoop& events() const { return context_.events; }

    /// Lets pending events run, as an action does between its steps. \throws ProgramEnded
    void pump() const { context_.events.letEventsRun(); }
    /// A fixed wait of an action: blocks, and lets no events run.
    void wait(Milliseconds duration) const { context_.clock().sleep(duration); }
    /// Tells the user in one line what an action came to. \param field where to look, or nullptr.
    void tell(bool good, const std::string& text, const std::string& detail = {},
              const Control* field = nullptr) const;

    /// A disabled panel refuses every gesture.
    bool enabled() const { return enabled_; }
    void setEnabled(bool enabled);
    [[nodiscard]] Subscription observeEnabled(std::function<void()> observer) {
        return enabledChanged_.connect(std::move(observer));
    }

    /// Runs once, after the panel can be reached by others.
    virtual void Form_Load() {}
    /// The panel came to the front.
    virtual void Form_Activate() {}
    /// The user closes the window. May end the program.
    virtual void Form_QueryUnload() {}
    /// True if closing the window only hides it: the panel lives on.
    virtual bool closeHides() const { return false; }
    virtual void Form_Unload() {}

    /// Every control in the order of its declaration.
    const std::vector<Control*>& controls() const { return controls_; }
    /// nullptr if there is none of that name and index.
    Control* find(const std::string& name, int index = kNoIndex) const;

    using Action = std::function<ActionValue(const ActionArgs&)>;
    struct NamedAction {
        std::string name;
        Action run;
    };
    const std::vector<NamedAction>& actions() const { return actions_; }
    const Action* findAction(const std::string& name) const;

  protected:
    /// Registers an action that can be called by name. \throws Fault "Type mismatch" when called with
    /// arguments that do not fit.
    template <class P, class R, class... A>
    void action(const std::string& name, R (P::*method)(A...)) {
        bindActionTo(static_cast<P*>(this), name, method);
    }
    void addAction(const std::string& name, Action run) { actions_.push_back({name, std::move(run)}); }

    /// Ties the control's click to its handler, which becomes callable as "<control>_Click".
    template <class C, class P>
    void wireClick(C& control, void (P::*method)()) {
        bindClickTo(static_cast<P*>(this), control, method);
    }
    template <class C, class P>
    void wireClick(ControlArray<C>& array, void (P::*method)(int)) {
        bindClickTo(static_cast<P*>(this), array, method);
    }

  private:
    friend class Control;
    friend class PanelBlock;

    template <class P, class R, class... A>
    void bindActionTo(P* self, const std::string& name, R (P::*method)(A...)) {
        addAction(name, [self, method](const ActionArgs& args) -> ActionValue {
            return invoke(self, method, args, std::index_sequence_for<A...>{});
        });
    }
    template <class P, class C>
    void bindClickTo(P* self, C& control, void (P::*method)()) {
        control.onClick([self, method] { (self->*method)(); });
        bindActionTo(self, control.name() + "_Click", method);
    }
    template <class P, class C>
    void bindClickTo(P* self, ControlArray<C>& array, void (P::*method)(int)) {
        for (auto& control : array)
            control->onClick([self, method, index = control->index()] { (self->*method)(index); });
        bindActionTo(self, array.name() + "_Click", method);
    }

    template <class T>
    static T argument(const ActionArgs& args, std::size_t index);

    template <class P, class R, class... A, std::size_t... I>
    static ActionValue invoke(P* self, R (P::*method)(A...), const ActionArgs& args,
                              std::index_sequence<I...>) {
        requireArguments(args, sizeof...(A));
        if constexpr (std::is_void_v<R>) {
            (self->*method)(argument<std::remove_cvref_t<A>>(args, I)...);
            return {};
        } else {
            return toValue((self->*method)(argument<std::remove_cvref_t<A>>(args, I)...));
        }
    }
    static ActionValue toValue(bool value) { return value; }
    static ActionValue toValue(int value) { return static_cast<std::int64_t>(value); }
    static ActionValue toValue(double value) { return value; }
    static ActionValue toValue(std::string value) { return value; }

    PanelContext& context_;
    std::string name_;
    std::string title_;
    bool enabled_ = true;
    Signal<> enabledChanged_;
    std::vector<Control*> controls_;
    std::vector<NamedAction> actions_;
};

template <class T>
T Panel::argument(const ActionArgs& args, std::size_t index) {
    if constexpr (std::is_same_v<T, std::string>)
        return textArgument(args, index);
    else if constexpr (std::is_floating_point_v<T>)
        return static_cast<T>(numberArgument(args, index));
    else if constexpr (std::is_same_v<T, bool>)
        return wholeArgument(args, index) != 0;
    else
        return static_cast<T>(wholeArgument(args, index));
}

/// What happened to a panel's window.
enum class SlotEvent { Loaded, Shown, Hidden, Activated, Unloaded };

/// The place of one panel: knows its name before it lives, creates it at first use, shows and hides it.
class PanelSlotBase {
  public:
    PanelSlotBase(const PanelSlotBase&) = delete;
    PanelSlotBase& operator=(const PanelSlotBase&) = delete;
    virtual ~PanelSlotBase() = default;

    const std::string& name() const { return name_; }
    const std::string& title() const { return title_; }
    bool loaded() const { return panel_ != nullptr; }
    bool visible() const { return visible_; }
    /// nullptr while the panel is not loaded.
    Panel* panel() const { return panel_.get(); }

    /// Creates the panel and runs its load, unless it lives already. \throws Fault if it is closed meanwhile
    Panel& load();
    /// Loads, shows the window and brings it to the front, which activates the panel if another one was
    /// there.
    void show();
    /// The window goes. Loads the panel if it does not live yet, as show() does.
    void hide();
    /// Runs the unload and forgets the panel; its next use creates a new one. Nothing happens if it is not
    /// loaded.
    void unload();
    /// The user closes the window: query, then unload, or hide where closing only hides. As a gesture: never
    /// throws.
    Outcome userClose();
    /// The user brings the window to the front.
    Outcome userActivate();

    [[nodiscard]] Subscription observe(std::function<void(SlotEvent)> observer) {
        return changed_.connect(std::move(observer));
    }

  protected:
    PanelSlotBase(PanelContext& context, std::string name, std::string title);
    virtual std::shared_ptr<Panel> create() = 0;
    PanelContext& context() const { return context_; }

  private:
    void bringToFront();
    void forget();

    PanelContext& context_;
    std::string name_;
    std::string title_;
    std::shared_ptr<Panel> panel_;
    bool visible_ = false;
    Signal<SlotEvent> changed_;
};

/// A slot of one panel class; `*slot` and `slot->` load the panel if need be.
template <class P>
class PanelSlot final : public PanelSlotBase {
  public:
    using Factory = std::function<std::shared_ptr<P>()>;

    PanelSlot(PanelContext& context, std::string name, std::string title, Factory factory)
        : PanelSlotBase(context, std::move(name), std::move(title)), factory_(std::move(factory)) {}

    P& operator*() { return static_cast<P&>(load()); }
    P* operator->() { return &**this; }
    /// nullptr while the panel is not loaded.
    P* loadedPanel() const { return static_cast<P*>(panel()); }

  private:
    std::shared_ptr<Panel> create() override { return factory_(); }

    Factory factory_;
};

} // namespace vrk
