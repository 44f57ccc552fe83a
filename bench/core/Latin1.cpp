#include "bench/core/Latin1.h"

namespace bench {

std::string textFromBytes(const std::string &bytes)
{
    std::string text;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        if (code < 0x80) {
            text += byte;
        } else {
            text += static_cast<char>(0xC0 | code >> 6);
            text += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return text;
}

std::optional<std::string> bytesFromText(const std::string &text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto lead = static_cast<unsigned char>(text[i]);
        if (lead < 0x80) {
            bytes += text[i];
            continue;
        }
        // U+0080 to U+00FF take two bytes, the first of which is C2 or C3.
        const bool isLatin1 = (lead == 0xC2 || lead == 0xC3) && i + 1 < text.size();
        const auto trail = isLatin1 ? static_cast<unsigned char>(text[i + 1]) : 0U;
        if ((trail & 0xC0U) != 0x80U) {
            return std::nullopt;
        }
        bytes += static_cast<char>((lead & 0x03U) << 6 | (trail & 0x3FU));
        ++i;
    }
    return bytes;
}

} // namespace bench
