#include "files/checksum.h"

#include <xxhash.h>

#include <new>

namespace ZorvicUnit {

Checksum::Checksum() : State(XXH3_createState()) {
    if (State == nullptr) throw std::bad_alloc();
    XXH3_128bits_reset(State);
}

Checksum::~Checksum() {
    XXH3_freeState(State);
}

void Checksum::Add(std::span<const char> bytes) {
    XXH3_128bits_update(State, bytes.data(), bytes.size());
}

std::string Checksum::Hex() const {
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(State));
    constexpr const char* Digits = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : canonical.digest) {
        text += Digits[byte >> 4U];
        text += Digits[byte & 15U];
    }
    return text;
}

}  // namespace ZorvicUnit
