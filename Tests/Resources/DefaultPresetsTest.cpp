// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/PropertyList.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <gtest/gtest.h>

namespace {

const QString fileContentFolder = QStringLiteral(QUENBY_RESOURCES "/QNB Default AppSupport/File Content/");
const QString shippedScripts = QStringLiteral(QUENBY_RESOURCES "/QNB Default AppSupport/Scripts/");

const QSet<QString> recordKeys = {QStringLiteral("label"), QStringLiteral("fileHierarchy"),
                                  QStringLiteral("scriptFile"), QStringLiteral("presetDescription")};
const QSet<QString> itemKeys = {QStringLiteral("filename"),        QStringLiteral("isFolder"),
                                QStringLiteral("color"),           QStringLiteral("permissions"),
                                QStringLiteral("contentFilename"), QStringLiteral("children")};
const QSet<QString> colors = {QStringLiteral("red"),   QStringLiteral("orange"), QStringLiteral("yellow"),
                              QStringLiteral("green"), QStringLiteral("blue"),   QStringLiteral("purple"),
                              QStringLiteral("gray")};

QSet<QString> keysOf(const QVariantMap &dictionary)
{
    return QSet<QString>(dictionary.keyBegin(), dictionary.keyEnd());
}

/// The presets, checked while they are walked.
class DefaultPresetsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QFile file(QStringLiteral(QUENBY_RESOURCES "/DefaultPresets.plist"));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const PropertyList::ReadResult result = PropertyList::read(file.readAll());
        ASSERT_TRUE(result) << qPrintable(result.error);
        ASSERT_EQ(result.value->metaType(), QMetaType::fromType<QVariantList>());
        presets_ = result.value->toList();
    }

    /// Calls \a visit with every item below the root of every preset, its path and its siblings' names so
    /// far.
    template <typename Visit>
    void forEachItem(Visit visit) const
    {
        for (const QVariant &preset : presets_) {
            const QVariantMap record = preset.toMap();
            walk(record[QStringLiteral("fileHierarchy")].toMap(), record[QStringLiteral("label")].toString(),
                 visit);
        }
    }

    QVariantList presets_;

private:
    template <typename Visit>
    static void walk(const QVariantMap &folder, const QString &path, Visit &visit)
    {
        QSet<QString> siblings;
        for (const QVariant &child : folder[QStringLiteral("children")].toList()) {
            const QVariantMap item = child.toMap();
            const QString name = item[QStringLiteral("filename")].toString();
            visit(item, path + u'/' + name, siblings);
            siblings.insert(name.toCaseFolded());
            walk(item, path + u'/' + name, visit);
        }
    }
};

bool isFolder(const QVariantMap &item)
{
    return item[QStringLiteral("isFolder")].toBool();
}

int depth(const QVariantMap &item)
{
    int deepest = 0;
    for (const QVariant &child : item[QStringLiteral("children")].toList())
        deepest = std::max(deepest, depth(child.toMap()));
    return deepest + 1;
}

} // namespace

TEST_F(DefaultPresetsTest, TheBundleHasThemInTheFormThatIsReadFaster)
{
    QFile file(QStringLiteral(QUENBY_BUNDLE_RESOURCES "/DefaultPresets.plist"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    EXPECT_TRUE(bytes.startsWith("bplist00"));
    const PropertyList::ReadResult result = PropertyList::read(bytes);
    ASSERT_TRUE(result) << qPrintable(result.error);
    EXPECT_EQ(*result.value, QVariant(presets_));
}

TEST_F(DefaultPresetsTest, SixKindsOfWorkAreThere)
{
    QStringList labels;
    for (const QVariant &preset : presets_)
        labels.append(preset.toMap()[QStringLiteral("label")].toString());
    for (const char *label : {"Client Project", "Event", "Photo Shoot", "Research Project",
                              "Software Project", "Video Production"})
        EXPECT_TRUE(labels.contains(QString::fromLatin1(label))) << label;
    labels.removeDuplicates();
    EXPECT_EQ(labels.size(), presets_.size()) << "two presets have the same label";
}

TEST_F(DefaultPresetsTest, RecordsHoldWhatTheStoreKnowsAndNothingElse)
{
    for (const QVariant &preset : presets_) {
        const QVariantMap record = preset.toMap();
        const std::string label = record[QStringLiteral("label")].toString().toStdString();
        EXPECT_TRUE(recordKeys.contains(keysOf(record))) << label;
        EXPECT_FALSE(record[QStringLiteral("presetDescription")].toString().isEmpty()) << label;
        const QVariantMap root = record[QStringLiteral("fileHierarchy")].toMap();
        EXPECT_TRUE(isFolder(root)) << label << ": the root stands for the target folder";
        EXPECT_TRUE(itemKeys.contains(keysOf(root))) << label;
        EXPECT_GE(depth(root), 3) << label << " is hardly a structure";
        const QString script = record[QStringLiteral("scriptFile")].toString();
        EXPECT_TRUE(script.isEmpty() || QFileInfo(shippedScripts + script).isExecutable())
            << label << ": " << qPrintable(script);
    }
}

TEST_F(DefaultPresetsTest, ItemsHoldKnownKeysOnly)
{
    forEachItem([](const QVariantMap &item, const QString &path, const QSet<QString> &) {
        EXPECT_TRUE(itemKeys.contains(keysOf(item))) << qPrintable(path);
        EXPECT_TRUE(isFolder(item) || !item.contains(QStringLiteral("isFolder")))
            << qPrintable(path) << ": the key is absent for a file";
        EXPECT_TRUE(isFolder(item) || !item.contains(QStringLiteral("children"))) << qPrintable(path);
    });
}

TEST_F(DefaultPresetsTest, NamesAreValidAndUniqueInTheirFolder)
{
    forEachItem([](const QVariantMap &item, const QString &path, const QSet<QString> &siblings) {
        const QString name = item[QStringLiteral("filename")].toString();
        EXPECT_FALSE(name.isEmpty()) << qPrintable(path);
        EXPECT_FALSE(name == u"." || name == u"..") << qPrintable(path);
        EXPECT_FALSE(name.contains(u'/') || name.contains(u':') || name.contains(QChar::Null))
            << qPrintable(path);
        EXPECT_LE(name.toUtf8().size(), 255) << qPrintable(path);
        EXPECT_FALSE(siblings.contains(name.toCaseFolded())) << qPrintable(path) << " is there twice";
    });
}

TEST_F(DefaultPresetsTest, ColoursAreOfTheVocabularyAndAllInUse)
{
    QSet<QString> used;
    forEachItem([&used](const QVariantMap &item, const QString &path, const QSet<QString> &) {
        if (!item.contains(QStringLiteral("color")))
            return;
        const QString color = item[QStringLiteral("color")].toString();
        EXPECT_TRUE(colors.contains(color)) << qPrintable(path) << ": " << qPrintable(color);
        used.insert(color);
    });
    EXPECT_EQ(used, colors);
}

TEST_F(DefaultPresetsTest, PermissionsLetTheOwnerWork)
{
    static const QRegularExpression threeDigits(QStringLiteral("\\A[0-7]{3}\\z"));
    forEachItem([](const QVariantMap &item, const QString &path, const QSet<QString> &) {
        const QString permissions = item[QStringLiteral("permissions")].toString();
        ASSERT_TRUE(threeDigits.match(permissions).hasMatch()) << qPrintable(path);
        const int owner = permissions[0].digitValue();
        EXPECT_EQ(owner & 6, 6) << qPrintable(path) << ": the owner reads and writes";
        if (isFolder(item)) {
            EXPECT_EQ(owner, 7) << qPrintable(path) << ": the owner enters the folder";
        }
    });
}

TEST_F(DefaultPresetsTest, ContentFilesExistAndEachIsUsed)
{
    QSet<QString> used;
    forEachItem([&used](const QVariantMap &item, const QString &path, const QSet<QString> &) {
        const QString content = item[QStringLiteral("contentFilename")].toString();
        if (content.isEmpty())
            return;
        EXPECT_FALSE(isFolder(item)) << qPrintable(path);
        const QFileInfo file(fileContentFolder + content);
        EXPECT_TRUE(file.isFile()) << qPrintable(path) << ": " << qPrintable(content);
        EXPECT_EQ(item[QStringLiteral("permissions")].toString().startsWith(u'7'), file.isExecutable())
            << qPrintable(path) << ": what can be run says so";
        used.insert(content);
    });
    const QDir folder(fileContentFolder);
    for (const QString &trade : folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        for (const QString &file : QDir(folder.filePath(trade)).entryList(QDir::Files))
            EXPECT_TRUE(used.contains(trade + u'/' + file)) << qPrintable(file) << " is used by no preset";
    }
}
