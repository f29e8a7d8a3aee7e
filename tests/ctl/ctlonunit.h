#pragma once

#include "e2e/unitwithclip.h"
#include "support/clippreset.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

/// What one start of zorvicctl came to.
struct CtlResult {
    int Status = -1;
    std::string Text;

    nlohmann::json Json() const { return nlohmann::json::parse(Text, nullptr, false); }
};

/// Without a terminal, as a script starts it.
inline CtlResult Ctl(std::vector<std::string> arguments) {
    const TemporaryDirectory directory;
    const std::string output = directory.Path() + "/output";
    arguments.insert(arguments.begin(), {"env", "ZORVIC_DISCOVERY=off", ZORVIC_CTL_PROGRAM});
    ChildProcess program(arguments, output);
    const int status = program.Wait(std::chrono::seconds(60)).value_or(-1);
    return {status, ReadFile(output)};
}

/// A unit with a clip and presets of it.
struct CtlOnUnit : testing::Test {
    CtlOnUnit() {
        EXPECT_TRUE(WaitUntil([this] { return Unit.ClipReady(); }));
        for (const char* name : {"Overture", "Storm", "Twin", "Twin"})
            EXPECT_EQ(Unit.Observer->CreatePreset(ClipPreset(name)), Zorvic::ZORVIC_STATUS_OK);
    }
    Zorvic::PresetState State(int pk) const {
        std::vector<Zorvic::PresetState> states;
        Unit.Observer->GetPresetStates(states);
        return states.at(static_cast<std::size_t>(pk - 1));
    }

    TemporaryDirectory Drive;
    UnitWithClip Unit{{"--announce", "off", "--nickname", "Stage", "--drive", "E=" + Drive.Path()}, 60};
    const std::string Host = Unit.Process->Host();
};
