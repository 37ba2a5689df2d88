// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Session/TemporaryHome.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QStringList>
#include <QVariantMap>
#include <gtest/gtest.h>

inline QString text(const char *string)
{
    return QString::fromUtf8(string);
}

/// A user who has the pane with the helper in it, presets, and a folder to create them in.
class HelperFixture : public ::testing::Test
{
protected:
    struct Ended
    {
        /// -1 if a signal ended it.
        int code = -1;
        QByteArray output;
        QByteArray errors;

        QJsonDocument json() const;
    };

    HelperFixture();

    /// The helper, as the pane carries it.
    QString program() const;
    /// Where the pane's resources are.
    static QString resources();
    Ended run(const QStringList &arguments, const QString &busAddress = {});
    Ended create(const QString &preset, const QStringList &more = {}, const QString &busAddress = {});

    /// Item dictionaries.
    static QVariantMap file(const QString &name, const QVariantMap &more = {});
    static QVariantMap folder(const QString &name, const QVariantList &children,
                              const QVariantMap &more = {});
    static QVariantMap preset(const QString &label, const QVariantList &children, const QString &script = {});
    /// Stores them as the pane does.
    void storePresets(const QList<QVariantMap> &presets);

    /// Makes the folder of scripts or content files, and a file in it.
    void putScript(const QString &name, const QByteArray &bytes);
    void putContent(const QString &name, const QByteArray &bytes);

    QString target() const { return home_.filePath(QStringLiteral("target")); }
    /// All that is below the target, sorted; folders end in a slash.
    QStringList tree() const { return tree(target()); }
    static QStringList tree(const QString &folder);
    QByteArray bytesOf(const QString &name) const;

    TemporaryHome home_;

private:
    void put(const QString &path, const QByteArray &bytes, bool isExecutable);
};
