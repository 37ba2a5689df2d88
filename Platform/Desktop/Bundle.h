// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QList>
#include <QString>
#include <QVariant>
#include <optional>

/// A bundle in the directory form `X.prefPane/Contents/{Info.plist,MacOS,Resources}`. A value; only the path
/// is kept, so what it answers is what is on disk now.
class Bundle
{
public:
    /// The bundle at \a path, or none if that is no directory with a readable `Contents/Info.plist`.
    static std::optional<Bundle> bundleWithPath(const QString &path);

    /// Whether \a path is a directory that users take for one thing: one that bundleWithPath() opens, or one
    /// that is named like a bundle (.app, .bundle, .plugin, .framework) and has a folder `Contents` or
    /// `AppDir`.
    static bool isBundle(const QString &path);
    /// What runs when a user opens the thing at \a path: the executable of what bundleWithPath() opens, else
    /// the file `AppDir/AppRun` of what isBundle() names; empty if there is none.
    static QString programOf(const QString &path);
    static bool isNamedLikeAnApplication(const QString &path);
    /// Whether it is such a thing that is named like an application.
    static bool isApplicationBundle(const QString &path);

    /// The four-character codes in an information file, "CFBundlePackageType" and "CFBundleSignature"; 0
    /// where there is none.
    struct Codes
    {
        quint32 type = 0;
        quint32 signature = 0;
        friend bool operator==(const Codes &, const Codes &) = default;
    };
    /// Those of the bundle that the file \a executable lies in as its code.
    static Codes codesOfExecutable(const QString &executable);

    /// The bundles of which code is mapped into this process, in the dynamic loader's order: found by asking
    /// the loader, so that the host and the panes it loads agree without sharing state.
    static QList<Bundle> allBundles();

    QString bundlePath() const { return path_; }
    /// "CFBundleIdentifier", or empty.
    QString bundleIdentifier() const;
    /// `Contents/Resources`.
    QString resourcePath() const;
    /// `Contents/MacOS/<CFBundleExecutable>`, or empty if no such file is named or there.
    QString executablePath() const;
    /// The same, though the file may not be there.
    QString expectedExecutablePath() const;
    /// The path of `<name>.<type>` (`<name>` if \a type is empty) below the resources, in \a directory
    /// relative to them if given ("..": the top-level information file's folder); empty if nothing is there.
    QString pathForResource(const QString &name, const QString &type, const QString &directory = {}) const;
    /// `Contents/Info.plist` as a dictionary; empty if it cannot be read.
    QVariantMap infoDictionary() const;

private:
    explicit Bundle(QString path);
    QString path_;
};
