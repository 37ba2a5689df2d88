// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Preferences/Preferences.h"
#include "Platform/PropertyLists/PropertyList.h"
#include "Tests/Platform/Files/FileFixture.h"

#include <QProcessEnvironment>

/// A domain in a folder of its own, locks included.
class PreferencesFixture : public FileFixture
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir(root()).mkdir(QStringLiteral("config")));
        ASSERT_TRUE(QDir(root()).mkdir(QStringLiteral("locks")));
    }

    QString folder() const { return in(QStringLiteral("config")); }
    QString file() const { return in(QStringLiteral("config/org.example.Test.plist")); }
    QString backup() const { return file() + QStringLiteral(".backup"); }
    QStringList asides(const QString &of = QStringLiteral("org.example.Test.plist")) const
    {
        return QDir(folder()).entryList({of + QStringLiteral(".damaged-*")}, QDir::Files | QDir::System);
    }
    /// What the copies hold that are kept of a file that is good.
    QList<QByteArray> copies() const
    {
        QList<QByteArray> result;
        for (const QString &name : QDir(folder()).entryList({QStringLiteral("*.before-*")}, QDir::Files))
            result.append(contentOf(QDir(folder()).filePath(name)));
        return result;
    }

    Preferences::Options options(FileLayer *layer = nullptr) const
    {
        return {folder(), in(QStringLiteral("locks")), layer, 200};
    }
    std::unique_ptr<Preferences> preferences(FileLayer *layer = nullptr) const
    {
        return std::make_unique<Preferences>(domain, options(layer));
    }

    static QByteArray listOf(const QVariantMap &values, PropertyList::Form form = PropertyList::Form::Binary)
    {
        return PropertyList::write(values, form).bytes.value_or(QByteArray());
    }
    QVariantMap onDisk() const { return valuesOf(contentOf(file())); }
    static QVariantMap valuesOf(const QByteArray &bytes)
    {
        const PropertyList::ReadResult result = PropertyList::read(bytes);
        EXPECT_TRUE(result) << qPrintable(result.error);
        return result.value.value_or(QVariant()).toMap();
    }

    /// Saves one key with another instance.
    void save(const QString &key, const QVariant &value) const
    {
        const auto other = preferences();
        other->setAppValue(key, value);
        const Result<> result = other->appSynchronize();
        ASSERT_TRUE(result) << qPrintable(result.error);
    }

    inline static const QString domain = QStringLiteral("org.example.Test");
    inline static const QString one = QStringLiteral("one");
    inline static const QString two = QStringLiteral("two");
};
