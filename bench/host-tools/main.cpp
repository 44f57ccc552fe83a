// Stands in for tools of the host's operating system. The name by which it is called says for which.

#include "bench/core/Bench.h"
#include "bench/core/CallLog.h"
#include "bench/core/Companion.h"
#include "bench/core/Files.h"

#include <climits>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace {

constexpr const char *ServiceName = "com.tarvo.quaydesk.service";
constexpr const char *ExtensionName = "com.Tarvo.Korrin";

/// What a stand-in returns for arguments that it does not stand in for.
constexpr int NotMine = -1;

bench::Bench openBench()
{
    return bench::Bench(bench::Bench::defaultFolder(), bench::executableFolder());
}

bench::Companion openCompanion()
{
    return bench::Companion(bench::Bench::defaultFolder());
}

bench::Host readHost()
{
    QStringList ignored;
    return openBench().host(&ignored);
}

QByteArray baseName(const QString &command)
{
    return command.section(QLatin1Char('/'), -1).toUtf8();
}

int launchctl(const QStringList &arguments)
{
    if (arguments == QStringList{QStringLiteral("list")}) {
        const bench::Host host = readHost();
        std::printf(
            "PID\tStatus\tLabel\n-\t0\tcom.apple.mdworker.shared\n-\t0\tcom.apple.distnoted.xpc.agent\n");
        if (host.serviceSubmitted) {
            QByteArray id = "-";
            for (const bench::Process &process : host.processes) {
                if (process.command.endsWith(QStringLiteral("/tarvo_qd_service"))) {
                    id = QByteArray::number(qlonglong(process.id));
                }
            }
            std::printf("%s\t0\t%s\n", id.constData(), ServiceName);
        }
        return 0;
    }
    const QString label = QString::fromLatin1(ServiceName);
    const bool submits = arguments.value(0) == QLatin1String("submit") && arguments.contains(label);
    const bool removes = arguments.value(0) == QLatin1String("remove") && arguments.value(1) == label;
    if (!submits && !removes) {
        return NotMine;
    }
    QString ignored;
    openBench().changeHost(
        [submits](bench::Host *host, QString *) {
            host->serviceSubmitted = submits;
            return true;
        },
        &ignored);
    return 0;
}

int ps(const QStringList &arguments)
{
    const bool namesOnly = arguments == QStringList{QStringLiteral("-axcopid,command")};
    if (!namesOnly && arguments != QStringList{QStringLiteral("-ax")}) {
        return NotMine;
    }
    std::printf(namesOnly ? "  PID COMMAND\n" : "  PID TTY           TIME CMD\n");
    for (const bench::Process &process : readHost().processes) {
        const auto id = static_cast<long long>(process.id);
        if (namesOnly) {
            std::printf("%5lld %s\n", id, baseName(process.command).constData());
        } else {
            std::printf("%5lld ??         0:00.12 %s\n", id, process.command.toUtf8().constData());
        }
    }
    return 0;
}

int ls(const QStringList &arguments)
{
    if (arguments.size() != 1) {
        return NotMine;
    }
    QString folder = arguments.first();
    while (folder.size() > 1 && folder.endsWith(QLatin1Char('/'))) {
        folder.chop(1);
    }
    if (folder == QLatin1String("/Library/LaunchDaemons")) {
        std::printf("com.apple.remotepairtool.plist\n");
        if (readHost().companionInstalled) {
            std::printf("%s.plist\n", ServiceName);
        }
        return 0;
    }
    if (folder == QLatin1String("/System/Library/Extensions")) {
        std::printf("AppleHDA.kext\nIOFireWireFamily.kext\nIOStorageFamily.kext\nIOUSBFamily.kext\n");
        if (readHost().extensionInstalled) {
            std::printf("TarvoKorrin.kext\n");
        }
        return 0;
    }
    if (folder == QLatin1String("/System/Library/Extensions/TarvoKorrin.kext")) {
        if (!readHost().extensionInstalled) {
            return 1;
        }
        std::printf("Contents\n");
        return 0;
    }
    return NotMine;
}

int kextstat(const QStringList &arguments)
{
    if (!arguments.isEmpty()) {
        return NotMine;
    }
    std::printf("Index Refs Address            Size       Wired      Name (Version) <Linked Against>\n"
                "    1   82 0xffffff7f80a3c000 0x686      0x686      com.apple.kpi.bsd (12.5.0)\n"
                "   33   14 0xffffff7f80f21000 0x5c000    0x5c000    com.apple.iokit.IOUSBFamily (635.4.0) "
                "<5 4 3 1>\n");
    const bench::Host host = readHost();
    if (host.extensionLoaded) {
        std::printf("   98    0 0xffffff7f82317000 0x3000     0x3000     %s (%s) <5 4 3 1>\n", ExtensionName,
            host.extensionVersion.toUtf8().constData());
    }
    return 0;
}

int kextload(const QStringList &arguments)
{
    if (arguments != QStringList{QStringLiteral("/System/Library/Extensions/TarvoKorrin.kext")}) {
        return NotMine;
    }
    QString ignored;
    const bool loaded = openBench().changeHost(
        [](bench::Host *host, QString *) {
            host->extensionLoaded = host->extensionInstalled;
            return host->extensionInstalled;
        },
        &ignored);
    return loaded ? 0 : 1;
}

int open(const QStringList &arguments)
{
    const QString application = QStringLiteral("/Applications/Tarvo Quaydesk.app");
    const QString statusItem = application + QStringLiteral("/Contents/MacOS/QDKStatusItem.app");
    const QString opened = arguments.value(0);
    if (arguments.size() != 1 || (opened != application && opened != statusItem)) {
        return NotMine;
    }
    const QString name =
        opened == application ? QStringLiteral("Tarvo Quaydesk") : QStringLiteral("QDKStatusItem");
    const QString command = opened + QStringLiteral("/Contents/MacOS/") + name;
    const bench::Host host = readHost();
    if (!host.companionInstalled) {
        return 1;
    }
    for (const bench::Process &process : host.processes) {
        if (process.command == command) {
            return 0;
        }
    }
    QString ignored;
    return openCompanion().startProcess(
               bench::executableFolder() + QStringLiteral("/host-tool"), command, &ignored)
        ? 0
        : 1;
}

int sudo(const QStringList &arguments);

struct StandIn
{
    const char *name;
    int (*run)(const QStringList &arguments);
};

constexpr StandIn StandIns[] = {
    {"launchctl", launchctl},
    {"ps", ps},
    {"ls", ls},
    {"kextstat", kextstat},
    {"kextload", kextload},
    {"open", open},
    {"sudo", sudo},
};

int runStandIn(const QString &name, const QStringList &arguments)
{
    for (const StandIn &standIn : StandIns) {
        if (name == QLatin1String(standIn.name)) {
            return standIn.run(arguments);
        }
    }
    return NotMine;
}

int sudo(const QStringList &arguments)
{
    return arguments.isEmpty() ? NotMine : runStandIn(arguments.first(), arguments.mid(1));
}

/// Becomes the first tool of that name on PATH that does not lie beside the stand-ins. Returns only when
/// there is none.
void becomeRealTool(const char *name, char **argv)
{
    const QString ownFolder = bench::executableFolder();
    const QStringList folders = QString::fromUtf8(qgetenv("PATH")).split(QLatin1Char(':'));
    for (const QString &folder : folders) {
        char resolved[PATH_MAX];
        const QByteArray tool = folder.toUtf8() + '/' + name;
        const bool own = ::realpath(folder.toUtf8().constData(), resolved) != nullptr
            && QString::fromUtf8(resolved) == ownFolder;
        if (!own && !bench::isFolder(QString::fromUtf8(tool))) {
            ::execv(tool.constData(), argv);
        }
    }
}

} // namespace

int main(int argc, char **argv)
{
    const QString name = QString::fromUtf8(argv[0]).section(QLatin1Char('/'), -1);
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QString::fromUtf8(argv[i]));
    }
    if (name == QLatin1String("host-tool")) {
        if (arguments.size() == 3 && arguments.first() == QLatin1String("--process")) {
            // Whoever reads what the starter prints is not to wait for this process.
            for (std::FILE *stream : {stdin, stdout, stderr}) {
                static_cast<void>(std::freopen("/dev/null", "r+", stream));
            }
            bench::Companion(arguments.at(1)).runAsProcess(arguments.at(2));
            return 0;
        }
        std::fprintf(stderr, "host-tool is called by the names of the tools that it stands in for\n");
        return 2;
    }

    bench::logCall(bench::Bench::defaultFolder(), QStringList(name) + arguments);
    const int status = runStandIn(name, arguments);
    if (status != NotMine) {
        return status;
    }
    const QByteArray tool = name.toUtf8();
    becomeRealTool(tool.constData(), argv);
    std::fprintf(stderr, "%s: command not found\n", tool.constData());
    return 127;
}
