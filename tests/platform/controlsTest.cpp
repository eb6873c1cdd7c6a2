#include "platform/controls/Panel.h"
#include "platform/files/files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <vector>

namespace vrk {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// One control of each kind that has rules of its own; whatever they raise is noted in `log`.
class SamplePanel final : public Panel {
  public:
    SamplePanel(PanelContext& context, std::vector<std::string>& log)
        : Panel(context, "frmSample", "Sample"), log_(log) {
        inner.setContainer(outer);
        for (Control* control : std::initializer_list<Control*>{&button, &box, &text, &other, &slider, &list})
            control->setContainer(inner);
        button.onClick(raises("button"));
        box.onClick(raises("box"));
        for (auto& option : options) {
            option->join(group);
            option->onClick([this, &option] { log_.push_back(option->path()); });
        }
        text.onKeyPress(hexKeyFilter);
        text.onKeyDown([this](int code, int shift) {
            log_.push_back("key " + decimalText(code) + " " + decimalText(shift));
        });
        text.onChange([this] { log_.push_back("text " + text.text()); });
        text.onGotFocus(raises("text got"));
        text.onLostFocus(raises("text lost"));
        other.onGotFocus(raises("other got"));
        slider.onMouseDown(raises("down"));
        slider.onScroll(raises("scroll"));
        slider.onMouseUp(raises("up"));
        slider.onChange([this] { log_.push_back("slider " + decimalText(slider.value())); });
        list.onClick([this] { log_.push_back("list " + decimalText(list.listIndex())); });
    }

    void Form_Load() override {
        if (onLoad)
            onLoad();
    }
    void Form_Activate() override { log_.emplace_back("activate"); }

    std::function<void()> onLoad;

    Frame outer{*this, "outer"};
    Frame inner{*this, "inner"};
    Button button{*this, "button"};
    CheckBox box{*this, "box"};
    ControlArray<OptionButton> options{*this, "option", 1, 3};
    TextBox text{*this, "text"};
    TextBox other{*this, "other"};
    Slider slider{*this, "slider"};
    ComboBox list{*this, "list"};
    TextLog trace{*this, "trace"};
    Timer timer{*this, "timer"};
    OptionGroup group;

  private:
    std::function<void()> raises(const char* what) {
        return [this, what] { log_.push_back(what); };
    }
    std::vector<std::string>& log_;
};

class ControlsTest : public ::testing::Test {
  protected:
    VirtualClock clock;
    EventLoop events{clock};
    ScriptedDialogs dialogs;
    MemoryClipboard clipboard;
    PanelContext context{events, dialogs, clipboard};
    std::vector<std::string> log;
    std::vector<std::string> raised() { return std::exchange(log, {}); }
    SamplePanel panel{context, log};
};

TEST_F(ControlsTest, APanelComesToTheFrontAgainHoweverItWasLeft) {
    std::function<void()> onLoad;
    PanelSlot<SamplePanel> slot{context, "frmSample", "Sample", [&] {
                                    auto made = std::make_shared<SamplePanel>(context, log);
                                    made->onLoad = onLoad;
                                    return made;
                                }};
    const std::pair<const char*, std::function<void()>> ways[] = {{"hidden", [&] { slot.hide(); }},
                                                                  {"unloaded", [&] { slot.unload(); }}};
    for (const auto& [name, leave] : ways) {
        SCOPED_TRACE(name);
        slot.show();
        EXPECT_THAT(raised(), ElementsAre("activate"));
        leave();
    }
    slot.show();
    EXPECT_THAT(raised(), ElementsAre("activate"));

    slot.unload(); // the user may close it while its load lets events run
    onLoad = [&] { slot.unload(); };
    EXPECT_THROW(slot.show(), Fault);
    EXPECT_TRUE(!slot.loaded() && !slot.visible());
}

TEST_F(ControlsTest, EscReachesTheInnermostActionThatCanBeStopped) {
    const Activity outer(context.activities, "outer", [this] { log.emplace_back("outer"); });
    {
        const Activity inner(context.activities, "inner", [this] { log.emplace_back("inner"); });
        EXPECT_TRUE(context.activities.abort());
    }
    const Activity deaf(context.activities, "deaf");
    EXPECT_TRUE(context.activities.abort());
    EXPECT_THAT(raised(), ElementsAre("inner", "outer"));
}

TEST_F(ControlsTest, OfManyResultsTheLastAreKept) {
    for (std::size_t result = 0; result < ResultLog::kKept + 3; ++result)
        context.results.add({});
    EXPECT_EQ(context.results.kept().front().number, 4U);
    EXPECT_EQ(context.results.kept().back().number, context.results.last());
}

TEST_F(ControlsTest, GesturesAreRefusedByWhateverIsHiddenOrDisabled) {
    const std::pair<const char*, std::function<void(bool)>> rows[] = {
        {"disabled",
         [&](bool on) {
             for (Control* control : panel.controls())
                 control->setEnabled(on);
         }},
        {"hidden",
         [&](bool on) {
             for (Control* control : panel.controls())
                 control->setVisible(on);
         }},
        {"group disabled", [&](bool on) { panel.inner.setEnabled(on); }},
        {"group hidden", [&](bool on) { panel.inner.setVisible(on); }},
        {"outer group disabled", [&](bool on) { panel.outer.setEnabled(on); }},
        {"outer group hidden", [&](bool on) { panel.outer.setVisible(on); }},
        {"panel disabled", [&](bool on) { panel.setEnabled(on); }}};
    panel.list.addRow("a");
    for (const auto& [name, set] : rows) {
        SCOPED_TRACE(name);
        set(false);
        EXPECT_TRUE(panel.button.userClick().refused());
        EXPECT_TRUE(panel.box.userClick().refused());
        EXPECT_TRUE(panel.text.userKey('7').refused());
        EXPECT_TRUE(panel.text.userType("7").refused());
        EXPECT_TRUE(panel.text.userFocus().refused());
        EXPECT_TRUE(panel.slider.userDrag(5).refused());
        EXPECT_TRUE(panel.list.userSelect(0).refused());
        events.runDue();
        EXPECT_THAT(raised(), IsEmpty());
        panel.box.setValue(panel.box.value() + 1); // code assigns all the same
        EXPECT_THAT(raised(), ElementsAre("box"));
        set(true);
        EXPECT_TRUE(panel.button.userClick().done());
        EXPECT_THAT(raised(), ElementsAre("button"));
    }
    // Held back during an exchange it meets the control as it stands afterwards.
    {
        const EventLoop::Hold exchange(events);
        EXPECT_EQ(panel.button.userClick().kind, Outcome::Kind::Held);
        panel.button.setEnabled(false);
    }
    events.runDue();
    EXPECT_THAT(raised(), IsEmpty());
}

TEST_F(ControlsTest, AssignmentRaisesWhatChanges) {
    panel.box.setValue(0);
    panel.box.setValue(2);
    panel.box.setValue(2);
    panel.box.userClick();
    EXPECT_EQ(panel.box.value(), 0);
    EXPECT_THAT(raised(), ElementsAre("box", "box"));

    panel.options[2].setValue(true);
    panel.options[3].userClick();
    panel.options[3].userClick();
    EXPECT_FALSE(panel.options[2].value());
    panel.options[3].setValue(false); // clearing raises nothing, and lets the next click raise again
    panel.options[3].setValue(true);
    panel.options[1].showSelected();
    EXPECT_FALSE(panel.options[3].value());
    EXPECT_THAT(raised(), ElementsAre("option(2)", "option(3)", "option(3)"));
    EXPECT_THROW(panel.options[0], Fault);
    EXPECT_THROW(panel.options[4], Fault);

    panel.list.setRows({{"a", 7}, {"b", 8}});
    panel.list.setListIndex(1);
    panel.list.setListIndex(1);
    panel.list.userSelect(1); // a user's pick raises in any case
    EXPECT_EQ(panel.list.itemData(), 8);
    EXPECT_THROW(panel.list.setListIndex(2), Fault);
    panel.list.setRows({{"c", 9}});
    EXPECT_EQ(panel.list.listIndex(), -1);
    EXPECT_THROW((void)panel.list.itemData(), Fault);
    EXPECT_THAT(raised(), ElementsAre("list 1", "list 1"));
}

TEST_F(ControlsTest, TextBoxEditsItsSelectionWithinItsLimit) {
    panel.text.setMaxLength(3);
    panel.text.userType("1g2f4");
    events.runDue();
    EXPECT_EQ(panel.text.text(), "12F");
    EXPECT_THAT(raised(), ElementsAre("text got", "key 49 0", "text 1", "key 103 0", "key 50 0", "text 12",
                                      "key 102 0", "text 12F", "key 52 0"));
    panel.text.userSelect(1, 2);
    panel.text.userKey('a');
    EXPECT_EQ(panel.text.text(), "1A");
    panel.text.userKey(kBackspaceKey);
    panel.text.userKey(kBackspaceKey);
    panel.text.userKey(kBackspaceKey);
    EXPECT_EQ(panel.text.text(), "");
    panel.text.setText("ABCD");
    EXPECT_EQ(panel.text.text(), "ABC");
    panel.text.userSelect(-4, 99);
    EXPECT_EQ(panel.text.selectedText(), "ABC");
    raised();
    panel.text.userKey('C', 2); // with Ctrl only the key-down handler sees it
    panel.text.userEnter();
    panel.text.setText("ABC");
    EXPECT_THAT(raised(), ElementsAre("key 67 2", "key 13 0"));
    panel.text.userEdit("QRST", 4); // cut, paste and undo pass the filter
    EXPECT_EQ(panel.text.text(), "QRS");
    panel.text.userType("5");
    events.runDue();
    EXPECT_EQ(panel.text.text(), "5");
    raised();
    panel.other.userFocus();
    EXPECT_THAT(raised(), ElementsAre("text lost", "other got"));
    panel.text.userLeave(); // has no focus to leave
    EXPECT_TRUE(panel.other.focused());
    EXPECT_THAT(raised(), IsEmpty());
}

TEST_F(ControlsTest, SliderStaysInItsRange) {
    panel.slider.setRange(0, 127);
    panel.slider.userDrag(300);
    EXPECT_EQ(panel.slider.value(), 127);
    EXPECT_THAT(raised(), ElementsAre("down", "slider 127", "scroll", "up"));
    panel.slider.userDrag(127); // a drag to where it is scrolls, and changes nothing
    panel.slider.setValue(-5);
    panel.slider.setRange(16, 31);
    EXPECT_EQ(panel.slider.value(), 16);
    panel.slider.setMaximum(8);
    EXPECT_EQ(panel.slider.value(), 16);
    EXPECT_THAT(raised(), ElementsAre("down", "scroll", "up", "slider 0", "slider 16"));
}

TEST_F(ControlsTest, LogBreaksItsLinesAlsoWhereTheBreakComesInTwo) {
    std::vector<Aspect> aspects;
    const Subscription observer = panel.trace.observe([&](Aspect aspect) { aspects.push_back(aspect); });
    panel.trace.append("one\r");
    panel.trace.append("\ntwo");
    panel.trace.append("");
    EXPECT_EQ(panel.trace.lineCount(), 2U);
    EXPECT_EQ(panel.trace.line(1), "two");
    EXPECT_EQ(panel.trace.text(), "one\r\ntwo");
    panel.trace.clear();
    EXPECT_EQ(panel.trace.text(), "");
    EXPECT_THAT(aspects, ElementsAre(Aspect::Appended, Aspect::Appended, Aspect::Value));
}

TEST_F(ControlsTest, LogPutsItsOldestLinesOnTheDisk) {
    failAtFileSizeLimit();
    for (const bool diskFull : {false, true}) {
        panel.trace.clear();
        panel.trace.setMemoryLimit(20000);
        rlimit old{};
        getrlimit(RLIMIT_FSIZE, &old);
        const rlimit small{diskFull ? 30000 : old.rlim_cur, old.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
        std::string all;
        std::vector<std::string> lines;
        for (int number = 0; number < 5000; ++number) {
            lines.push_back(std::string(static_cast<std::size_t>(number % 40), 'x') + decimalText(number) +
                            (number % 7 == 0 ? "\r" : ""));
            panel.trace.append(lines.back());
            panel.trace.append("\r\n");
            all += lines.back() + "\r\n";
        }
        setrlimit(RLIMIT_FSIZE, &old);
        panel.trace.append("tail");
        EXPECT_EQ(panel.trace.inMemory() <= 20000, !diskFull);
        EXPECT_EQ(panel.trace.size(), all.size() + 4);
        EXPECT_EQ(panel.trace.text(), all + "tail");
        ASSERT_EQ(panel.trace.lineCount(), 5001U);
        for (const std::size_t number : {0U, 4999U, 255U, 256U, 1U, 2500U})
            EXPECT_EQ(panel.trace.line(number), lines[number]);
        // Told once, the full disk too.
        ASSERT_EQ(context.results.kept().size(), diskFull ? 3U : 1U);
        EXPECT_EQ(context.results.kept().back().good, !diskFull);
    }
    // A limit in lines keeps that many, and a block more at most.
    panel.trace.clear();
    panel.trace.setMemoryLimit(TextLog::kMostInMemory);
    panel.trace.setLineLimit(1000);
    for (int number = 0; number < 5000; ++number)
        panel.trace.append("ten bytes\r\n");
    EXPECT_GE(panel.trace.inMemory(), 11U * 1000);
    EXPECT_LE(panel.trace.inMemory(), 11U * 1300);
    EXPECT_EQ(panel.trace.text().size(), 11U * 5000);
}

TEST_F(ControlsTest, TimerIsNotEnteredTwice) {
    int entered = 0;
    int deepest = 0;
    int inside = 0;
    panel.timer.setInterval(Milliseconds(10));
    panel.timer.onTimer([&] {
        deepest = std::max(deepest, ++inside);
        ++entered;
        clock.sleep(Milliseconds(35));
        events.letEventsRun();
        --inside;
        if (entered == 2)
            throw overflow(); // a fault does not stop it
    });
    panel.timer.setRunning(true);
    advance(events, clock, Milliseconds(9));
    EXPECT_EQ(entered, 0);
    advance(events, clock, Milliseconds(150));
    EXPECT_EQ(deepest, 1);
    EXPECT_GE(entered, 3);
    panel.timer.setRunning(false);
    const int before = entered;
    advance(events, clock, Milliseconds(100));
    EXPECT_EQ(entered, before);
}

} // namespace
} // namespace vrk
