#pragma once

#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/Session.h"
#include "apps/vrkctl/TerminalDialogs.h"
#include "panels/WiperPanel.h"
#include "platform/files/RegisterMap.h"
#include "sim/PartCatalogue.h"

#include <functional>
#include <string>

namespace vrk {

/// The start panel and one device panel, worked by the gestures of a user. The supplies go off when it ends,
/// unless told otherwise. A signal ends it between two steps.
class PanelBench {
  public:
    explicit PanelBench(const Options& options)
        : options_(options), session_(options, dialogs_, DefaultTime::VirtualIfPossible) {}

    Session& session() { return session_; }
    Bench& bench() { return session_.bench(); }
    /// The panel that open() has opened.
    WiperPanel& panel();

    /// Opens the panel of a bus on the board that the options name. \throws CommandError
    void open(PartBus bus);
    /// Opens the panel of a row of the start panel's list; the caller says when its work begins.
    /// \throws CommandError
    void openRow(int row, const std::string& what);
    /// Opens the controller's console alone, which changes nothing at the board. \throws CommandError
    void openConsole();
    /// \param level of the supply list, or "on" for the one that stands there. \throws CommandError
    void switchVccOn(const std::string& level);
    /// Runs what a gesture has queued. \throws CommandError unless the gesture was carried out.
    void done(const Outcome& outcome, const std::string& what);
    /// The same for what is done without a gesture, as an action whose faults and whose end are told alike.
    void act(const std::string& what, const std::function<void()>& action);
    /// \throws CommandError for the status of a lost link. \param what was being done
    void requireLink(int status, const std::string& what) const;
    /// What a command ends with whose link was lost. \throws CommandError as requireReplayed()
    CommandError linkLost(const std::string& what) const;
    /// Types a text and Enter. \throws CommandError
    void enter(TextBox& box, const std::string& text, const std::string& what);
    /// The supplies stay on when this ends, and the user is told so. \param why what would be lost
    void leavePowered(const std::string& why);
    /// Tells what the panels have said.
    void tellMessages();
    /// \throws CommandError if a replay did not go as recorded.
    void requireReplayed() const;

  private:
    void chooseInstance();

    Options options_;
    TerminalDialogs dialogs_;
    mutable Session session_;
};

/// What the options say of the part, checked. \throws CommandError (usage)
CommandError usage(const std::string& text);
/// An even 8-bit bus address. \throws CommandError (usage)
int parseAddress(const std::string& text);
/// The part that --part names, else the simulated one; nothing if neither does. \throws CommandError (usage)
/// that lists the parts if it is none that has a bus.
const sim::PartFacts* partOf(const Options& options, const std::string& part);
/// The bus that leads to such a part.
PartBus busOf(const sim::PartFacts& facts);
/// The status of an exchange for people: "ok", "no acknowledge" ...
std::string statusText(int status);

} // namespace vrk
