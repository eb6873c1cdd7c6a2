#pragma once

#include "platform/runtime/Clock.h"

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vrk {

/// A message box's button; the value is the result that the panels store.
enum class Choice { Ok = 1, Cancel = 2, Retry = 4, Yes = 6, No = 7 };

/// "OK", "Cancel", "Retry", "Yes" or "No".
std::string choiceName(Choice choice);
std::optional<Choice> choiceByName(const std::string& name);

struct MessageBox {
    std::string text;
    std::string title;
    std::vector<Choice> buttons = {Choice::Ok};
    /// What the buttons do where their names do not tell; said under the text in a window, nowhere else.
    std::string consequence{};
    /// What Esc and the window's cross do: the answer that changes least, Retry where that changes nothing,
    /// or nothing, where every answer does something that nobody must do by accident.
    enum class Escape { Harmless, Retry, Stays };
    Escape escape = Escape::Harmless;
    /// What a box that stands while nobody is there answers by itself.
    struct Unattended {
        Choice choice = Choice::Retry;
        Milliseconds after{0};         ///< for so long `ready` must have held
        std::function<bool()> ready{}; ///< asked about once a second, while no action runs
    };
    std::optional<Unattended> unattended{};
};

struct FileRequest {
    enum class Mode { Open, Save };
    Mode mode = Mode::Open;
    std::string title;
    std::string filter;           ///< "All Files (*.*)|*.*|Data (*.csv)|*.csv": names and patterns in turn
    std::string name;             ///< proposed name, may be empty
    std::string defaultExtension; ///< "*.txt"
    int filterIndex = 1;          ///< 1 is the first filter
};

/// Boxes that stop the action until the user answers.
class Dialogs {
  public:
    Dialogs() = default;
    Dialogs(const Dialogs&) = delete;
    Dialogs& operator=(const Dialogs&) = delete;
    virtual ~Dialogs() = default;

    virtual Choice show(const MessageBox& box) = 0;

    /// \return the path chosen; nothing if the user cancelled.
    virtual std::optional<std::string> chooseFile(const FileRequest& request) = 0;
};

/// Answers from a queue, for headless runs and tests, and remembers what was asked. With no answer queued a
/// box takes OK where that is its only button, else Cancel, else No; a file dialog is cancelled. A box with
/// OK alone takes nothing from the queue.
class ScriptedDialogs final : public Dialogs {
  public:
    struct Answer {
        Choice choice = Choice::Ok;
        std::function<void()> before; ///< runs while the box stands: changes the bench under it
    };
    struct Shown {
        enum class Kind { Message, File };
        Kind kind = Kind::Message;
        MessageBox box;
        std::string answer; ///< the button's name, the path, or "" for a cancelled file dialog
        FileRequest file;
    };

    Choice show(const MessageBox& box) override;
    std::optional<std::string> chooseFile(const FileRequest& request) override;

    void answer(Answer answer) { answers_.push_back(std::move(answer)); }
    void answerFile(std::optional<std::string> path) { files_.push_back(std::move(path)); }
    /// Answers and file names that wait for a dialog.
    std::size_t queued() const { return answers_.size() + files_.size(); }

    /// The boxes since the last call, the last kKept of them: a bench may run for weeks with nobody looking.
    std::deque<Shown> takeShown();
    /// How many boxes were dropped since the last call of this function, the oldest first.
    std::size_t takeDropped();
    static constexpr std::size_t kKept = 25'000;

  private:
    void remember(Shown shown);

    std::deque<Answer> answers_;
    std::deque<std::optional<std::string>> files_;
    std::deque<Shown> shown_;
    std::size_t dropped_ = 0;
};

} // namespace vrk
