// SPDX-License-Identifier: MIT
#include "companion/QDKUtilities.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>

namespace {

constexpr const char *ScratchFile = "temp.txt";
constexpr const char *ServiceName = "com.tarvo.quaydesk.service";

using MatchAction = std::function<void(const std::string &line, std::size_t position)>;

/// Runs the command and looks for the first line of the scratch file that holds the needle; `onMatch` gets
/// that line and the needle's place in it.
bool findLine(const char *command, const char *needle, const MatchAction &onMatch = nullptr)
{
    std::system(command);
    FILE *file = std::fopen(ScratchFile, "r");
    if (file == nullptr) {
        return false;
    }
    bool found = false;
    char line[1024] = {};
    while (!found && std::fgets(line, sizeof line, file) != nullptr) {
        const char *match = std::strstr(line, needle);
        if (match != nullptr) {
            found = true;
            if (onMatch) {
                onMatch(line, static_cast<std::size_t>(match - line));
            }
        }
    }
    std::fclose(file);
    std::remove(ScratchFile);
    return found;
}

/// Reads the scratch file word by word, up to the first word that `isWanted` accepts, and removes the file.
/// Returns that word, empty when there is none.
std::string findWord(const std::function<bool(const char *word)> &isWanted)
{
    FILE *file = std::fopen(ScratchFile, "r");
    if (file == nullptr) {
        return {};
    }
    std::string found;
    char word[128] = {};
    while (found.empty() && std::fscanf(file, "%127s", word) == 1) {
        if (isWanted(word)) {
            found = word;
        }
    }
    std::fclose(file);
    std::remove(ScratchFile);
    return found;
}

int killProcess(const char *name)
{
    const bool killed =
        findLine("ps -axcopid,command >> temp.txt", name, [](const std::string &line, std::size_t position) {
            // The process ID is what stands before the name, less the blank between them; it is passed on
            // as text.
            const std::string processId = line.substr(0, position > 0 ? position - 1 : 0);
            std::system(("kill -9 " + processId).c_str());
        });
    return killed ? 1 : 0;
}

} // namespace

int QDKUtilities::startService()
{
    std::system("sudo launchctl submit -l com.tarvo.quaydesk.service -p "
                "/Library/Application\\ Support/Tarvo/Quaydesk/tarvo_qd_service");
    return 1;
}

int QDKUtilities::stopService()
{
    findLine("sudo launchctl list >> temp.txt", ServiceName, [](const std::string &, std::size_t) {
        std::system("sudo launchctl remove com.tarvo.quaydesk.service");
    });
    return 1;
}

int QDKUtilities::launchQDKStatusItem()
{
    return std::system("open \"/Applications/Tarvo Quaydesk.app/Contents/MacOS/QDKStatusItem.app\"");
}

int QDKUtilities::launchQDK()
{
    return std::system("open \"/Applications/Tarvo Quaydesk.app\"");
}

int QDKUtilities::killQDK()
{
    return killProcess("Tarvo Quaydesk");
}

int QDKUtilities::killQDKStatusItem()
{
    return killProcess("QDKStatusItem");
}

bool QDKUtilities::isQDKInstalledAndRunning()
{
    std::system("sudo launchctl list >> temp.txt");
    return !findWord([](const char *word) { return std::strstr(word, ServiceName) != nullptr; }).empty();
}

bool QDKUtilities::isQDKRunning()
{
    return findLine("ps -ax >> temp.txt", "/Applications/Tarvo Quaydesk.app");
}

bool QDKUtilities::isQDKInstalled()
{
    return findLine("ls /Library/LaunchDaemons >> temp.txt", "com.tarvo.quaydesk.service.plist");
}

bool QDKUtilities::isTarvoKorrinLoaded()
{
    return findLine("kextstat | grep Tarvo >> temp.txt", "com.Tarvo.Korrin");
}

bool QDKUtilities::isTarvoKorrinInstalled()
{
    return findLine("ls /System/Library/Extensions >> temp.txt", "TarvoKorrin.kext");
}

std::string QDKUtilities::getTarvoKorrinVersion()
{
    const char *const listing = "sudo kextstat | grep com.Tarvo.Korrin >> temp.txt";
    const bool loaded = std::system(listing) == 0;
    if (!loaded && std::system("sudo ls /System/Library/Extensions/TarvoKorrin.kext") == 0) {
        std::system("sudo kextload /System/Library/Extensions/TarvoKorrin.kext");
        std::remove(ScratchFile);
        std::system(listing);
    }

    const std::string word = findWord([](const char *candidate) {
        return std::strchr(candidate, '(') != nullptr && std::strchr(candidate, ')') != nullptr;
    });
    if (word.empty()) {
        return {};
    }
    // The length is that of a word which begins with the parenthesis, as the version column does.
    return word.substr(word.find('(') + 1, word.find(')') - 1);
}
