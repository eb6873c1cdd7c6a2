#pragma once

#include <QString>

#include <string>

namespace vrk::qt {

/// A model's text, which is UTF-8.
inline QString words(const std::string& text) {
    return QString::fromStdString(text);
}

} // namespace vrk::qt
