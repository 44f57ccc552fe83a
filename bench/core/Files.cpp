// SPDX-License-Identifier: MIT
#include "bench/core/Files.h"

#include "bench/core/Refused.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#include <unistd.h>

#ifdef __APPLE__
#include <mach-o/dyld.h>
#endif

namespace bench {

namespace {

namespace fs = std::filesystem;

} // namespace

std::string systemReason()
{
    return std::generic_category().message(errno);
}

std::string executableDirectory()
{
    std::error_code error;
#ifdef __APPLE__
    char unresolved[4096] = {};
    std::uint32_t size = sizeof unresolved;
    if (::_NSGetExecutablePath(unresolved, &size) != 0) {
        return ".";
    }
    const auto executable = fs::canonical(unresolved, error);
#else
    const auto executable = fs::read_symlink("/proc/self/exe", error);
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
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    require(!fs::is_directory(status), "is a directory");
    require(!fs::exists(status) || fs::is_regular_file(status), "is not a regular file");
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    const auto size = file ? fs::file_size(path, error) : 0;
    require(file && !error, systemReason());
    std::string content(std::min<std::size_t>(size, limit), '\0');
    file.read(content.data(), static_cast<std::streamsize>(content.size()));
    require(!file.bad(), systemReason());
    content.resize(static_cast<std::size_t>(file.gcount()));
    return content;
}

void writeFile(const std::string &path, const std::string &content)
{
    std::error_code error;
    require(!fs::is_directory(fs::symlink_status(path, error)), "is a directory");
    std::string draft = path + ".XXXXXX";
    const int descriptor = ::mkstemp(draft.data());
    require(descriptor >= 0, systemReason());
    ::close(descriptor);
    errno = 0;
    std::ofstream file(draft, std::ios::binary);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    std::string reason = file ? std::string() : systemReason();
    if (reason.empty()) {
        // mkstemp() makes a file for its owner only.
        fs::permissions(draft, fs::perms(0644), error);
        fs::rename(draft, path, error);
        reason = error ? error.message() : std::string();
    }
    if (!reason.empty()) {
        fs::remove(draft, error);
        throw Refused(reason);
    }
}

} // namespace bench
