#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

namespace bench {

/// What a fault takes as its value.
enum class FaultValue { None, Number, OptionalNumber, Text, OptionalText, Field };

/// One kind of fault, as the command lists it.
struct FaultKind
{
    const char *name;
    FaultValue value;
    const char *valueName; ///< what the value is called in help texts; empty when there is none
    const char *description;
    qint64 minimum = 0; ///< of a value that is a number, both limits included
    qint64 maximum = 0;
};

/// A fault set on a drive.
struct Fault
{
    QString name; ///< name of a FaultKind
    qint64 number = 0; ///< the value of a kind that takes a number
    QString field; ///< the field that "text" sets
    QString text; ///< the value of a kind that takes text, code points U+0000 to U+00FF
    bool once = false; ///< cleared by the first time that it has its effect
};

/// All kinds of faults.
const QVector<FaultKind> &faultKinds();

/// The kind of that name, null when there is none.
const FaultKind *findFaultKind(const QString &name);

/// The fields that the fault "text" can set.
QStringList faultFields();

/// The fault with that name among `faults`; for "text", the one that sets `field`. Null when there is none.
const Fault *findFault(const QVector<Fault> &faults, const char *name, const QString &field = QString());

/// True when its kind exists and takes its value.
bool isValid(const Fault &fault);

/// True for a fault that changes what discovery reports and is cleared by being reported once.
bool actsOnQuery(const Fault &fault);

} // namespace bench
