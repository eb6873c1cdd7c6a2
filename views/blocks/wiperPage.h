#pragma once

#include "platform/qt/layout.h"

#include <QString>

#include <vector>

class QLayout;
class QWidget;

namespace vrk {

class ChannelPlot;
class Control;
class Frame;
class PageUi;
class Section;
class WiperPanel;

/// What the pages of the bus panels have alike.

/// The menu "Device Select".
void addPartMenu(PageUi& page, WiperPanel& panel);
/// The head's buttons and the key for reading all channels. \param plot nothing sweeps before it is there.
void addWiperHead(PageUi& page, WiperPanel& panel, ChannelPlot* plot);
/// The part chosen stands in the heading of the set-up section.
void showPart(PageUi& page, Section& section, WiperPanel& panel);
/// What the band shows and works on.
void setWiperBand(PageUi& page, WiperPanel& panel, const std::vector<Control*>& alsoWatched = {});
/// Address and data size, side by side.
qt::Item sizeRow(PageUi& page, WiperPanel& panel);
/// A group of the panel without a title of its own: its section's heading says it.
QWidget* untitled(PageUi& page, Frame& frame, QLayout* content);
/// The quad parts' way to their panel of instructions.
void addQuadSection(PageUi& page, WiperPanel& panel, const QString& title);

} // namespace vrk
