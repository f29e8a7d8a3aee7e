#include "tls/certificates_command.h"

#include "fault.h"
#include "store/database.h"
#include "store/settings_table.h"
#include "store/store_directory.h"
#include "tls/access.h"
#include "tls/certificate_maker.h"

#include <spdlog/fmt/fmt.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace ZorvicUnit {

namespace {

constexpr int BadOption = 2;
constexpr int DaysOfAuthority = 3650;

struct Order {
    std::filesystem::path Directory;
    std::filesystem::path Store;
    std::string GUID;
    std::string Console;
    std::vector<std::string> Roles = AccessRoleNames();
    std::string Revoked;
    int Days = 825;
};

bool IsPlainName(const std::string& name) {
    const auto allowed = [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '_';
    };
    return !name.empty() && name.size() <= 64 && std::ranges::all_of(name, allowed);
}

// As issuing prints it, and units compare it: 128 bits at random, which seldom begin with zeros that are left out.
bool IsSerialNumber(const std::string& text) {
    const auto digit = [](char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); };
    return text.size() >= 16 && text.size() <= 32 && std::ranges::all_of(text, digit);
}

SignedKey Authority(const std::filesystem::path& directory) {
    const auto certificate = directory / "ca.pem";
    const auto key = directory / "ca.key";
    if (std::filesystem::exists(key)) return ReadSignedKey(certificate, key);
    const SignedKey made = MakeSignedKey(
        {.Is = Subject::Kind::Authority, .Name = "Zorvic authority", .Addresses = {}, .Days = DaysOfAuthority},
        nullptr);
    WriteSignedKey(made, certificate, key);
    std::printf("authority           %s, keep %s secret\n", certificate.c_str(), key.c_str());
    return made;
}

void Issue(const std::filesystem::path& room, const char* file, const Subject& subject, const SignedKey& authority,
           const std::filesystem::path& directory) {
    std::filesystem::create_directories(room);
    const SignedKey made = MakeSignedKey(subject, &authority);
    WriteSignedKey(made, room / (std::string(file) + ".pem"), room / (std::string(file) + ".key"));
    std::filesystem::copy_file(directory / "ca.pem", room / "ca.pem",
                               std::filesystem::copy_options::overwrite_existing);
    std::printf("%-19s %s, serial number %s, %d days\n", file, room.c_str(), SerialOf(*made.Certificate).c_str(),
                subject.Days);
}

void IssueUnit(const Order& order, const std::string& guid, const SignedKey& authority) {
    Issue(order.Directory / "units" / guid, "unit",
          {.Is = Subject::Kind::Unit,
           .Name = guid,
           .Addresses = {fmt::format("DNS:{}", CertificateEntry::UnitName),
                         fmt::format("URI:{}{}", CertificateEntry::Unit, guid)},
           .Days = order.Days},
          authority, order.Directory);
}

void IssueConsole(const Order& order, const SignedKey& authority) {
    Subject subject{.Is = Subject::Kind::Console, .Name = order.Console, .Addresses = {}, .Days = order.Days};
    for (const std::string& role : order.Roles)
        subject.Addresses.push_back(fmt::format("URI:{}{}", CertificateEntry::Role, role));
    Issue(order.Directory / "consoles" / order.Console, "console", subject, authority, order.Directory);
}

std::string GuidOf(const std::filesystem::path& store) {
    if (!std::filesystem::exists(store / "zorvic.db"))
        throw Fault(FaultKind::NotFound, "there is no store in " + store.string());
    const StoreDirectory directory(store);
    Database rows(directory.DatabaseFile());
    std::string guid = SettingsTable(rows).Guid();
    rows.Close();
    return guid;
}

// Units take the list up by themselves where it lies beside their certificate.
void Revoke(const Order& order) {
    const auto list = order.Directory / "revoked";
    std::ofstream file(list, std::ios::app);
    if (!(file << order.Revoked << std::endl))
        throw Fault(FaultKind::Internal, "cannot write " + list.string() + ": nothing is revoked");
    for (const auto& unit : std::filesystem::directory_iterator(order.Directory / "units")) {
        const auto copy = unit.path() / "revoked.new";  // nobody finds half a list
        std::filesystem::copy_file(list, copy, std::filesystem::copy_options::overwrite_existing);
        std::filesystem::rename(copy, unit.path() / "revoked");
    }
    std::printf("revoked             %s: copy %s into the directories of the units\n", order.Revoked.c_str(),
                list.c_str());
}

void Carry(const Order& order) {
    std::filesystem::create_directories(order.Directory / "units");
    std::filesystem::permissions(order.Directory, std::filesystem::perms::owner_all);
    const SignedKey authority = Authority(order.Directory);
    if (!order.Store.empty()) IssueUnit(order, GuidOf(order.Store), authority);
    if (!order.GUID.empty()) IssueUnit(order, order.GUID, authority);
    if (!order.Console.empty()) IssueConsole(order, authority);
    if (!order.Revoked.empty()) Revoke(order);
}

}  // namespace

int RunCertificates(int argc, const char* const* argv) {
    Order order;
    CLI::App app("Makes certificates for encrypted links: an authority in DIR, and one for each unit and console.",
                 "zorvic-unit certificates");
    const auto plain = [](const std::string& name) {
        return IsPlainName(name) ? "" : "expected letters, digits, - and _, got " + name;
    };
    app.add_option("DIR", order.Directory, "Where the authority is kept; made when it is not there")->required();
    app.add_option("--store", order.Store, "For the unit of this store, which must not be running")->type_name("DIR");
    app.add_option("--guid", order.GUID, "For the unit with this identifier")->check(plain);
    app.add_option("--console", order.Console, "For a console of this name")->check(plain);
    app.add_option("--role", order.Roles, "What the console may do beside watching (repeatable)")
        ->check(CLI::IsMember(AccessRoleNames()))
        ->type_name("operate|edit|power")
        ->capture_default_str();
    app.add_option("--days", order.Days, "How long they hold")->capture_default_str();
    app.add_option("--revoke", order.Revoked, "Takes the certificate with this serial number back")
        ->check([](const std::string& text) {
            return IsSerialNumber(text) ? std::string() : "expected what was printed when it was made, got " + text;
        });
    try {
        app.parse(argc - 1, argv + 1);
        Carry(order);
        return EXIT_SUCCESS;
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_SUCCESS : BadOption;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return EXIT_FAILURE;
    }
}

}  // namespace ZorvicUnit
