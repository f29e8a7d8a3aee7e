#include "client_name.h"

#include <zorvic/asrun.h>

#include <cstddef>
#include <mutex>

namespace Zorvic {

namespace {

constexpr std::size_t MostName = 100;

struct Name {
    std::mutex Lock;  ///< guards the rest
    std::string Text;
};

Name& TheName() {
    static Name name;
    return name;
}

}  // namespace

// It travels in a header, which holds nothing else.
void SetClientName(const std::string& name) {
    std::string text;
    for (const char c : name.substr(0, MostName))
        text += c >= ' ' && c <= '~' ? c : '?';
    const std::scoped_lock lock(TheName().Lock);
    TheName().Text = text;
}

std::string Internal::ClientName() {
    const std::scoped_lock lock(TheName().Lock);
    return TheName().Text;
}

}  // namespace Zorvic
