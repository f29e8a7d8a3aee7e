#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace ZorvicCtl {

/// A unit on this machine to practise with. It ends with the object, and with this program however that ends.
class PracticeUnit {
public:
    /// Starts a unit whose name is that of its store's directory. Throws Failure when it does not begin to listen.
    PracticeUnit(const std::filesystem::path& store, const std::string& address,
                 const std::vector<std::string>& options);
    ~PracticeUnit();
    PracticeUnit(const PracticeUnit&) = delete;
    PracticeUnit& operator=(const PracticeUnit&) = delete;

    const std::string& Name() const { return Nickname; }
    /// Address and port.
    const std::string& Host() const { return Listening; }
    bool Running();
    /// Asks it to end; the destructor waits for that.
    void AskToEnd();
    /// Presets of its media, when it has none.
    void Fill() const;

private:
    void Start(const std::vector<std::string>& arguments);
    void AwaitListening();

    const std::string Nickname;
    const std::filesystem::path Log;
    std::string Listening;
    pid_t Pid = -1;
};

}  // namespace ZorvicCtl
