// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Presets.h"

#include "Tests/Platform/Files/FileFixture.h"

#include <gmock/gmock.h>

using ::testing::HasSubstr;

namespace {

QNBPresetRecordPtr preset(const QString &label)
{
    auto record = std::make_shared<QNBPresetRecord>();
    record->setValueForKey(label, QNBPresetKey::label);
    return record;
}

class PresetsTest : public FileFixture
{
};

} // namespace

TEST_F(PresetsTest, APresetIsNamedByItsLabel)
{
    const QList<QNBPresetRecordPtr> presets = {preset(QStringLiteral("one")), preset(QStringLiteral("#1")),
                                               preset(QString())};
    QString error;
    EXPECT_EQ(presetNamed(presets, QStringLiteral("one"), &error), presets[0]);
    EXPECT_EQ(presetNamed(presets, QString(), &error), presets[2]);
    EXPECT_EQ(presetNamed(presets, QStringLiteral("One"), &error), nullptr);
    EXPECT_FALSE(error.isEmpty());
}

TEST_F(PresetsTest, OrByItsNumberIfNoneHasThatLabel)
{
    const QList<QNBPresetRecordPtr> presets = {preset(QStringLiteral("one")), preset(QStringLiteral("#1")),
                                               preset(QStringLiteral("two"))};
    QString error;
    EXPECT_EQ(presetNamed(presets, QStringLiteral("#1"), &error), presets[1]);
    EXPECT_EQ(presetNamed(presets, QStringLiteral("#3"), &error), presets[2]);
    for (const char *name : {"#0", "#4", "#-1", "#", "3", "#3x", "#99999999999999999999"})
        EXPECT_EQ(presetNamed(presets, QString::fromLatin1(name), &error), nullptr) << name;
}

TEST_F(PresetsTest, ALabelThatSeveralHaveNamesNone)
{
    const QList<QNBPresetRecordPtr> presets = {preset(QStringLiteral("a")), preset(QStringLiteral("b")),
                                               preset(QStringLiteral("a"))};
    QString error;
    EXPECT_EQ(presetNamed(presets, QStringLiteral("a"), &error), nullptr);
    EXPECT_THAT(error.toStdString(), HasSubstr("#1, #3"));
    EXPECT_EQ(presetNamed(presets, QStringLiteral("#3"), &error), presets[2]);
}

TEST_F(PresetsTest, WhatAMenuShowsIsNamedByLabelAndPlaceAmongThoseThatHaveIt)
{
    const QList<QNBPresetRecordPtr> presets = {preset(QStringLiteral("a")), preset(QStringLiteral("b")),
                                               preset(QStringLiteral("a")), preset(QStringLiteral("#2"))};
    const auto shown = [&](const char *label, std::optional<int> position = {}) {
        QString error;
        const QNBPresetRecordPtr found = presetShown(presets, QString::fromLatin1(label), position, &error);
        EXPECT_EQ(found == nullptr, error.contains(QLatin1String(label))) << label;
        return found;
    };
    EXPECT_EQ(shown("b"), presets[1]);
    EXPECT_EQ(shown("b", 1), presets[1]);
    EXPECT_EQ(shown("a", 1), presets[0]);
    EXPECT_EQ(shown("a", 2), presets[2]);
    EXPECT_EQ(shown("#2", 1), presets[3]) << "the label, not the second one";
    EXPECT_EQ(shown("a"), nullptr) << "one of two";
    for (const int position : {-1, 0, 3})
        EXPECT_EQ(shown("a", position), nullptr) << position;
    for (const char *label : {"c", "#1", "#3"}) {
        EXPECT_EQ(shown(label), nullptr) << label;
        EXPECT_EQ(shown(label, 1), nullptr) << label;
    }
}

TEST_F(PresetsTest, ItemsAreCountedAtAnyDepthWithoutTheRoot)
{
    QNBPresetRecord record;
    EXPECT_EQ(numberOfItems(record), 0);
    const QNBHierarchyItemPtr root = QNBHierarchyItem::init();
    record.setFileHierarchy(root);
    EXPECT_EQ(numberOfItems(record), 0);
    QNBHierarchyItemPtr item = root;
    for (int depth = 0; depth < 10000; ++depth) {
        item->addChild(QNBHierarchyItem::init());
        item->addChild(QNBHierarchyItem::init());
        item = item->childAtIndex(0);
    }
    EXPECT_EQ(numberOfItems(record), 20000);
}

TEST_F(PresetsTest, ThePaneIsTheBundleAroundTheHelper)
{
    const QString contents = in(QStringLiteral("Any name.prefPane/Contents"));
    const QString executableFolder = contents + QStringLiteral("/MacOS/QNBHelper.app/Contents/MacOS");
    QDir().mkpath(executableFolder);
    EXPECT_FALSE(paneBundle(executableFolder));
    put(contents + QStringLiteral("/Info.plist"),
        "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>org.example.Other</string></dict>"
        "</plist>");
    EXPECT_FALSE(paneBundle(executableFolder)) << "another product's";
    put(contents + QStringLiteral("/Info.plist"),
        "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>org.quenby.Quenby</string></dict>"
        "</plist>");
    const std::optional<Bundle> pane = paneBundle(executableFolder);
    ASSERT_TRUE(pane);
    EXPECT_EQ(pane->bundlePath(), in(QStringLiteral("Any name.prefPane")));
    EXPECT_FALSE(paneBundle(root()));
    EXPECT_FALSE(paneBundle(QStringLiteral("/")));
}
