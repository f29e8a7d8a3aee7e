#include "support/childprocess.h"
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
using zorvic::v1::CommandReply;
using zorvic::v1::Preset;

namespace {

constexpr std::chrono::seconds Watchdog(60);

/// A unit as a process of its own, and a console's connection to it.
class UnitProcess {
public:
    /// `launcher` is a command that starts the unit given after it.
    explicit UnitProcess(const std::string& directory, std::vector<std::string> launcher = {})
        : Log(directory + "/log" + std::to_string(++Started)), Process(Command(directory, std::move(launcher)), Log) {
        Connect(1);
    }
    /// Waits until the unit has said that it listens this many times.
    void Connect(std::ptrdiff_t times) {
        std::string address;
        ASSERT_TRUE(WaitUntil([&] { return !(address = Address(times)).empty(); }, Watchdog)) << ReadFile(Log);
        grpc::ChannelArguments arguments;
        arguments.SetInt(GRPC_ARG_USE_LOCAL_SUBCHANNEL_POOL, 1);
        Channel = grpc::CreateCustomChannel(address, grpc::InsecureChannelCredentials(), arguments);
        Stub = zorvic::v1::Unit::NewStub(Channel);
    }
    std::string Address(std::ptrdiff_t times) const {
        const std::string log = ReadFile(Log);
        const std::regex ready("listening on (\\S+)\n");
        const std::sregex_iterator begin(log.begin(), log.end(), ready), end;
        return std::distance(begin, end) < times ? std::string() : (*std::next(begin, times - 1))[1].str();
    }
    template <typename Request>
    grpc::Status Send(grpc::Status (zorvic::v1::Unit::Stub::*command)(grpc::ClientContext*, const Request&,
                                                                      CommandReply*),
                      const Request& request) {
        grpc::ClientContext context;
        context.set_deadline(std::chrono::system_clock::now() + Watchdog);
        CommandReply reply;
        return (Stub.get()->*command)(&context, request, &reply);
    }
    grpc::Status Create(const Preset& preset) {
        zorvic::v1::CreatePresetRequest request;
        *request.mutable_preset() = preset;
        return Send(&zorvic::v1::Unit::Stub::CreatePreset, request);
    }
    grpc::Status Take(std::int32_t pk) {
        zorvic::v1::PresetRequest request;
        request.set_pk(pk);
        return Send(&zorvic::v1::Unit::Stub::Take, request);
    }
    grpc::Status DeleteAsset(const std::string& path) {
        return Send(&zorvic::v1::Unit::Stub::DeleteAsset, AssetRequest(path));
    }
    grpc::Status Install(const std::string& path) {
        return Send(&zorvic::v1::Unit::Stub::InstallAsset, AssetRequest(path));
    }
    grpc::Status Power(zorvic::v1::PowerAction action) {
        zorvic::v1::PowerRequest request;
        request.set_action(action);
        return Send(&zorvic::v1::Unit::Stub::Power, request);
    }

    const std::string Log;
    ChildProcess Process;
    std::shared_ptr<grpc::Channel> Channel;
    std::unique_ptr<zorvic::v1::Unit::Stub> Stub;

private:
    static inline int Started = 0;  // each has a log of its own
    static std::vector<std::string> Command(const std::string& directory, std::vector<std::string> words) {
        words.insert(words.end(), {ZORVIC_UNIT_PROGRAM, "--store", directory + "/store", "--drive",
                                   "E=" + directory + "/drive", "--port", "0", "--announce", "off"});
        return words;
    }
    static zorvic::v1::AssetRequest AssetRequest(const std::string& path) {
        zorvic::v1::AssetRequest request;
        request.set_path(path);
        return request;
    }
};

/// A console that watches.
class Watcher : public ConsoleCopy {
public:
    explicit Watcher(UnitProcess& unit) {
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
    void ReadSnapshot() {
        do {
            ASSERT_TRUE(Read());
            EXPECT_TRUE(Last.snapshot());
        } while (Last.more());
    }
    grpc::Status ReadToEnd() {
        while (Read()) {
        }
        return Stream->Finish();
    }

    zorvic::v1::Frame Last;

private:
    grpc::ClientContext Context;
    std::unique_ptr<grpc::ClientReader<zorvic::v1::Frame>> Stream;
};

class UnitProcessTest : public ::testing::Test {
protected:
    /// Exit status of a unit that ends by itself; what it wrote is in Output.
    int RunToEnd(const std::vector<std::string>& options) {
        std::vector<std::string> arguments{ZORVIC_UNIT_PROGRAM};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const std::string file = Directory.Path() + "/output";
        ChildProcess process(arguments, file);
        const auto status = process.Wait(Watchdog);
        Output = ReadFile(file);
        return status.value_or(-1);
    }
    TemporaryDirectory Directory;
    std::string Output;
};

TEST_F(UnitProcessTest, BadOptionsAreNamedAndEndWithTwo) {
    const std::string store = "--store=" + Directory.Path() + "/store";
    const std::string longName = "--nickname=" + std::string(257, 'x');
    for (const char* option : {"--port=65536", "--port=x", "--listen=nonsense", "--listen=0.0.0.0", "--tls-dir=/tmp",
                               "--role=boss", "--type=x", "--video-mode=480p", "--refresh=61", "--drive=C=/media",
                               "--drive=e=/media", "--drive=E=", "--nickname=\xFF\xFE", longName.c_str()}) {
        EXPECT_EQ(RunToEnd({store, option}), 2) << option;
        EXPECT_THAT(Output, HasSubstr(std::string(option).substr(0, std::string(option).find('='))));
    }
    EXPECT_EQ(RunToEnd({store, "--drive=E=/media", "--drive=E=/srv"}), 2);
    EXPECT_EQ(RunToEnd({}), 2);
    EXPECT_THAT(Output, HasSubstr("--store"));
    EXPECT_EQ(RunToEnd({store, "--nonsense"}), 2);
}

TEST_F(UnitProcessTest, ATakenPortAndAnUnusableStoreEndWithOneAndAReason) {
    UnitProcess unit(Directory.Path());
    const std::string address = unit.Address(1);
    const std::string port = address.substr(address.rfind(':') + 1);
    EXPECT_EQ(RunToEnd({"--store", Directory.Path() + "/other", "--port", port, "--announce", "off"}), 1);
    EXPECT_THAT(Output, HasSubstr("the port is taken"));
    EXPECT_EQ(RunToEnd({"--store", Directory.Path() + "/store", "--port", "0", "--announce", "off"}), 1);
    EXPECT_THAT(Output, HasSubstr("in use by another unit"));
    EXPECT_EQ(RunToEnd({"--store", "/dev/null/x", "--port", "0", "--announce", "off"}), 1);
    EXPECT_THAT(Output, HasSubstr("/dev/null/x"));
}

TEST_F(UnitProcessTest, AnEndingSignalEndsSessionsAndTheProcess) {
    for (const int signal : {SIGTERM, SIGINT}) {
        UnitProcess unit(Directory.Path());
        Watcher watcher(unit);
        watcher.ReadSnapshot();
        unit.Process.Signal(signal);
        EXPECT_EQ(watcher.ReadToEnd().error_code(), grpc::StatusCode::UNAVAILABLE);
        EXPECT_EQ(unit.Process.Wait(Watchdog), 0);
    }
}

TEST_F(UnitProcessTest, FailuresReachTheWireAsTheirStatus) {
    UnitProcess unit(Directory.Path());
    EXPECT_EQ(unit.Take(1).error_code(), grpc::StatusCode::NOT_FOUND);
    EXPECT_EQ(unit.Power(zorvic::v1::POWER_ACTION_UNSPECIFIED).error_code(), grpc::StatusCode::INVALID_ARGUMENT);
    auto preset = PresetWith(0, "a");
    preset.add_volume(70'000);
    EXPECT_EQ(unit.Create(preset).error_code(), grpc::StatusCode::INVALID_ARGUMENT);
    EXPECT_EQ(unit.DeleteAsset("C:\\Assets\\a\nforged").error_code(), grpc::StatusCode::INVALID_ARGUMENT);
    EXPECT_THAT(ReadFile(unit.Log), HasSubstr("create preset: a volume of 70000"));
    EXPECT_THAT(ReadFile(unit.Log), HasSubstr("delete asset C:\\Assets\\a?forged"));
}

TEST_F(UnitProcessTest, PlaysAFileOfItsStoreAndKeepsItUntilASoftReboot) {
    const std::string path = "C:\\Assets\\tone.wav";
    std::filesystem::create_directories(Directory.Path() + "/store/Assets");
    std::ofstream(Directory.Path() + "/store/Assets/tone.wav") << ZorvicUnit::ToneFile();
    UnitProcess unit(Directory.Path());
    auto preset = PresetWith(0, path);
    preset.set_loop(-1);
    ASSERT_TRUE(unit.Create(preset).ok());
    Watcher watcher(unit);
    while (watcher.States[1].trt() != 1'000)
        ASSERT_TRUE(watcher.Read());
    ASSERT_TRUE(unit.Take(1).ok());
    const auto loud = [&] {
        const auto& codes = watcher.TimeCodes.timecodes();
        return !codes.empty() && codes[0].levels(0) > 0 && codes[0].levels(1) > 0;
    };
    while (watcher.States[1].current_loop() < 3 || !loud())
        ASSERT_TRUE(watcher.Read());
    EXPECT_EQ(unit.DeleteAsset(path).error_code(), grpc::StatusCode::FAILED_PRECONDITION);
    EXPECT_TRUE(unit.Power(zorvic::v1::POWER_ACTION_SOFT_REBOOT).ok());
    EXPECT_EQ(watcher.ReadToEnd().error_code(), grpc::StatusCode::UNAVAILABLE);
    EXPECT_TRUE(unit.DeleteAsset(path).ok()) << "playback has ended, and the unit serves on";
    EXPECT_FALSE(std::filesystem::exists(Directory.Path() + "/store/Assets/tone.wav"));
}

TEST_F(UnitProcessTest, RebootComesBackOnItsPortAndShutdownDoesNot) {
    UnitProcess unit(Directory.Path());
    ASSERT_TRUE(unit.Create(PresetWith(0, "a")).ok());
    const std::string address = unit.Address(1);
    for (const int times : {2, 3}) {
        ASSERT_TRUE(unit.Power(zorvic::v1::POWER_ACTION_REBOOT).ok());
        unit.Connect(times);
        EXPECT_EQ(unit.Address(times), address);
        Watcher watcher(unit);
        watcher.ReadSnapshot();
        EXPECT_EQ(watcher.Presets.size(), 1U);
    }
    const grpc::Status answer = unit.Power(zorvic::v1::POWER_ACTION_SHUTDOWN);
    EXPECT_TRUE(answer.ok()) << answer.error_message();
    EXPECT_EQ(unit.Process.Wait(Watchdog), 0);
}

TEST_F(UnitProcessTest, ConsolesThatDoNotReadHoldUpNobody) {
    UnitProcess unit(Directory.Path());
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
    while (stuck.back()->Presets.size() < 50)
        ASSERT_TRUE(stuck.back()->Read());
}

// Killed at any instant of a save, the unit comes back with every preset that it acknowledged, and with nothing half.
TEST_F(UnitProcessTest, KeepsEveryAcknowledgedPresetThroughKills) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::size_t acknowledged = 0;
    std::size_t sent = 0;
    for (int round = 0; round < 8; ++round) {
        UnitProcess unit(Directory.Path());
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
            unit.Process.Signal(SIGKILL);
        });
        for (++sent; unit.Create(preset).ok(); ++sent)
            ++acknowledged;
        killer.join();
        EXPECT_EQ(unit.Process.Wait(Watchdog), 128 + SIGKILL);
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
    static void ReadUntilStatus(Watcher& watcher, const std::string& path, int status) {
        while (watcher.Assets[path].status() != status)
            ASSERT_TRUE(watcher.Read());
    }

    const std::filesystem::path Assets = Directory.Path() + "/store/Assets";
    const std::filesystem::path Drive = Directory.Path() + "/drive";
    const std::string Clip = "C:\\Assets\\clip.wav";
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
        UnitProcess unit(Directory.Path());
        Watcher watcher(unit);
        ReadUntilStatus(watcher, Clip, Zorvic::ZORVIC_ASSETSTATE_READY);
        for (const char* path : {"E:\\clip.wav", "E:\\next.wav"})
            ASSERT_TRUE(unit.Install(path).ok());
        ReadUntilStatus(watcher, Clip, Zorvic::ZORVIC_ASSETSTATE_INGESTING);
        while (watcher.Assets[Clip].current_size() == 0)
            ASSERT_TRUE(watcher.Read());
        ASSERT_TRUE(unit.Create(PresetWith(0, Clip)).ok());
        ASSERT_LT(watcher.Assets[Clip].current_size(), Size);
        unit.Process.Signal(SIGKILL);
        ASSERT_EQ(unit.Process.Wait(Watchdog), 128 + SIGKILL);
    }
    EXPECT_EQ(FilesInStore().size(), 3U) << "it was not killed in the middle of a copy";
    UnitProcess unit(Directory.Path());
    Watcher watcher(unit);
    watcher.ReadSnapshot();
    EXPECT_EQ(watcher.Presets.size(), 1U);
    EXPECT_EQ(watcher.Assets.size(), 1U);
    ReadUntilStatus(watcher, Clip, Zorvic::ZORVIC_ASSETSTATE_READY);
    EXPECT_EQ(ReadFile(Assets / "clip.wav"), ZorvicUnit::ToneFile());
    EXPECT_THAT(FilesInStore(), testing::UnorderedElementsAre("clip.wav", "foreign.part"));
    ASSERT_TRUE(unit.Install("E:\\clip.wav").ok());
    while (watcher.Assets[Clip].status() != Zorvic::ZORVIC_ASSETSTATE_READY ||
           watcher.Assets[Clip].total_size() != Size)
        ASSERT_TRUE(watcher.Read());
}

TEST_F(ImportingUnitTest, AFullDiskFailsWhatNeedsRoomAndTheUnitLives) {
    ZorvicUnit::WriteFile(Drive / "large.wav", ZorvicUnit::ToneFile() + std::string(5'000'000, '\0'));
    ZorvicUnit::WriteFile(Drive / "clip.wav", ZorvicUnit::ToneFile());
    std::size_t saved = 0;
    {
        UnitProcess unit(Directory.Path(), {"prlimit", "--fsize=4000000:4000000"});
        Watcher watcher(unit);
        watcher.ReadSnapshot();
        const std::string large = "C:\\Assets\\large.wav";
        ASSERT_TRUE(unit.Install("E:\\large.wav").ok());
        ASSERT_TRUE(unit.Install("E:\\clip.wav").ok());
        ReadUntilStatus(watcher, large, Zorvic::ZORVIC_ASSETSTATE_ERROR);
        EXPECT_EQ(watcher.Assets[large].current_size(), watcher.Assets[large].total_size());
        // A scan may have shown it before the line is written.
        EXPECT_TRUE(
            WaitUntil([&] { return ReadFile(unit.Log).find("importing " + large + " from") != std::string::npos; }));
        ReadUntilStatus(watcher, Clip, Zorvic::ZORVIC_ASSETSTATE_READY);
        EXPECT_THAT(FilesInStore(), testing::ElementsAre("clip.wav"));

        auto preset = PresetWith(0, Clip);
        preset.set_notes(std::string(60'000, 'n'));
        grpc::Status answer;
        while (saved < 1'000 && (answer = unit.Create(preset)).ok())
            ++saved;
        EXPECT_EQ(answer.error_code(), grpc::StatusCode::RESOURCE_EXHAUSTED) << answer.error_message();
        EXPECT_TRUE(unit.Take(1).ok()) << "the show goes on";
        EXPECT_TRUE(unit.Process.Running());
    }
    UnitProcess unit(Directory.Path());
    Watcher watcher(unit);
    watcher.ReadSnapshot();
    EXPECT_GT(saved, 0U);
    EXPECT_EQ(watcher.Presets.size(), saved);
}

}  // namespace
