#include "daemon/daemon.h"

#include "daemon/video_modes.h"
#include "fault.h"
#include "outputs/figures.h"
#include "tls/credentials.h"

#include <spdlog/spdlog.h>
#include <zorvic/enums.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace ZorvicUnit {

namespace {

constexpr auto ApiVersion = "1.1";
// Both together leave time for the asset store: the process must be gone within two seconds.
constexpr std::chrono::milliseconds DrainLimit(800);
constexpr std::chrono::milliseconds GoodbyeLimit(500);
// A handler's reply leaves after the handler has returned; nothing tells when.
constexpr std::chrono::milliseconds ReplyTime(100);

constexpr std::uint32_t OutputCount = 4;

// A unit without outputs of its own practises for one that has them all.
bool IsShown(const Options& options, std::uint32_t number) {
    return options.Outputs.empty() || std::any_of(options.Outputs.begin(), options.Outputs.end(),
                                                  [&](const auto& output) { return output.number() == number; });
}

}  // namespace

Daemon::Daemon(const Options& options, PowerSwitch& power)
    : Power(power),
      Directory(options.Store),
      Pages(Directory.Path() / "asrun.db", options.AsRun),
      Rows(Directory.DatabaseFile(), [this](const std::string& what) { Record.Fault(what); }),
      Assets(std::make_unique<AssetStore>(
          AssetStore::Options{.StoreDirectory = Directory.Path(), .Drives = options.Drives}, Rows, Time)),
      Profile(MakeProfile(options)),
      Model(Profile, Rows, Time, *Assets, Updates, Record),
      Link(*Assets, Model, Record),
      Service(Profile.Identity, Model, *Assets, Link, Updates, Pictures,
              [this](auto action) { Power.Request(action); }) {
    Record.Note(Zorvic::ZORVIC_ASRUN_STARTED, std::string("version ") + ZORVIC_UNIT_VERSION);
    Service.KeepSheet(Pages, Record);
    try {
        Assets->Start();
        Ticking.emplace(Model);
        Keeping.emplace(Model, *Assets, Rows, Updates);
        StartRenderer(options);
        Requests.emplace(Service, options.Listen, options.Port, SetUpAccess(options.TlsDirectory));
        Announcing.emplace(MakeAnnouncement(options));
    } catch (...) {
        // The destructor does not run for an object that did not come to be.
        Stop();
        throw;
    }
}

Daemon::~Daemon() {
    Stop();
}

void Daemon::Stop() {
    Announcing.reset();
    Updates.Close();
    Pictures.Close();
    Pages.EndReading();
    Service.Drain(DrainLimit);
    if (Requests) Requests->Stop(GoodbyeLimit);
    Requests.reset();
    Showing.reset();
    Ticking.reset();
    Keeping.reset();
    Assets.reset();
    Rows.Close();
    Record.Note(Zorvic::ZORVIC_ASRUN_STOPPED, "");
    Pages.Close();
}

zorvic::v1::PowerAction Daemon::Run() {
    for (;;) {
        const auto action = Power.Wait();
        // Whoever has asked for it is told first: the end of the state stream would cancel the call.
        std::this_thread::sleep_for(ReplyTime);
        if (action != zorvic::v1::POWER_ACTION_SOFT_REBOOT) return action;
        SoftReboot();
    }
}

void Daemon::SoftReboot() {
    spdlog::info("soft reboot: playback ends, the store is read again, all sessions end");
    try {
        Model.Reload();
    } catch (const Fault& fault) {
        spdlog::error("soft reboot: {}", fault.what());
    }
    Updates.EndSubscriptions();
}

UnitModel::Profile Daemon::MakeProfile(const Options& options) {
    UnitModel::Profile profile;
    auto& identity = profile.Identity;
    identity.set_guid(SettingsTable(Rows).Guid());
    identity.set_nickname(options.Nickname.empty() ? identity.guid() : options.Nickname);
    identity.set_role(options.Role);
    identity.set_type(options.Type);
    identity.set_api_version(ApiVersion);
    identity.set_communicator_version(ZORVIC_UNIT_VERSION);
    identity.add_features(zorvic::v1::FEATURE_STATE_CHANGES);
    identity.add_features(zorvic::v1::FEATURE_RESUME);
    for (std::uint32_t number = 1; number <= OutputCount; ++number)
        profile.Hardware.add_resolutions(IsShown(options, number) ? options.VideoMode : Zorvic::ZORVIC_RES_INVALID);
    profile.Hardware.set_refresh_rate(options.Refresh);
    profile.Hardware.set_audio_config(Zorvic::ZORVIC_KAC_SDI1);
    return profile;
}

std::shared_ptr<grpc::ServerCredentials> Daemon::SetUpAccess(const std::filesystem::path& directory) {
    if (directory.empty()) return grpc::InsecureServerCredentials();
    const UnitAccess access = UnitCredentials(directory, Profile.Identity.guid());
    Service.SetAdmission([list = access.List](const grpc::AuthContext& context) {
        return list->Refusal("/Watch", CertificateEntries(context));
    });
    return access.Credentials;
}

void Daemon::StartRenderer(const Options& options) {
    if (options.Outputs.empty() && options.Audio == "off") return;
    zorvic::render::Setup setup;
    setup.set_nickname(Profile.Identity.nickname());
    setup.set_audio(options.Audio);
    const Fraction refresh = RefreshOf(options.Refresh);
    setup.set_refresh_numerator(refresh.Numerator);
    setup.set_refresh_denominator(refresh.Denominator);
    const Shape shape = ShapeOf(options.VideoMode);
    for (const auto& chosen : options.Outputs) {
        auto& output = *setup.add_outputs();
        output = chosen;
        output.set_width(shape.Width);
        output.set_height(shape.Height);
    }
    Showing.emplace(
        setup, Model, Pictures, [this](const std::string& path) { return Assets->HostFile(path); },
        [this](const std::string& path, const std::string& reason) { Assets->Condemn(path, reason); }, Record);
    Service.SetFiguresReader([this] { return FiguresOf(Showing->Figures()); });
}

AnnouncerConfig Daemon::MakeAnnouncement(const Options& options) const {
    const auto& identity = Profile.Identity;
    return {.Interface = options.Announce,
            .Address = options.Listen,
            .Port = Requests->Port(),
            .GUID = identity.guid(),
            .Nickname = identity.nickname(),
            .Role = identity.role(),
            .Type = identity.type(),
            .APIVersion = identity.api_version(),
            .Version = identity.communicator_version()};
}

}  // namespace ZorvicUnit
