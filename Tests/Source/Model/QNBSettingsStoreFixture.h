// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Model/QNBSettingsStore.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

inline const QString domain = QStringLiteral("org.quenby.Quenby");

inline QVariantMap item(const QString &name)
{
    return {{QStringLiteral("filename"), name}};
}

inline QVariantMap record(const QString &label)
{
    return {{QNBPresetKey::label, label},
            {QNBPresetKey::fileHierarchy,
             QVariantMap{{QStringLiteral("isFolder"), true},
                         {QStringLiteral("permissions"), QStringLiteral("764")},
                         {QStringLiteral("children"), QVariantList{item(QStringLiteral("inside"))}}}}};
}

inline void writeFile(const QString &path, const QByteArray &bytes)
{
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

inline void writePropertyList(const QString &path, const QVariant &value)
{
    const PropertyList::WriteResult written = PropertyList::write(value, PropertyList::Form::XML);
    ASSERT_TRUE(written) << qPrintable(written.error);
    writeFile(path, *written.bytes);
}

inline QStringList labels(const QNBSettings &settings)
{
    QStringList result;
    for (const QNBPresetRecordPtr &preset : settings.presets)
        result << preset->label();
    return result;
}

/// A domain and a pane bundle with default presets, in a temporary folder.
class QNBSettingsStoreFixture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(folder_.isValid());
        const QString contents = folder_.filePath(QStringLiteral("Quenby.prefPane/Contents"));
        writePropertyList(contents + QStringLiteral("/Info.plist"),
                          QVariantMap{{QStringLiteral("CFBundleIdentifier"), domain},
                                      {QStringLiteral("CFBundleShortVersionString"), QStringLiteral("1.2")}});
        writePropertyList(
            resource(QStringLiteral("DefaultPresets.plist")),
            QVariantList{record(QStringLiteral("Default A")), record(QStringLiteral("Default B"))});
    }

    QString resource(const QString &name) const
    {
        return folder_.filePath(QStringLiteral("Quenby.prefPane/Contents/Resources/")) + name;
    }
    std::optional<Bundle> bundle() const
    {
        return Bundle::bundleWithPath(folder_.filePath(QStringLiteral("Quenby.prefPane")));
    }
    Preferences::Options options() const
    {
        Preferences::Options result;
        result.folder = folder_.path();
        result.lockFolder = folder_.path();
        return result;
    }
    QString domainPath() const { return folder_.filePath(domain + QStringLiteral(".plist")); }
    QVariantMap domainOnDisk() const
    {
        QFile file(domainPath());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        const PropertyList::ReadResult result = PropertyList::read(file.readAll());
        EXPECT_TRUE(result) << qPrintable(result.error);
        return result.value.value_or(QVariant()).toMap();
    }
    QNBSettings readSettings() const
    {
        Preferences preferences(domain, options());
        QNBSettings settings;
        EXPECT_TRUE(QNBSettingsStore::read(preferences, bundle(), settings));
        return settings;
    }
    Result<> writeSettings(const QNBSettings &settings) const
    {
        Preferences preferences(domain, options());
        return QNBSettingsStore::write(preferences, settings);
    }
    QStringList keptAside() const
    {
        return QDir(folder_.path()).entryList({QStringLiteral("*.plist.before-*")}, QDir::Files);
    }

    QTemporaryDir folder_;
};
