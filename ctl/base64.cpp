#include "base64.h"

#include <openssl/evp.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace ZorvicCtl {

std::string ToBase64(const std::string& bytes) {
    std::vector<unsigned char> text(4 * ((bytes.size() + 2) / 3) + 1);
    const int length = EVP_EncodeBlock(text.data(), reinterpret_cast<const unsigned char*>(bytes.data()),
                                       static_cast<int>(bytes.size()));
    return {text.begin(), text.begin() + length};
}

// It counts the padding as bytes.
std::string FromBase64(const std::string& text) {
    std::vector<unsigned char> bytes(text.size() / 4 * 3 + 1);
    const int length = EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char*>(text.data()),
                                       static_cast<int>(text.size()));
    const auto padding = std::min<std::ptrdiff_t>(2, std::count(text.begin(), text.end(), '='));
    if (length < padding) throw std::invalid_argument("base64");
    return {bytes.begin(), bytes.begin() + length - padding};
}

}  // namespace ZorvicCtl
