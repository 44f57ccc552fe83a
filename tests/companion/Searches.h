// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>
#include <vector>

/// A function of the companion that looks for a text in a listing.
struct Search
{
    const char *name;
    std::function<int()> call;
    QString listing; ///< the command that makes it
    QByteArray needle;
    bool wordByWord; ///< else line by line
    QString action; ///< the command that follows a match; "%1" is what stands before the needle
    int found;
    int notFound;
};

extern const std::vector<Search> Searches;

/// What a search reads.
struct Listing
{
    const char *name;
    QByteArray content;
    bool holdsNeedle;
    QString beforeNeedle; ///< less the one character that precedes it
};

/// Listings with and without the needle, and at the limits of what the search reads at once.
QList<Listing> listingsFor(const Search &search);
