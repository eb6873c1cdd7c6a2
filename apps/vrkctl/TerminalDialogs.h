#pragma once

#include "platform/dialogs/Dialogs.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace vrk {

/// Nobody sits before the panel: boxes are answered at once and their texts kept for the terminal. A lost
/// link is waited for as the command says, else given up, which ends the program; a part that does not answer
/// returns to the panel, which tells of it.
class TerminalDialogs final : public Dialogs {
  public:
    Choice show(const MessageBox& box) override;
    std::optional<std::string> chooseFile(const FileRequest& request) override;

    /// Texts of the plain messages since the last call, each once.
    std::vector<std::string> takeMessages();
    /// \param wait \return true if the link is worth another try
    void onLinkLost(std::function<bool()> wait) { linkLost_ = std::move(wait); }

  private:
    std::function<bool()> linkLost_;
    std::vector<std::string> messages_;
};

} // namespace vrk
