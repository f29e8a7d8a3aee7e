#pragma once

#include "support/unitprocess.h"

#include <gtest/gtest.h>

#include <zorvic/zorvic.h>

#include <filesystem>

/// A real unit that holds a clip, and a session that tells what it holds without any console.
class UnitWithClip {
public:
    explicit UnitWithClip(const std::vector<std::string>& options = {"--announce", "off"}, int clipSeconds = 3) {
        std::filesystem::create_directories(Directory.Path() + "/store/Assets");
        MakeClip(Directory.Path() + "/store/Assets/clip.mov", clipSeconds);
        Process = std::make_unique<UnitProcess>(Directory.Path() + "/store", options);
        Observer = std::make_unique<Zorvic::Session>(Process->Host(), 1);
        EXPECT_TRUE(Observer->Connected());
    }

    /// The one record of this kind; an empty one when there is none or several.
    template <typename Record>
    Record Only(Zorvic::StatusCode (Zorvic::Session::*read)(std::vector<Record>&)) const {
        std::vector<Record> records;
        EXPECT_EQ(((*Observer).*read)(records), Zorvic::ZORVIC_STATUS_OK);
        return records.size() == 1 ? records.front() : Record();
    }
    Zorvic::Preset Preset() const { return Only(&Zorvic::Session::GetPresets); }
    Zorvic::PresetState State() const { return Only(&Zorvic::Session::GetPresetStates); }
    bool ClipReady() const { return Only(&Zorvic::Session::GetAssets).Status == Zorvic::ZORVIC_ASSETSTATE_READY; }

    TemporaryDirectory Directory;
    std::unique_ptr<UnitProcess> Process;
    std::unique_ptr<Zorvic::Session> Observer;
};
