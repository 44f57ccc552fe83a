#pragma once

#include <QtTest>

#include <functional>
#include <memory>
#include <string>
#include <vector>

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

/// The test classes of this program, each in a file of its own.
inline std::vector<std::function<std::unique_ptr<QObject>()>> &coreTests()
{
    static std::vector<std::function<std::unique_ptr<QObject>()>> tests;
    return tests;
}

/// Adds a test class to the program. One object for each class.
template <typename Test>
struct CoreTest
{
    CoreTest()
    {
        coreTests().push_back([] { return std::make_unique<Test>(); });
    }
};

/// All 256 bytes.
inline std::string everyByte()
{
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    return bytes;
}
