#include "bench/core/Files.h"

#include "bench/core/Refused.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#ifdef __APPLE__
#include <mach-o/dyld.h>
#endif

namespace bench {

namespace {

std::string systemReason()
{
    return std::generic_category().message(errno);
}

} // namespace

std::string executableDirectory()
{
    std::error_code error;
#ifdef __APPLE__
    char unresolved[4096] = {};
    std::uint32_t size = sizeof unresolved;
    if (::_NSGetExecutablePath(unresolved, &size) != 0) {
        return ".";
    }
    const auto executable = std::filesystem::canonical(unresolved, error);
#else
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
#endif
    return error ? "." : executable.parent_path().string();
}

std::string benchDirectory()
{
    const char *const set = std::getenv("TARVO_BENCH");
    return set == nullptr || *set == '\0' ? executableDirectory() + "/bench" : set;
}

std::string readFile(const std::string &path, std::size_t limit)
{
    const auto [content, size] = readBeginning(path, limit);
    require(size <= limit,
        "is too large: " + std::to_string(size) + " bytes, at most " + std::to_string(limit) + " are read");
    return content;
}

std::pair<std::string, std::size_t> readBeginning(const std::string &path, std::size_t length)
{
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    require(!std::filesystem::is_directory(status), "is a directory");
    require(!std::filesystem::exists(status) || std::filesystem::is_regular_file(status),
        "is not a regular file");
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    const auto size = file ? std::filesystem::file_size(path, error) : 0;
    require(file && !error, systemReason());
    std::string content(std::min<std::size_t>(size, length), '\0');
    file.read(content.data(), static_cast<std::streamsize>(content.size()));
    require(!file.bad(), systemReason());
    content.resize(static_cast<std::size_t>(file.gcount()));
    return {content, size};
}

void writeFile(const std::string &path, const std::string &content)
{
    errno = 0;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file) {
        const std::string reason = systemReason();
        std::remove(path.c_str());
        throw Refused(reason);
    }
}

} // namespace bench
