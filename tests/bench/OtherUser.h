#pragma once

#include <QtGlobal>

#include <unistd.h>

/// Another user for as long as this object lives, where root would be allowed everything.
class OtherUser
{
public:
    OtherUser() : isRoot(::geteuid() == 0)
    {
        if (isRoot && ::seteuid(65534) != 0) {
            qFatal("cannot become another user");
        }
    }
    ~OtherUser()
    {
        if (isRoot && ::seteuid(0) != 0) {
            qFatal("cannot become root again");
        }
    }
    Q_DISABLE_COPY(OtherUser)

private:
    const bool isRoot;
};
