#pragma once

#include <string>
#include <vector>

namespace bench {

class CommandLine;

/// What may stand in the place of the last of these words of a command line, one candidate a line.
std::string completions(CommandLine &line, const std::vector<std::string> &words);

} // namespace bench
