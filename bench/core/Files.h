// SPDX-License-Identifier: MIT
#pragma once

#include <string>

/// Paths are bytes as the operating system takes them, without a trailing slash.
namespace bench {

/// Why the last call of the C library failed.
std::string systemReason();

/// The directory that holds the running executable, symbolic links followed.
std::string executableDirectory();

/// The directory of the bench: $TARVO_BENCH, and where that is not set "bench" beside the executable.
std::string benchDirectory();

/// The first `limit` bytes of the regular file at `path`. Refused with the reason alone when there is none,
/// when it is not a regular file (a FIFO is not waited for) or cannot be read.
std::string readFile(const std::string &path, std::size_t limit);

/// Writes the file anew beside its place and puts it there atomically. What stands there is replaced, not
/// followed. Refused with the reason alone, and without a trace.
void writeFile(const std::string &path, const std::string &content);

} // namespace bench
