// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// A file of the tree, as the rules see it.
struct SourceFile
{
    /// Relative to the top of the tree: "Platform/Desktop/Bundle.cpp".
    QString path;
    QString text;

    QStringList lines() const { return text.split(u'\n'); }
    QString fileName() const { return path.section(u'/', -1); }
    /// The folders before the name: "Platform", "Shared/Source", "Tests/Platform".
    QString folder() const { return path.section(u'/', 0, -2); }
    bool isHeader() const { return path.endsWith(u".h"); }
    bool isCpp() const { return path.endsWith(u".cpp") || isHeader(); }
};

/// One #include line.
struct Include
{
    int line;
    /// What stands between the quotes or angle brackets.
    QString target;
    bool isQuoted;
};

QList<Include> includesOf(const SourceFile &file);

namespace SourceTree {

/// The folders that hold our code: rooms, tests, benchmarks, fuzz targets, scripts, build rules.
const QStringList &folders();

/// Every text file below them and the build rules at the top; what a test brings as data and what becomes the
/// user's are left out.
QList<SourceFile> files();

/// The file at \a path, whatever it is.
SourceFile file(const QString &path);

} // namespace SourceTree
