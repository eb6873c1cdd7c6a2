#include "views/pages/runInPicture.h"

#include "platform/qt/theme.h"
#include "views/plot/Plot.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace vrk {

namespace {
constexpr std::size_t kMostPoints = 40000;
constexpr std::size_t kMostFails = 4000;
} // namespace

RunInPicture::RunInPicture() : plot_(new Plot("Error over steps")) {
    plot_->setObjectName("drift");
    plot_->setMinimumHeight(qt::dp(120));
    PlotModel& model = plot_->model();
    model.x = {.title = "Steps; band: limit, crosses: fails", .unit = "steps", .decimals = 0};
    model.emptyWords = "No step has been judged yet. Run Test starts a run.";
    PlotPane pane;
    pane.y = {.title = "Error, V", .unit = "V", .decimals = 4, .from = -0.01, .to = 0.01, .sign = true};
    pane.series.push_back({});
    model.panes = {pane};
}

void RunInPicture::begin(int end) {
    PlotModel& model = plot_->model();
    model.panes[0].series[0].points.clear();
    model.panes[0].fails.clear();
    model.panes[0].limits.reset();
    model.resumed.clear();
    model.x.from = 0;
    model.x.to = std::max(1, end);
    plot_->showAll();
    plot_->changed();
}

void RunInPicture::setLimit(double volts) {
    PlotPane& pane = plot_->model().panes[0];
    if (volts > 0) {
        pane.limits = {-volts, volts};
        pane.y.from = -1.4 * volts;
        pane.y.to = 1.4 * volts;
    } else {
        pane.limits.reset();
    }
    plot_->changed();
}

void RunInPicture::add(int step, double error, bool fail) {
    PlotModel& model = plot_->model();
    PlotPane& pane = model.panes[0];
    pane.series[0].points.emplace_back(step, error);
    if (fail)
        pane.fails.emplace_back(step, error);
    model.x.to = std::max(model.x.to, static_cast<double>(step));
    if (!model.resumed.empty())
        model.resumed.back().second = step;
    if (pane.series[0].points.size() > kMostPoints || pane.fails.size() > kMostFails)
        thin();
    plot_->changed();
}

void RunInPicture::addResumed(int from) {
    plot_->model().resumed.emplace_back(from, from);
    plot_->changed();
}

void RunInPicture::thin() {
    PlotPane& pane = plot_->model().panes[0];
    auto& points = pane.series[0].points;
    if (points.size() > kMostPoints) {
        std::vector<QPointF> kept;
        const auto lower = [](const QPointF& a, const QPointF& b) { return a.y() < b.y(); };
        for (auto at = points.begin(); at != points.end();) {
            const auto end = at + std::min<std::ptrdiff_t>(4, points.end() - at);
            auto [least, greatest] = std::minmax_element(at, end, lower);
            if (greatest < least)
                std::swap(least, greatest); // the points stay in the order of their steps
            kept.push_back(*least);
            if (greatest != least)
                kept.push_back(*greatest);
            at = end;
        }
        points = std::move(kept);
    }
    if (pane.fails.size() > kMostFails) {
        std::size_t kept = 0;
        for (std::size_t at = 0; at < pane.fails.size(); at += 2)
            pane.fails[kept++] = pane.fails[at];
        pane.fails.resize(kept);
    }
}

} // namespace vrk
