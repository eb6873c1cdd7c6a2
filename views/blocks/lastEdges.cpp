#include "views/blocks/lastEdges.h"

#include "platform/qt/layout.h"
#include "platform/qt/theme.h"
#include "views/workspace/CutLabel.h"

#include <QLabel>

#include <utility>

namespace vrk {

using namespace qt;

QWidget* lastEdges(TimingPicture& picture, std::function<QString(const PinTimeline&)> words) {
    auto* said = new CutLabel(1.0);
    said->setObjectName("edges.words");
    said->setTone(Tone::Quiet);
    picture.onShown = [said, &picture, words = std::move(words)] {
        const QString text = words(picture.timeline());
        said->setText(text);
        said->setToolTip(text);
        picture.setWords(text);
    };
    auto* head = row({heading("Last edges"), said});
    head->setStretch(1, 1);
    auto* all = tightColumn({head, &picture});
    all->setStretch(1, 1);
    return block(all);
}

} // namespace vrk
