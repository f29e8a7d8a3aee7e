#include "benchview.h"

#include <QHeaderView>
#include <QTreeWidget>

namespace {

/// What the list is measured against: a bare tree with the same cells, columns and resize modes. Precision 1000 is Qt's
/// default (rows measured for a column's width), 0 measures the visible rows only.
void BenchBareTree(benchmark::State& state) {
    const BenchView bench(static_cast<int>(state.range(1)));
    const auto* const filled = bench.View->findChild<QTreeWidget*>(QStringLiteral("PresetsView"));
    QTreeWidget tree;
    tree.setColumnCount(filled->columnCount());
    for (int column = 0; column < filled->columnCount(); ++column)
        tree.header()->setSectionResizeMode(column, filled->header()->sectionResizeMode(column));
    tree.header()->setResizeContentsPrecision(static_cast<int>(state.range(0)));
    tree.header()->setStretchLastSection(false);
    tree.resize(filled->size());
    tree.show();
    for (auto _ : state) {
        tree.setUpdatesEnabled(false);
        tree.clear();
        for (int row = 0; row < filled->topLevelItemCount(); ++row) {
            QStringList texts;
            for (int column = 0; column < filled->columnCount(); ++column)
                texts << filled->topLevelItem(row)->text(column);
            tree.addTopLevelItem(new QTreeWidgetItem(texts));
        }
        tree.setUpdatesEnabled(true);
        QApplication::processEvents();
    }
}
BENCHMARK(BenchBareTree)
    ->ArgNames({"precision", "presets"})
    ->ArgsProduct({{1000, 0}, {1000, 10000}})
    ->Unit(benchmark::kMillisecond);

/// As the pump does it, up to the end of the repaint, fetches included; nothing is selected, so no other pane follows.
void BenchAcceptPresets(benchmark::State& state) {
    BenchView bench(static_cast<int>(state.range(0)));
    bench.Unit.States[0].IsSelected = false;
    for (auto _ : state) {
        bench.View->SetViewUpdateFlag(Zorvic::ZORVIC_STATE_PRESETS);
        bench.View->ProcessViewUpdateFlags();
        QApplication::processEvents();
    }
}
BENCHMARK(BenchAcceptPresets)->ArgName("presets")->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

/// What the other panes cost: one preset of four canvases, selected, whose placement differs from round to round.
void BenchShowSelectedPreset(benchmark::State& state) {
    BenchView bench(1);
    auto& canvases = bench.Unit.Presets[0].Canvases;
    canvases.resize(4, canvases[0]);
    for (std::uint32_t index = 0; index < 4; ++index)
        canvases[index].Index = index;
    for (auto _ : state) {
        canvases[0].Assets[0].PinnedCoords.X ^= 1;
        bench.View->SetViewUpdateFlag(Zorvic::ZORVIC_STATE_PRESETS);
        bench.View->ProcessViewUpdateFlags();
        QApplication::processEvents();
    }
}
BENCHMARK(BenchShowSelectedPreset)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    return RunViewBenchmarks(argc, argv);
}
