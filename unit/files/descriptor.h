#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace ZorvicUnit {

/// Owner of a file descriptor; a negative one is none.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : Number(number) {}
    Descriptor(Descriptor&& other) noexcept : Number(std::exchange(other.Number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(Number, other.Number);
        return *this;
    }
    ~Descriptor() { Close(); }

    int Get() const { return Number; }
    bool IsOpen() const { return Number >= 0; }
    /// Somebody else owns it from now on.
    int Release() { return std::exchange(Number, -1); }
    /// Refers to the same open file.
    Descriptor Duplicate() const { return Descriptor(fcntl(Number, F_DUPFD_CLOEXEC, 0)); }
    /// The result of close(2), which may be the first to tell of a failed write.
    int Close() {
        const int result = Number >= 0 ? close(Number) : 0;
        Number = -1;
        return result;
    }

private:
    int Number;
};

}  // namespace ZorvicUnit
