#pragma once

#include "platform/qt/LogView.h"

#include <functional>
#include <string>
#include <utility>

namespace vrk::qt {

/// Which lines of a log tell a failure: they are written in its colour.
class LogFailures final : public QObject {
  public:
    using Tells = std::function<bool(const std::string& line)>;

    /// From now on in that view, whose child it is.
    LogFailures(LogView& view, Tells which) : QObject(&view), tells(std::move(which)) {}
    /// nullptr where no line is told apart.
    static const LogFailures* of(const LogView& view) {
        // It has no signals, so it is found by its type and not by what moc knows.
        for (const QObject* child : view.children())
            if (const auto* found = dynamic_cast<const LogFailures*>(child))
                return found;
        return nullptr;
    }

    const Tells tells;
};

} // namespace vrk::qt
