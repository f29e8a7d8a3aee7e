#include "benchview.h"

#include <QHeaderView>
#include <QTreeWidget>

namespace {

constexpr int Count = 1000;

/// What the list is measured against: a bare tree that measures every row for its column widths.
void BenchBareTree(benchmark::State& state) {
    QTreeWidget tree;
    tree.setColumnCount(8);
    tree.header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    tree.resize(800, 400);
    tree.show();
    for (auto _ : state) {
        tree.setUpdatesEnabled(false);
        tree.clear();
        for (int i = 0; i < Count; ++i) {
            const QString number = QString::number(i);
            const QString time = QStringLiteral("00:01:30");
            new QTreeWidgetItem(&tree, {QString(), number, number, number, time, time, number, QString()});
        }
        QApplication::processEvents();
        tree.setUpdatesEnabled(true);
    }
}
BENCHMARK(BenchBareTree)->Unit(benchmark::kMillisecond);

void BenchAcceptPresets(benchmark::State& state) {
    const BenchView bench(Count);
    const auto presets = bench.Unit.Presets;
    for (auto _ : state) {
        bench.View->AcceptPresets(presets);
    }
}
BENCHMARK(BenchAcceptPresets)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    return RunViewBenchmarks(argc, argv);
}
