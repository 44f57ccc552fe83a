#pragma once

#include "bench/command/CommandLine.h"

#include <QVector>

namespace bench {

/// The commands of drive-bench, in the order in which its help lists them.
QVector<Command> allCommands();

// Each family of commands has a source file of its own.
QVector<Command> benchCommands(); ///< init, models, list, show
QVector<Command> driveCommands(); ///< add, remove, plug, unplug, replug, power-cycle
QVector<Command> faultCommands(); ///< fault, clear
QVector<Command> imageCommands(); ///< image build, image inspect
QVector<Command> hostCommands(); ///< companion install, uninstall, start and stop
QVector<Command> watchCommands(); ///< watch, panel

/// The serial number that an argument names: \xNN stands for any byte. False when it cannot be one.
bool readSerial(const QString &argument, QString *serial);

/// True when --firmware and --configuration, where they are given, can stand in an image.
bool hasVersions(const CommandLine &line);
/// What those two options take, for a person.
QString versionRule();

} // namespace bench
