#pragma once

#include <cstdlib>

/// What whoever runs a test wants of it; `otherwise` when nothing was said.
inline unsigned FromEnvironment(const char* name, unsigned otherwise) {
    const char* text = std::getenv(name);
    return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}
