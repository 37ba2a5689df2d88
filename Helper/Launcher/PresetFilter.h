// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// Finds presets by what is typed of their labels. Case, accents and other marks do not count, nor does what
/// is after the first 1,024 characters of a label.
class PresetFilter
{
public:
    explicit PresetFilter(const QStringList &labels = {});

    /// The places, from 0, of the labels that hold every part of \a typed, its parts being what blanks
    /// separate. The labels that begin with all that was typed come first, then those in which each part
    /// begins a word, then the others; among each of these they keep their order.
    QList<qsizetype> placesFor(const QString &typed) const;

private:
    QStringList folded_;
};
