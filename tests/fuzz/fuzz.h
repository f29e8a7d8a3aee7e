#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

/// What libFuzzer calls with bytes of its making. Every target ends the program when a promise of what it tries does
/// not hold; the sanitizers end it for everything else.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

inline std::string_view TextOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

inline void Require(bool holds) {
    if (!holds) std::abort();
}
