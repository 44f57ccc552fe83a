// SPDX-License-Identifier: MIT
#include "tests/companion/Searches.h"

#include "companion/QDKUtilities.h"

#include <cctype>

namespace {

const QString ServiceListing = "sudo launchctl list >> temp.txt";
const QString ProcessListing = "ps -axcopid,command >> temp.txt";

/// The text with its letters in the other case.
QByteArray otherCase(QByteArray text)
{
    for (char &letter : text) {
        letter = std::islower(uchar(letter)) ? char(std::toupper(letter)) : char(std::tolower(letter));
    }
    return text;
}

/// What is not the needle, by one byte or by more.
QByteArray nearMisses(const QByteArray &needle)
{
    QByteArray middle = needle;
    middle[needle.size() / 2] = '#';
    return needle.left(needle.size() - 1) + "\n" + needle.mid(1) + "\n" + middle + "\n" + otherCase(needle)
        + "\n" + needle.left(5) + "\n" + needle.mid(5) + "\n";
}

/// Listings as a search takes them line by line, 1023 characters at most.
QList<Listing> lines(const QByteArray &needle)
{
    const QByteArray filler(1023, 'x');
    const auto fillerLess = [&filler](qsizetype count) { return filler.left(1023 - int(count)); };
    return {
        {"in a line", "  PID COMMAND\n  312 " + needle + " x\n  9 y\n", true, "  312"},
        {"at the start of a line", "other\n" + needle + "\n", true, ""},
        {"in a last line without an end", "other\n 7 " + needle, true, " 7"},
        {"part of a longer name", " 123 old-" + needle + ".disabled\n", true, " 123 old"},
        {"twice in a line", "  312 " + needle + " " + needle + "\n", true, "  312"},
        {"in two lines", "  312 " + needle + "\n  313 " + needle + "\n", true, "  312"},
        {"no number before it", " 12a;'b\\\"$c\t " + needle + "\n", true, " 12a;'b\\\"$c\t"},
        {"near misses", nearMisses(needle), false, ""},
        {"nothing", "", false, ""},
        {"empty lines", "\n\n", false, ""},
        {"behind a zero byte", QByteArray("1\0 ", 3) + needle + "\n", false, ""},
        {"in the line after a zero byte", QByteArray("1\0\n5 ", 5) + needle + "\n", true, "5"},
        {"up to the end of a read", fillerLess(needle.size()) + needle + "\n", true,
            fillerLess(needle.size() + 1)},
        {"cut by the end of a read", fillerLess(needle.size() - 1) + needle + "\n", false, ""},
        {"cut in its middle", fillerLess(5) + needle + "\n", false, ""},
        {"in the second read of a line", filler + "  312 " + needle + "\n", true, "  312"},
    };
}

/// Listings as a search takes them word by word, 127 characters at most.
QList<Listing> words(const QByteArray &needle)
{
    const QByteArray filler(127, 'x');
    const auto fillerLess = [&filler](qsizetype count) { return filler.left(127 - int(count)); };
    return {
        {"a word", "PID\tStatus\tLabel\n312\t0\t" + needle + "\n", true, ""},
        {"part of a word", "-\t0\tx" + needle + ".x", true, ""},
        {"twice", needle + needle + " " + needle, true, ""},
        {"near misses", nearMisses(needle), false, ""},
        {"nothing", "", false, ""},
        {"blanks", " \t\n\n", false, ""},
        {"behind a zero byte", QByteArray("1\0", 2) + needle + "\n", false, ""},
        {"up to the end of a read", fillerLess(needle.size()) + needle, true, ""},
        {"cut by the end of a read", fillerLess(needle.size() - 1) + needle, false, ""},
        {"cut in its middle", fillerLess(5) + needle, false, ""},
        {"in the second read of a word", filler + needle, true, ""},
        {"behind a long word", QByteArray(100000, 'x') + " " + needle, true, ""},
    };
}

} // namespace

// clang-format off
const std::vector<Search> Searches = {
    {"isQDKInstalledAndRunning", QDKUtilities::isQDKInstalledAndRunning, ServiceListing,
        "com.tarvo.quaydesk.service", true, "", 1, 0},
    {"stopService", QDKUtilities::stopService, ServiceListing,
        "com.tarvo.quaydesk.service", false, "sudo launchctl remove com.tarvo.quaydesk.service", 1, 1},
    {"killQDK", QDKUtilities::killQDK, ProcessListing,
        "Tarvo Quaydesk", false, "kill -9 %1", 1, 0},
    {"killQDKStatusItem", QDKUtilities::killQDKStatusItem, ProcessListing,
        "QDKStatusItem", false, "kill -9 %1", 1, 0},
    {"isQDKRunning", QDKUtilities::isQDKRunning, "ps -ax >> temp.txt",
        "/Applications/Tarvo Quaydesk.app", false, "", 1, 0},
    {"isQDKInstalled", QDKUtilities::isQDKInstalled, "ls /Library/LaunchDaemons >> temp.txt",
        "com.tarvo.quaydesk.service.plist", false, "", 1, 0},
    {"isTarvoKorrinLoaded", QDKUtilities::isTarvoKorrinLoaded, "kextstat | grep Tarvo >> temp.txt",
        "com.Tarvo.Korrin", false, "", 1, 0},
    {"isTarvoKorrinInstalled", QDKUtilities::isTarvoKorrinInstalled, "ls /System/Library/Extensions >> temp.txt",
        "TarvoKorrin.kext", false, "", 1, 0},
};
// clang-format on

QList<Listing> listingsFor(const Search &search)
{
    return search.wordByWord ? words(search.needle) : lines(search.needle);
}
