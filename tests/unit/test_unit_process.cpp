#include "support/unitprocess.h"
#include "unit/media_samples.h"
#include "unit/unitfakes.h"

#include <gmock/gmock.h>
#include <grpcpp/create_channel.h>
#include <grpcpp/security/credentials.h>
#include <zorvic/enums.h>
#include <zorvic/v1/unit.grpc.pb.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <regex>
#include <string>
#include <thread>
#include <vector>

using testing::HasSubstr;
using zorvic::v1::Preset;

namespace {

constexpr std::chrono::seconds Watchdog(60);

/// A unit as a process of its own, and a console's commands to it.
class Unit : public UnitProcess {
public:
    explicit Unit(const std::string& directory)
        : UnitProcess(directory + "/store", {"--drive", "E=" + directory + "/drive", "--announce", "off"}) {
        Connect();
    }
    void Connect() {
        grpc::ChannelArguments arguments;
        arguments.SetInt(GRPC_ARG_USE_LOCAL_SUBCHANNEL_POOL, 1);
        Stub =
            zorvic::v1::Unit::NewStub(grpc::CreateCustomChannel(Host(), grpc::InsecureChannelCredentials(), arguments));
    }
    grpc::Status Create(const Preset& preset) {
        return Send(&Service::CreatePreset, [&](auto& request) { *request.mutable_preset() = preset; });
    }
    grpc::Status Take(std::int32_t pk) {
        return Send(&Service::Take, [&](auto& request) { request.set_pk(pk); });
    }
    grpc::Status DeleteAsset(const std::string& path) {
        return Send(&Service::DeleteAsset, [&](auto& request) { request.set_path(path); });
    }
    grpc::Status Install(const std::string& path) {
        return Send(&Service::InstallAsset, [&](auto& request) { request.set_path(path); });
    }
    grpc::Status Power(zorvic::v1::PowerAction action) {
        return Send(&Service::Power, [&](auto& request) { request.set_action(action); });
    }

    using Service = zorvic::v1::Unit::Stub;
    std::unique_ptr<Service> Stub;

private:
    template <typename Request, typename Fill>
    grpc::Status Send(grpc::Status (Service::*command)(grpc::ClientContext*, const Request&, zorvic::v1::CommandReply*),
                      const Fill& fill) {
        grpc::ClientContext context;
        context.set_deadline(std::chrono::system_clock::now() + Watchdog);
        Request request;
        fill(request);
        zorvic::v1::CommandReply reply;
        return (Stub.get()->*command)(&context, request, &reply);
    }
};

/// A console that watches.
class Watcher : public ConsoleCopy {
public:
    explicit Watcher(Unit& unit) {
        Context.set_deadline(std::chrono::system_clock::now() + Watchdog);
        Stream = unit.Stub->Watch(&Context, {});
    }
    ~Watcher() { Context.TryCancel(); }

    /// Reads one frame; false when the stream is over.
    bool Read() {
        if (!Stream->Read(&Last)) return false;
        for (const std::string& bytes : Last.pieces())
            Apply(bytes);
        return true;
    }
    template <typename Condition>
    void ReadUntil(const Condition& condition) {
        while (!condition())
            ASSERT_TRUE(Read());
    }
    void ReadSnapshot() {
        do {
            ASSERT_TRUE(Read());
            EXPECT_TRUE(Last.snapshot());
        } while (Last.more());
    }
    void ReadUntilStatus(const std::string& path, int status) {
        ReadUntil([&] { return Assets[path].status() == status; });
    }
    grpc::Status ReadToEnd() {
        while (Read()) {
        }
        return Stream->Finish();
    }

private:
    zorvic::v1::Frame Last;
    grpc::ClientContext Context;
    std::unique_ptr<grpc::ClientReader<zorvic::v1::Frame>> Stream;
};

class UnitProcessTest : public ::testing::Test {
protected:
    /// Exit status of a unit that ends by itself; what it wrote is in Output.
    int RunToEnd(std::vector<std::string> options) {
        options.insert(options.begin(), ZORVIC_UNIT_PROGRAM);
        const std::string file = Directory.Path() + "/output";
        const auto status = ChildProcess(options, file).Wait(Watchdog);
        Output = ReadFile(file);
        return status.value_or(-1);
    }
    std::string Log() const { return ReadFile(Directory.Path() + "/store.log"); }
    /// How often the unit has said that it listens.
    std::ptrdiff_t Starts() const {
        const std::string log = Log();
        const std::regex line("listening on ");
        return std::distance(std::sregex_iterator(log.begin(), log.end(), line), std::sregex_iterator());
    }

    TemporaryDirectory Directory;
    const std::string Store = "--store=" + Directory.Path() + "/store";
    const std::filesystem::path Assets = Directory.Path() + "/store/Assets";
    const std::filesystem::path Drive = Directory.Path() + "/drive";
    const std::string Clip = "C:\\Assets\\clip.wav";
    std::string Output;
};

TEST_F(UnitProcessTest, BadOptionsAreNamedAndEndWithTwo) {
    const std::string longName = "--nickname=" + std::string(257, 'x');
    for (const std::string option :
         {"--port=65536", "--port=x", "--listen=nonsense", "--listen=0.0.0.0", "--tls-dir=/tmp", "--role=boss",
          "--type=x", "--video-mode=480p", "--refresh=61", "--drive=C=/media", "--drive=e=/media",
          "--drive=E=", "--nickname=\xFF\xFE", longName.c_str(), "--nonsense"}) {
        EXPECT_EQ(RunToEnd({Store, option}), 2) << option;
        EXPECT_THAT(Output, HasSubstr(option.substr(0, option.find('='))));
    }
    EXPECT_EQ(RunToEnd({Store, "--drive=E=/media", "--drive=E=/srv"}), 2);
    EXPECT_EQ(RunToEnd({}), 2);
    EXPECT_THAT(Output, HasSubstr("--store"));
}

TEST_F(UnitProcessTest, ATakenPortAndAnUnusableStoreEndWithOneAndAReason) {
    const Unit unit(Directory.Path());
    const std::string port = unit.Host().substr(unit.Host().rfind(':') + 1);
    const std::vector<std::array<std::string, 3>> cases = {
        {"--store=" + Directory.Path() + "/other", "--port=" + port, "the port is taken"},
        {Store, "--port=0", "in use by another unit"},
        {"--store=/dev/null/x", "--port=0", "/dev/null/x"}};
    for (const auto& [store, listen, reason] : cases) {
        EXPECT_EQ(RunToEnd({store, listen, "--announce=off"}), 1);
        EXPECT_THAT(Output, HasSubstr(reason));
    }
}

TEST_F(UnitProcessTest, AnEndingSignalEndsSessionsAndTheProcess) {
    for (const int signal : {SIGTERM, SIGINT}) {
        Unit unit(Directory.Path());
        Watcher watcher(unit);
        watcher.ReadSnapshot();
        unit.Process().Signal(signal);
        EXPECT_EQ(watcher.ReadToEnd().error_code(), grpc::StatusCode::UNAVAILABLE);
        EXPECT_EQ(unit.Process().Wait(Watchdog), 0);
    }
}

TEST_F(UnitProcessTest, FailuresReachTheWireAsTheirStatus) {
    Unit unit(Directory.Path());
    EXPECT_EQ(unit.Take(1).error_code(), grpc::StatusCode::NOT_FOUND);
    EXPECT_EQ(unit.Power(zorvic::v1::POWER_ACTION_UNSPECIFIED).error_code(), grpc::StatusCode::INVALID_ARGUMENT);
    auto preset = PresetWith(0, "a");
    preset.add_volume(70'000);
    EXPECT_EQ(unit.Create(preset).error_code(), grpc::StatusCode::INVALID_ARGUMENT);
    EXPECT_EQ(unit.DeleteAsset("C:\\Assets\\a\nforged").error_code(), grpc::StatusCode::INVALID_ARGUMENT);
    EXPECT_THAT(Log(), HasSubstr("create preset: a volume of 70000"));
    EXPECT_THAT(Log(), HasSubstr("delete asset C:\\Assets\\a?forged"));
}

TEST_F(UnitProcessTest, PlaysAFileOfItsStoreAndKeepsItUntilASoftReboot) {
    std::filesystem::create_directories(Assets);
    ZorvicUnit::WriteFile(Assets / "clip.wav", ZorvicUnit::ToneFile());
    Unit unit(Directory.Path());
    auto preset = PresetWith(0, Clip);
    preset.set_loop(-1);
    ASSERT_TRUE(unit.Create(preset).ok());
    Watcher watcher(unit);
    watcher.ReadUntil([&] { return watcher.States[1].trt() == 1'000; });
    ASSERT_TRUE(unit.Take(1).ok());
    watcher.ReadUntil([&] { return watcher.States[1].current_loop() > 1; });
    const auto& codes = watcher.TimeCodes.timecodes();
    watcher.ReadUntil([&] { return !codes.empty() && codes[0].levels(0) > 0 && codes[0].levels(1) > 0; });
    EXPECT_EQ(unit.DeleteAsset(Clip).error_code(), grpc::StatusCode::FAILED_PRECONDITION);
    EXPECT_TRUE(unit.Power(zorvic::v1::POWER_ACTION_SOFT_REBOOT).ok());
    EXPECT_EQ(watcher.ReadToEnd().error_code(), grpc::StatusCode::UNAVAILABLE);
    EXPECT_TRUE(unit.DeleteAsset(Clip).ok()) << "playback has ended, and the unit serves on";
    EXPECT_FALSE(std::filesystem::exists(Assets / "clip.wav"));
}

TEST_F(UnitProcessTest, RebootComesBackOnItsPortAndShutdownDoesNot) {
    Unit unit(Directory.Path());
    ASSERT_TRUE(unit.Create(PresetWith(0, "a")).ok());
    for (const int starts : {2, 3}) {
        ASSERT_TRUE(unit.Power(zorvic::v1::POWER_ACTION_REBOOT).ok());
        ASSERT_TRUE(WaitUntil([&] { return Starts() == starts; }, Watchdog));
        unit.Connect();
        Watcher watcher(unit);
        watcher.ReadSnapshot();
        EXPECT_EQ(watcher.Presets.size(), 1U);
    }
    EXPECT_TRUE(unit.Power(zorvic::v1::POWER_ACTION_SHUTDOWN).ok());
    EXPECT_EQ(unit.Process().Wait(Watchdog), 0);
}

TEST_F(UnitProcessTest, ConsolesThatDoNotReadHoldUpNobody) {
    Unit unit(Directory.Path());
    std::vector<std::unique_ptr<Watcher>> stuck(40);
    for (auto& watcher : stuck)
        watcher = std::make_unique<Watcher>(unit);
    auto preset = PresetWith(0, "a");
    preset.set_notes(std::string(60'000, 'n'));
    for (int number = 0; number < 50; ++number)
        ASSERT_TRUE(unit.Create(preset).ok());
    Watcher reading(unit);
    reading.ReadSnapshot();
    EXPECT_EQ(reading.Presets.size(), 50U);
    stuck.back()->ReadUntil([&] { return stuck.back()->Presets.size() == 50; });
}

// Killed at any instant of a save, the unit comes back with every preset that it acknowledged, and with nothing half.
TEST_F(UnitProcessTest, KeepsEveryAcknowledgedPresetThroughKills) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::size_t acknowledged = 0;
    std::size_t sent = 0;
    for (int round = 0; round < 8; ++round) {
        Unit unit(Directory.Path());
        Watcher watcher(unit);
        watcher.ReadSnapshot();
        EXPECT_GE(watcher.Presets.size(), acknowledged);
        EXPECT_LE(watcher.Presets.size(), sent);
        for (const auto& [pk, preset] : watcher.Presets)
            EXPECT_EQ(preset.notes(), std::string(2'000, 'n'));
        acknowledged = sent = watcher.Presets.size();
        auto preset = PresetWith(0, "a");
        preset.set_notes(std::string(2'000, 'n'));
        const auto lifetime = std::chrono::milliseconds(random() % 200);
        std::jthread killer([&] {
            std::this_thread::sleep_for(lifetime);
            unit.Process().Signal(SIGKILL);
        });
        for (++sent; unit.Create(preset).ok(); ++sent)
            ++acknowledged;
        killer.join();
        EXPECT_EQ(unit.Process().Wait(Watchdog), 128 + SIGKILL);
    }
    EXPECT_GT(acknowledged, 0U);
}

/// A unit that imports from its drive.
class ImportingUnitTest : public UnitProcessTest {
protected:
    ImportingUnitTest() {
        std::filesystem::create_directories(Assets);
        std::filesystem::create_directories(Drive);
    }
    std::vector<std::string> FilesInStore() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(Assets))
            names.push_back(entry.path().filename());
        return names;
    }
};

TEST_F(ImportingUnitTest, AKilledImportLeavesTheOldFileAndNothingOfTheNew) {
    // What takes long to copy is a file with a hole: it takes room only in the store.
    constexpr std::uint32_t Size = 290'000'000;
    ZorvicUnit::WriteFile(Drive / "clip.wav", ZorvicUnit::WaveHead(Size - 44));
    std::filesystem::resize_file(Drive / "clip.wav", Size);
    ZorvicUnit::WriteFile(Drive / "next.wav", ZorvicUnit::ToneFile());
    ZorvicUnit::WriteFile(Assets / "foreign.part", "somebody else's");
    ZorvicUnit::WriteFile(Assets / "clip.wav", ZorvicUnit::ToneFile());
    // Older than what the unit would wait for to rest.
    const auto old = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
    std::filesystem::last_write_time(Assets / "clip.wav", old);
    {
        Unit unit(Directory.Path());
        Watcher watcher(unit);
        watcher.ReadUntilStatus(Clip, Zorvic::ZORVIC_ASSETSTATE_READY);
        for (const char* path : {"E:\\clip.wav", "E:\\next.wav"})
            ASSERT_TRUE(unit.Install(path).ok());
        watcher.ReadUntilStatus(Clip, Zorvic::ZORVIC_ASSETSTATE_INGESTING);
        watcher.ReadUntil([&] { return watcher.Assets[Clip].current_size() > 0; });
        ASSERT_TRUE(unit.Create(PresetWith(0, Clip)).ok());
        ASSERT_LT(watcher.Assets[Clip].current_size(), Size);
        unit.Process().Signal(SIGKILL);
        ASSERT_EQ(unit.Process().Wait(Watchdog), 128 + SIGKILL);
    }
    EXPECT_EQ(FilesInStore().size(), 3U) << "it was not killed in the middle of a copy";
    Unit unit(Directory.Path());
    Watcher watcher(unit);
    watcher.ReadSnapshot();
    EXPECT_EQ(watcher.Presets.size(), 1U);
    EXPECT_EQ(watcher.Assets.size(), 1U);
    watcher.ReadUntilStatus(Clip, Zorvic::ZORVIC_ASSETSTATE_READY);
    EXPECT_EQ(ReadFile(Assets / "clip.wav"), ZorvicUnit::ToneFile());
    EXPECT_THAT(FilesInStore(), testing::UnorderedElementsAre("clip.wav", "foreign.part"));
    ASSERT_TRUE(unit.Install("E:\\clip.wav").ok());
    watcher.ReadUntil([&] { return watcher.Assets[Clip].total_size() == Size; });
    watcher.ReadUntilStatus(Clip, Zorvic::ZORVIC_ASSETSTATE_READY);
}

TEST_F(ImportingUnitTest, AFullDiskFailsWhatNeedsRoomAndTheUnitLives) {
    ZorvicUnit::WriteFile(Drive / "large.wav", ZorvicUnit::ToneFile() + std::string(5'000'000, '\0'));
    ZorvicUnit::WriteFile(Drive / "clip.wav", ZorvicUnit::ToneFile());
    std::size_t saved = 0;
    {
        std::optional<FileSizeLimit> inherited(4'000'000);
        Unit unit(Directory.Path());
        inherited.reset();
        Watcher watcher(unit);
        watcher.ReadSnapshot();
        const std::string large = "C:\\Assets\\large.wav";
        ASSERT_TRUE(unit.Install("E:\\large.wav").ok());
        ASSERT_TRUE(unit.Install("E:\\clip.wav").ok());
        watcher.ReadUntilStatus(large, Zorvic::ZORVIC_ASSETSTATE_ERROR);
        EXPECT_EQ(watcher.Assets[large].current_size(), watcher.Assets[large].total_size());
        // A scan may have shown it before the line is written.
        EXPECT_TRUE(WaitUntil([&] { return Log().find("importing " + large + " from") != std::string::npos; }));
        watcher.ReadUntilStatus(Clip, Zorvic::ZORVIC_ASSETSTATE_READY);
        EXPECT_THAT(FilesInStore(), testing::ElementsAre("clip.wav"));

        auto preset = PresetWith(0, Clip);
        preset.set_notes(std::string(60'000, 'n'));
        grpc::Status answer;
        while (saved < 1'000 && (answer = unit.Create(preset)).ok())
            ++saved;
        EXPECT_EQ(answer.error_code(), grpc::StatusCode::RESOURCE_EXHAUSTED) << answer.error_message();
        EXPECT_TRUE(unit.Take(1).ok()) << "the show goes on";
        EXPECT_TRUE(unit.Process().Running());
    }
    Unit unit(Directory.Path());
    Watcher watcher(unit);
    watcher.ReadSnapshot();
    EXPECT_GT(saved, 0U);
    EXPECT_EQ(watcher.Presets.size(), saved);
}

}  // namespace
