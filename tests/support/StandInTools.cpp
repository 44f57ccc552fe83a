// SPDX-License-Identifier: MIT
#include "tests/support/StandInTools.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

// An answer lies in a file named for the whole command line, whose slashes are those of directories. Few
// processes are started here: each window that a test opens calls a tool.
constexpr const char *Tool = R"sh(#!/bin/sh
tools=${0%/*}
line=${0##*/}
answer=$tools/answers/$line
for word in "$@"; do line="$line|$word" answer="$answer $word"; done
printf '%s\n' "$line" >> "$tools/calls"
if [ "${0##*/}" = sudo ]; then exec "$@"; fi
if [ -f "$tools/replacements/${0##*/}" ]; then . "$tools/replacements/${0##*/}"; exit; fi
[ -f "$answer.output" ] || exit 0
cat "$answer.output"
read -r status < "$answer.status"
exit "$status"
)sh";

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("cannot write %s", qPrintable(path));
    }
}

} // namespace

StandInTools::StandInTools() : previousPath(qgetenv("PATH")), previousFolder(QDir::currentPath())
{
    QDir(folder.path()).mkpath("tools/answers");
    QDir(folder.path()).mkpath("tools/replacements");
    const QString script = folder.filePath("tools/tool");
    writeFile(script, Tool);
    QFile::setPermissions(script, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    for (const char *name : {"launchctl", "ps", "ls", "kextstat", "kextload", "open", "sudo"}) {
        QFile::link(script, folder.filePath("tools/") + name);
    }
    qputenv("PATH", QFile::encodeName(folder.filePath("tools")) + ':' + previousPath);
    QDir::setCurrent(folder.path());
}

StandInTools::~StandInTools()
{
    QDir::setCurrent(previousFolder);
    qputenv("PATH", previousPath);
}

void StandInTools::answer(const QString &commandLine, const QByteArray &output, int status)
{
    const QString file = folder.filePath("tools/answers/") + commandLine;
    QDir().mkpath(QFileInfo(file).path());
    writeFile(file + ".output", output);
    writeFile(file + ".status", QByteArray::number(status) + '\n');
}

void StandInTools::replace(const QString &tool, const QByteArray &commands)
{
    writeFile(folder.filePath("tools/replacements/") + tool, commands + "\n");
}

void StandInTools::installCompanion()
{
    answer("ls /Library/LaunchDaemons", "com.example.other.plist\ncom.tarvo.quaydesk.service.plist\n");
}

QStringList StandInTools::calls() const
{
    QFile file(folder.filePath("tools/calls"));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QStringList lines = QString::fromUtf8(file.readAll()).split('\n');
    lines.removeLast();
    return lines;
}

void StandInTools::forgetCalls()
{
    QFile::remove(folder.filePath("tools/calls"));
}

QString StandInTools::path() const
{
    return QDir::currentPath();
}
