// Consoles behind bad network, against a model of what they were told. ZORVIC_ROUNDS sets how often the weather
// changes, ZORVIC_SEED where it begins.

#include "conversions.h"
#include "mirror.h"
#include "support/environment.h"
#include "support/loopbackproxy.h"
#include "support/unitprocess.h"
#include "unit/unitfakes.h"

#include <grpcpp/create_channel.h>
#include <grpcpp/security/credentials.h>
#include <zorvic/session.h>

#include <random>
#include <thread>

using namespace Zorvic;
using namespace std::chrono_literals;

namespace {

Preset PresetOf(const std::string& name, const std::string& notes = {}) {
    Preset preset = Internal::FromWire(PresetWith(0, "C:\\Assets\\absent.mov"));
    preset.Name = name;
    preset.Notes = notes;
    return preset;
}

/// All that a session says of its unit.
std::vector<std::string> ContentOf(Session& session) {
    std::vector<Preset> presets;
    std::vector<PresetState> states;
    if (session.GetPresets(presets) != ZORVIC_STATUS_OK) return {"no link"};
    session.GetPresetStates(states);
    std::vector<std::string> content;
    for (const Preset& preset : presets)
        content.push_back(Internal::ToWire(preset).SerializeAsString());
    for (const PresetState& state : states)
        content.push_back(
            testing::PrintToString(std::tuple(state.PK, state.IsPlaying, state.IsPaused, state.IsSelected)));
    return content;
}

/// Makes, edits, plays and deletes presets of its own over a bad link, and keeps a record of what it was told.
class RestlessConsole {
public:
    RestlessConsole(const std::string& unit, int number, unsigned seed)
        : Link(unit, seed), Prefix("console " + std::to_string(number) + " preset "), Random(seed) {
        Connect();
    }

    void Act() {
        if (!Console->Connected()) {
            Console->Reconnect("");
            return SleepBriefly();
        }
        const auto choice = Random() % 40;
        if (choice == 0) Connect();
        if (choice < 10) Create();
        if (choice >= 10 && choice < 25) Edit();
        if (choice >= 25 && choice < 28) Delete();
        if (choice >= 28) Play();
    }
    void ExpectKept(const std::vector<Preset>& stored) const {
        for (const auto& [name, known] : Mine) {
            SCOPED_TRACE(name);
            const auto count = std::ranges::count(stored, name, &Preset::Name);
            EXPECT_TRUE(known.MayBeGone || count == 1) << "what was acknowledged is there, once";
            EXPECT_TRUE(known.MayBeThere || count == 0) << "what was deleted is gone";
            EXPECT_LE(count, 1);
            for (const Preset& preset : stored)
                EXPECT_TRUE(preset.Name != name || known.Notes.contains(preset.Notes)) << preset.Notes;
        }
    }

    LoopbackProxy Link;
    std::atomic<int> Events = 0;
    std::unique_ptr<Session> Console;

private:
    struct Known {
        /// The one acknowledged last, and those that were not, each with when it was asked for: it may come late, but
        /// no later than its console waited.
        std::map<std::string, std::chrono::steady_clock::time_point> Notes = {{"", {}}};
        std::string Acknowledged;
        bool MayBeThere = true;
        bool MayBeGone = true;
    };

    /// Anew in the middle of everything: nothing may call back afterwards.
    void Connect() {
        Console.reset();
        Unanswered.clear();
        Events = 0;
        Console = std::make_unique<Session>(Link.Host(), 1);
        const auto count = [](auto, void* user) { ++*static_cast<std::atomic<int>*>(user); };
        Console->SetStateEventCallback(ZORVIC_STATE_PRESETS, count, &Events);
    }
    static bool Done(StatusCode status) {
        EXPECT_TRUE(status == ZORVIC_STATUS_OK || status == ZORVIC_STATUS_NETWORKERROR) << status;
        return status == ZORVIC_STATUS_OK;
    }
    void Create() {
        if (Seen().size() >= 20) return Delete();
        const std::string name = Unanswered.empty() ? Prefix + std::to_string(++Last) : Unanswered;
        Known& known = Mine[name];
        Unanswered = name;
        if (!Done(Console->CreatePreset(PresetOf(name)))) return;
        known.MayBeGone = false;
        Unanswered.clear();
        EXPECT_TRUE(!Seen(name).empty() || !Console->Connected()) << "a read after a command shows its effect";
    }
    void Edit() {
        std::optional<Preset> preset = Any();
        if (!preset) return;
        Known& known = Mine[preset->Name];
        preset->Notes = std::to_string(++Last);
        const auto asked = known.Notes[preset->Notes] = std::chrono::steady_clock::now();
        const StatusCode status = Console->UpdatePreset(*preset);
        if (status == ZORVIC_STATUS_FAILED && known.MayBeGone) return;
        if (!Done(status)) return;
        known.Notes.erase(known.Acknowledged);
        std::erase_if(known.Notes, [&](const auto& note) { return note.second + 2s < asked; });
        known.Acknowledged = preset->Notes;
        for (const Preset& shown : Seen(preset->Name))
            EXPECT_TRUE(known.Notes.contains(shown.Notes)) << shown.Notes;
    }
    void Delete() {
        const std::optional<Preset> preset = Any();
        if (!preset || preset->Name == Unanswered) return;
        Known& known = Mine[preset->Name];
        const StatusCode status = Console->DeletePreset(preset->PK);
        if (status == ZORVIC_STATUS_FAILED) return;  // it plays
        known.MayBeGone = true;
        if (Done(status)) known.MayBeThere = false;
    }
    void Play() {
        using Command = StatusCode (Session::*)(std::int32_t);
        constexpr std::array<Command, 4> Commands = {&Session::Take, &Session::Pause, &Session::End,
                                                     &Session::SelectPreset};
        if (const auto preset = Any()) ((*Console).*Commands.at(Random() % Commands.size()))(preset->PK);
    }
    /// Its own presets as it sees them; only the one of that name when there is one.
    std::vector<Preset> Seen(const std::string& name = {}) const {
        std::vector<Preset> presets;
        Console->GetPresets(presets);
        std::erase_if(presets, [&](const Preset& preset) {
            return name.empty() ? !preset.Name.starts_with(Prefix) : preset.Name != name;
        });
        return presets;
    }
    std::optional<Preset> Any() {
        const auto presets = Seen();
        return presets.empty() ? std::nullopt : std::optional(presets[Random() % presets.size()]);
    }

    const std::string Prefix;
    std::mt19937 Random;
    std::map<std::string, Known> Mine;  ///< by name
    std::string Unanswered;             ///< the creation to try again, by the same session
    int Last = 0;
};

class LinkTest : public ::testing::Test {
protected:
    TemporaryDirectory Directory;
    UnitProcess Unit{Directory.Path() + "/store", {"--announce", "off"}};
};

TEST_F(LinkTest, EveryMirrorEqualsTheUnitAfterAStormAndNothingAcknowledgedIsMissing) {
    const unsigned seed = FromEnvironment("ZORVIC_SEED", std::random_device{}());
    std::cout << "ZORVIC_SEED=" << seed << '\n';
    std::mt19937 random(seed);
    std::vector<std::unique_ptr<RestlessConsole>> consoles;
    for (int number = 0; number < 3; ++number)
        consoles.push_back(std::make_unique<RestlessConsole>(Unit.Host(), number, random()));
    Session direct(Unit.Host(), 1);
    for (unsigned round = FromEnvironment("ZORVIC_ROUNDS", 3); round > 0 && !HasFailure(); --round) {
        std::atomic<bool> storm = true;
        std::vector<std::jthread> hands;
        for (const auto& console : consoles) {
            hands.emplace_back([&] {
                while (storm)
                    console->Act();
            });
        }
        for (int gust = 0; gust < 10; ++gust) {
            LoopbackProxy& link = consoles[random() % consoles.size()]->Link;
            const auto kind = random() % 8;
            if (kind < 4) link.Delay(std::chrono::milliseconds(kind * kind * 20));
            if (kind >= 4) link.Freeze(kind == 4);
            if (kind == 5) link.Cut();
            std::this_thread::sleep_for(std::chrono::milliseconds(random() % 400));
        }
        for (const auto& console : consoles) {
            console->Link.Delay(0ms);
            console->Link.Freeze(false);
        }
        storm = false;
        hands.clear();
        for (const auto& console : consoles) {
            EXPECT_TRUE(WaitUntil([&] { return console->Console->Reconnect("") == ZORVIC_STATUS_OK; }));
            EXPECT_TRUE(WaitUntil([&] { return ContentOf(*console->Console) == ContentOf(direct); }));
            std::vector<Preset> stored;
            EXPECT_EQ(direct.GetPresets(stored), ZORVIC_STATUS_OK);
            console->ExpectKept(stored);
            EXPECT_TRUE(WaitUntil([&] { return console->Events > 0; }));
        }
        Session fresh(Unit.Host(), 1);
        EXPECT_EQ(ContentOf(fresh), ContentOf(direct));
    }
}

TEST_F(LinkTest, AnObserverThatStopsReadingHoldsUpNobodyAndFindsEverythingLater) {
    LoopbackProxy proxy(Unit.Host(), 1);
    const auto stub = zorvic::v1::Unit::NewStub(grpc::CreateChannel(proxy.Host(), grpc::InsecureChannelCredentials()));
    grpc::ClientContext context;
    const auto stuck = stub->Watch(&context, {});
    zorvic::v1::Frame frame;
    ASSERT_TRUE(stuck->Read(&frame));
    Internal::Mirror mirror("");
    mirror.Apply(frame);
    proxy.Freeze(true);
    Session console(Unit.Host(), 1);
    for (int number = 0; number < 100; ++number)
        ASSERT_EQ(console.CreatePreset(PresetOf("a", std::string(60'000, 'n'))), ZORVIC_STATUS_OK);
    proxy.Freeze(false);
    while (mirror.Current()->Presets->Size() < 100) {
        ASSERT_TRUE(stuck->Read(&frame));
        mirror.Apply(frame);
    }
    context.TryCancel();
}

// Neither of what lies before a unit that stands still, nor of what is stuck in the network, does the transport know
// how long.
TEST_F(LinkTest, WhatLayOnTheWayUntilItsConsoleGaveUpIsNotCarriedOut) {
    using Command = std::function<StatusCode(Session&)>;
    Session direct(Unit.Host(), 1);
    ASSERT_EQ(direct.CreatePreset(PresetOf("kept")), ZORVIC_STATUS_OK);
    std::vector<Preset> stored;
    ASSERT_EQ(direct.GetPresets(stored), ZORVIC_STATUS_OK);
    Preset edited = stored.at(0);
    edited.Notes = "late";
    const std::vector<Command> commands = {[&](Session& console) { return console.SelectPreset(edited.PK); },
                                           [&](Session& console) { return console.Take(edited.PK); },
                                           [&](Session& console) { return console.UpdatePreset(edited); }};
    const auto before = ContentOf(direct);
    for (const bool inTheNetwork : {true, false}) {
        LoopbackProxy proxy(Unit.Host(), 1);
        std::vector<std::jthread> consoles;
        consoles.reserve(commands.size());
        std::atomic<std::size_t> asking = 0;
        for (const Command& command : commands) {
            consoles.emplace_back([&] {
                Session console(proxy.Host(), 1);
                EXPECT_TRUE(WaitUntil([&] { return console.Reconnect("") == ZORVIC_STATUS_OK; }));
                ++asking;
                EXPECT_TRUE(WaitUntil([&] { return asking > commands.size(); }));
                EXPECT_EQ(command(console), ZORVIC_STATUS_NETWORKERROR);
                ++asking;
                EXPECT_TRUE(WaitUntil([&] { return asking > 2 * commands.size() + 1; }));
            });
        }
        EXPECT_TRUE(WaitUntil([&] { return asking == commands.size(); }));
        Unit.Process().Signal(SIGSTOP);
        if (inTheNetwork) proxy.Freeze(true);
        ++asking;
        std::this_thread::sleep_for(500ms);
        proxy.Freeze(true);  // what takes the command back does not come through
        EXPECT_TRUE(WaitUntil([&] { return asking == 2 * commands.size() + 1; }));
        std::this_thread::sleep_for(2s);
        Unit.Process().Signal(SIGCONT);
        proxy.Delay(10ms);
        if (inTheNetwork) proxy.Freeze(false);
        EXPECT_TRUE(WaitUntil([&] { return direct.Reconnect("") == ZORVIC_STATUS_OK; }));
        std::this_thread::sleep_for(500ms);
        EXPECT_EQ(ContentOf(direct), before) << (inTheNetwork ? "in the network" : "before the unit");
        ++asking;
        proxy.Cut();
    }
    for (const Command& command : commands)
        EXPECT_EQ(command(direct), ZORVIC_STATUS_OK) << "in time";
}

}  // namespace
