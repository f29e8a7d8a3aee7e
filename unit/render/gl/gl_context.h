#pragma once

#include <memory>

namespace ZorvicRender {

/// An OpenGL ES 2 context without any window. Current on the thread that made it, until it is destroyed.
class HeadlessContext {
public:
    /// Throws Fault when this machine has none.
    HeadlessContext();
    ~HeadlessContext();
    HeadlessContext(const HeadlessContext&) = delete;
    HeadlessContext& operator=(const HeadlessContext&) = delete;

private:
    struct Handles;
    std::unique_ptr<Handles> Egl;
};

}  // namespace ZorvicRender
