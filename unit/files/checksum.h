#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

struct XXH3_state_s;

namespace ZorvicUnit {

/// XXH3-128 of bytes that come in pieces.
class Checksum {
public:
    Checksum();
    ~Checksum();
    Checksum(const Checksum&) = delete;
    Checksum& operator=(const Checksum&) = delete;

    void Add(std::span<const char> bytes);
    /// 32 hexadecimal digits.
    std::string Hex() const;

private:
    XXH3_state_s* State;
};

}  // namespace ZorvicUnit
