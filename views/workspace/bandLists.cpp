/// What the band offers to choose from, and what it works on for a device panel.

#include "panels/WiperPanel.h"
#include "platform/qt/theme.h"
#include "shell/Bench.h"
#include "views/pages.h"
#include "views/workspace/BandCell.h"
#include "views/workspace/ChoicePopup.h"

#include <algorithm>

namespace vrk {

using namespace qt;

QString clockText(const WallTime& time) {
    return QString("%1:%2:%3")
        .arg(time.hour, 2, 10, QChar('0'))
        .arg(time.minute, 2, 10, QChar('0'))
        .arg(time.second, 2, 10, QChar('0'));
}

BandSource bandOf(DevicePanel& panel) {
    BandSource source;
    source.address = [&panel] { return bandText(panel.busAddress()); };
    source.on = &panel.OptVCC[0];
    source.off = &panel.OptVCC[1];
    source.level = &panel.CboVCC;
    source.volts = &panel.lblVCCVolts;
    source.vcc = &panel.ShpVCCon;
    source.minus = &panel.ShVM;
    source.track = &panel.ChkTrack;
    if (auto* wiper = dynamic_cast<WiperPanel*>(&panel)) {
        source.about = [wiper] {
            const int channels = wiper->wipers.channelCount;
            return QString("%1 · %2 channel%3 · %4 taps")
                .arg(bandText(wiper->busName()))
                .arg(channels)
                .arg(channels == 1 ? "" : "s")
                .arg(wiper->wipers.TapCount);
        };
        source.part = [wiper] { return bandText(wiper->lblProduct.caption()); };
        source.parts = wiper->partEntries();
        source.watched = {&wiper->lblProduct, &wiper->txtDeviceAdr};
        for (auto& option : wiper->OptTaps)
            source.watched.push_back(option.get());
        for (auto& option : wiper->OptChans)
            source.watched.push_back(option.get());
    }
    return source;
}

void Band::openParts() {
    std::vector<ChoicePopup::Choice> choices;
    for (MenuEntry* entry : source_.parts)
        choices.push_back(
            {plainCaption(*entry), {}, refusalOf(*entry), [entry] { (void)entry->userClick(); }, false});
    if (page_ == nullptr) {
        frmStartup& start = *context_.bench.frmStartup.loadedPanel();
        for (const PageRow& row : pageRows())
            if (row.startRow != 0 && std::string_view(row.group) == "Parts")
                choices.push_back(
                    {QString(row.name) + " parts",
                     {},
                     refusalOf(start.cboVRKSelect),
                     [&start, line = row.startRow] { (void)start.cboVRKSelect.userSelect(line); },
                     false});
    }
    auto* popup = new ChoicePopup(*this, "parts", "Type to filter the parts", std::move(choices));
    popup->openAt(part_->mapToGlobal(QPoint(0, part_->height())), dp(360));
}

void Band::openHistory() {
    std::vector<ChoicePopup::Choice> choices;
    const auto& kept = context_.bench.context().results.kept();
    for (auto at = kept.rbegin(); at != kept.rend(); ++at) {
        const QString detail = bandText(at->detail);
        ChoicePopup::Choice line{bandText(at->text) + (detail.isEmpty() ? QString() : "  ·  " + detail),
                                 clockText(at->time),
                                 {},
                                 {},
                                 !at->good};
        const QString field = QString::fromStdString(at->field);
        line.act = [this, field] {
            if (!field.isEmpty() && onJump)
                onJump(field);
        };
        choices.push_back(std::move(line));
    }
    auto* popup = new ChoicePopup(*this, "history", "Type to filter the results", std::move(choices));
    popup->openAt(resultCell_->mapToGlobal(QPoint(0, resultCell_->height())),
                  std::max(dp(420), resultCell_->width()));
}

} // namespace vrk
