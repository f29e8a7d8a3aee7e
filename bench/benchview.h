#pragma once

#include "sessionmanager.h"
#include "style.h"
#include "support/clippreset.h"
#include "support/fakezorvic.h"
#include "zorvicview.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QHeaderView>
#include <QTreeWidget>

#include <fstream>
#include <iostream>
#include <memory>
#include <string>

/// A visible unit view on a scripted unit with `count` presets, the first of them selected.
class BenchView {
public:
    explicit BenchView(int count) {
        for (int i = 0; i < count; ++i) {
            Zorvic::Preset preset = ClipPreset("Preset number " + std::to_string(i));
            preset.Notes = i % 3 == 0 ? "wait for the call" : "";
            preset.Volume.assign(16, 65535);
            Unit.AddPreset(preset, 90000);
        }
        Unit.States[0].IsSelected = true;
        delete Sessions.CreateSessionByIP("host");
        View = std::make_unique<ZorvicView>("guid", "host");
        View->AcceptPresetStates();
        View->resize(1280, 720);
        View->show();
        QApplication::processEvents();
    }

    /// As the pump does it, up to the end of the repaint, fetches included.
    void Refresh(Zorvic::StateEventType type) const {
        View->SetViewUpdateFlag(type);
        View->ProcessViewUpdateFlags();
        QApplication::processEvents();
    }

    FakeZorvic::Unit& Unit = (FakeZorvic::Reset(), FakeZorvic::AddUnit("host", "guid"));
    SessionManager Sessions;
    std::unique_ptr<ZorvicView> View;
};

/// What a list is measured against: a bare tree with the same cells, columns and resize modes. Precision 1000 is Qt's
/// default (rows measured for a column's width), 0 measures the visible rows only.
inline void RunBareTree(benchmark::State& state, const QTreeWidget& filled, int precision) {
    QTreeWidget tree;
    tree.setColumnCount(filled.columnCount());
    for (int column = 0; column < filled.columnCount(); ++column)
        tree.header()->setSectionResizeMode(column, filled.header()->sectionResizeMode(column));
    tree.header()->setResizeContentsPrecision(precision);
    tree.header()->setStretchLastSection(false);
    tree.resize(filled.size());
    tree.show();
    for (auto _ : state) {
        tree.setUpdatesEnabled(false);
        tree.clear();
        for (int row = 0; row < filled.topLevelItemCount(); ++row) {
            QStringList texts;
            for (int column = 0; column < filled.columnCount(); ++column)
                texts << filled.topLevelItem(row)->text(column);
            tree.addTopLevelItem(new QTreeWidgetItem(texts));
        }
        tree.setUpdatesEnabled(true);
        QApplication::processEvents();
    }
}

/// Reports the most memory that the process had resident since this was made.
class PeakMemory {
public:
    explicit PeakMemory(benchmark::State& state) : State(state) {
        std::ofstream("/proc/self/clear_refs") << 5;  // starts the peak anew
    }
    ~PeakMemory() {
        std::ifstream status("/proc/self/status");
        for (std::string word; status >> word;) {
            double kibibytes = 0;
            if (word == "VmHWM:" && status >> kibibytes) State.counters["peak_MiB"] = kibibytes / 1024;
        }
    }
    PeakMemory(const PeakMemory&) = delete;
    PeakMemory& operator=(const PeakMemory&) = delete;

private:
    benchmark::State& State;
};

/// Runs the program's benchmarks in the console's own look, on the offscreen platform unless another one is chosen.
inline int RunViewBenchmarks(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    std::cerr.rdbuf(nullptr);  // log lines would be measured with the rest
    QApplication application(argc, argv);
    TryLoadStyle(application);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
