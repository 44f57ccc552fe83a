// SPDX-License-Identifier: MIT
#include "tests/companion/CLibrary.h"

#include <cstdio>
#include <cstdlib>

#include <dlfcn.h>

namespace {

QStringList recorded;
bool shell = true;
QHash<QByteArray, int> statusOf;
const FILE *opened = nullptr; // by the last fopen; one file at a time is open

/// The C library's own function behind the one of that name here.
template <typename Function>
Function *original(Function *, const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

} // namespace

void CLibrary::reset()
{
    recorded.clear();
    shell = true;
}

void CLibrary::withoutShell(const QHash<QByteArray, int> &statuses)
{
    recorded.clear();
    shell = false;
    statusOf = statuses;
}

QStringList CLibrary::calls()
{
    return recorded;
}

// The program's own calls are bound to these, which hide the C library's. Whether a function may throw is
// said as the C library's header says it.

extern "C" int system(const char *command)
{
    recorded.append(QString("system(%1)").arg(QString::fromLatin1(command)));
    return shell ? original(&system, "system")(command) : statusOf.value(command, 0);
}

extern "C" FILE *fopen(const char *path, const char *mode)
{
    recorded.append(QString("fopen(%1, %2)").arg(QString::fromLatin1(path), QString::fromLatin1(mode)));
    FILE *const file = original(&fopen, "fopen")(path, mode);
    opened = file;
    return file;
}

extern "C" int fclose(FILE *file)
{
    if (file == opened) {
        recorded.append("fclose()");
        opened = nullptr;
    }
    return original(&fclose, "fclose")(file);
}

extern "C" int remove(const char *path) noexcept(noexcept(::remove(path)))
{
    recorded.append(QString("remove(%1)").arg(QString::fromLatin1(path)));
    return original(&remove, "remove")(path);
}
