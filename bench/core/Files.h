#pragma once

#include <string>
#include <utility>

/// Paths are bytes as the operating system takes them, without a trailing slash.
namespace bench {

/// The directory that holds the running executable, symbolic links followed.
std::string executableDirectory();

/// The directory of the bench: $TARVO_BENCH, and where that is not set "bench" beside the executable.
std::string benchDirectory();

/// The content of the regular file at `path`. Refused with the reason alone when there is none, when it is
/// not a regular file (a FIFO is not waited for), cannot be read or holds more than `limit` bytes.
std::string readFile(const std::string &path, std::size_t limit);

/// The first `length` bytes of that file, fewer where it is shorter, and the size of the whole file. Refused
/// likewise.
std::pair<std::string, std::size_t> readBeginning(const std::string &path, std::size_t length);

/// Writes a new file. Refused with the reason alone, and without the file.
void writeFile(const std::string &path, const std::string &content);

} // namespace bench
