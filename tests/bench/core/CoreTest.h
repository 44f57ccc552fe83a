#pragma once

#include "tests/support/TestProgram.h"

#include <string>

using namespace std::string_literals;

Q_DECLARE_METATYPE(std::string)

namespace QTest {

/// Shows both texts where they are not the same.
template <>
inline char *toString(const std::string &text)
{
    return toString(QByteArray::fromStdString(text));
}

} // namespace QTest

/// All 256 bytes.
inline std::string everyByte()
{
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    return bytes;
}
