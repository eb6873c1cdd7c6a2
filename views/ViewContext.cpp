#include "views/ViewContext.h"

#include "link/modHID.h"
#include "shell/Bench.h"

namespace vrk {

namespace {

QString lastResult(const modHID& link) {
    using Health = modHID::Health;
    if (link.health() == Health::Silent)
        return "Last exchange: no reply";
    if (link.health() == Health::Gone)
        return "Last exchange: not taken";
    if (link.i2cStatus == kLinkError)
        return "Last I2C transfer: the bus did not answer";
    if (link.i2cStatus == kLinkGood)
        return "Last I2C transfer: good";
    return "No I2C transfer yet";
}

QString farEnd(BoardKind kind, const QString& name) {
    switch (kind) {
    case BoardKind::Simulated:
        return name.isEmpty() ? QString("Simulated board") : "Simulated board with " + name;
    case BoardKind::Replayed:
        return "Replay of " + name;
    case BoardKind::Real:
        break;
    }
    return "Board";
}

} // namespace

LinkWords linkWords(const modHID& link, BoardKind kind, const QString& boardName) {
    using Health = modHID::Health;
    const QString end = farEnd(kind, boardName);
    LinkWords words;
    words.last = lastResult(link);
    switch (link.health()) {
    case Health::Unknown:
        words.state = "not open"; // the band has room for no more
        words.board =
            end + (kind == BoardKind::Real ? ": opened with the first selection" : ", not opened yet");
        words.last.clear();
        break;
    case Health::Attached:
        words.state = kind == BoardKind::Simulated  ? "simulated"
                      : kind == BoardKind::Replayed ? "replayed"
                                                    : "attached";
        words.board = QString("%1 attached, instance %2").arg(end).arg(link.instance());
        if (link.boardCount() > 1)
            words.board += QString(" of %1 boards").arg(link.boardCount());
        words.colour = Colour::LightGreen;
        break;
    case Health::Silent:
        words.state = "silent";
        words.board = QString("%1 silent, instance %2").arg(end).arg(link.instance());
        words.colour = Colour::LightRed;
        break;
    case Health::Gone:
        words.state = "gone";
        words.board = end + " not attached";
        words.colour = Colour::LightRed;
        break;
    }
    return words;
}

LinkWords linkWords(const ViewContext& context) {
    using Health = modHID::Health;
    const modHID& link = context.bench.link();
    QString name = context.boardName;
    if (context.socket != nullptr) // another part may have been put in since the start
        if (name = context.socket->state().part; name.isEmpty())
            name = "an empty socket";
    LinkWords words = linkWords(link, context.boardKind, name);
    if (context.boardKind != BoardKind::Real || context.plugged == nullptr || !context.plugged->has_value())
        return words;
    const bool present = **context.plugged > 0;
    if (!present && link.health() != Health::Unknown) {
        words.state = "gone";
        words.board = "Board unplugged";
        words.colour = Colour::LightRed;
    } else if (present && link.health() == Health::Gone) {
        words.board = "Board plugged in: choose Reconnect in the Board menu";
    }
    return words;
}

} // namespace vrk
