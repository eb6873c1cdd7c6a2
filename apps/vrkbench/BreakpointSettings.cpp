#include "apps/vrkbench/BreakpointSettings.h"

#include <QSettings>
#include <QStringList>
#include <QUrl>

namespace vrk {

namespace {

/// A slash in a key would open a group.
QString keyOf(const std::string& path) {
    return "breakpoints/" + QString::fromLatin1(QUrl::toPercentEncoding(QString::fromStdString(path)));
}

} // namespace

std::set<int> BreakpointSettings::breakpoints(const std::string& path) const {
    std::set<int> lines;
    for (const QString& line : settings_.value(keyOf(path)).toStringList())
        if (const int number = line.toInt(); number > 0)
            lines.insert(number);
    return lines;
}

void BreakpointSettings::keepBreakpoints(const std::string& path, const std::set<int>& lines) {
    if (lines.empty()) {
        settings_.remove(keyOf(path));
        return;
    }
    QStringList texts;
    for (const int line : lines)
        texts += QString::number(line);
    settings_.setValue(keyOf(path), texts);
}

} // namespace vrk
