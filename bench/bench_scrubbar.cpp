#include "playheadwidget.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QMouseEvent>

namespace {

constexpr int TRT = 600000;

/// One repaint of the bar on the raster engine: 20 of them per second and tab while presets play.
void BenchScrubBarRepaint(benchmark::State& state) {
    const bool hovered = state.range(0) != 0;
    PlayHeadWidget bar(nullptr);
    bar.resize(1200, 40);
    bar.SetTRT(TRT);
    bar.SetTrim(TRT - 20000, 30000);
    bar.SetShowPlayHead(true);
    if (hovered) {
        QMouseEvent move(QEvent::MouseMove, QPointF(700, 30), QPointF(700, 30), Qt::NoButton, Qt::NoButton,
                         Qt::NoModifier);
        QApplication::sendEvent(&bar, &move);
    }
    QImage image(bar.size(), QImage::Format_ARGB32_Premultiplied);
    int remaining = TRT;
    for (auto _ : state) {
        remaining = remaining > 50 ? remaining - 50 : TRT;
        bar.SetBaseTimes(TRT, remaining);
        bar.render(&image, {}, {}, QWidget::DrawChildren);
    }
}
BENCHMARK(BenchScrubBarRepaint)->ArgName("hovered")->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
