// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBPresetImport.h"

#include "Platform/PropertyLists/KeyedArchiver.h"
#include "Source/Model/QNBPresetFile.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class QNBPresetImportTest : public ::testing::Test
{
protected:
    QString path(const QString &name) const { return folder_.filePath(name); }
    QString file(const QString &name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return path(name);
    }
    QString presetFile(const QString &name) const
    {
        return file(
            name, *KeyedArchiver::archivedDataWithRootObject(QVariantMap{{QNBPresetKey::label, name}}).bytes);
    }
    static void waitFor(QNBPresetImport &import) { ASSERT_TRUE(import.wait(std::chrono::minutes(5))); }

    const QTemporaryDir folder_;
};

} // namespace

TEST_F(QNBPresetImportTest, EachFileThatGivesNoPresetIsLeftOutWithItsReason)
{
    const QStringList paths{
        path(QStringLiteral("vanished.qnbp")),
        presetFile(QStringLiteral("first.qnbp")),
        file(QStringLiteral("empty.qnbp"), *KeyedArchiver::archivedDataWithRootObject(QVariantMap()).bytes),
        folder_.path(),
        file(QStringLiteral("deep.qnbp"),
             "<plist version=\"1.0\">" + QByteArray("<array>").repeated(100'000)),
        presetFile(QStringLiteral("second.qnbp")),
    };
    QNBPresetImport import(paths);
    ASSERT_NO_FATAL_FAILURE(waitFor(import));
    QStringList labels;
    for (const QNBPresetRecordPtr &preset : import.presets())
        labels << preset->label();
    EXPECT_EQ(labels, QStringList({QStringLiteral("first"), QStringLiteral("second")}));

    QStringList leftOut;
    QStringList reasons;
    for (const QNBPresetImport::LeftOut &left : import.leftOut()) {
        leftOut << left.path;
        reasons << left.reason;
    }
    EXPECT_EQ(leftOut, QStringList({paths[0], paths[2], paths[3], paths[4]})) << "in their order";
    EXPECT_EQ(reasons.value(0), QStringLiteral("No such file or directory")) << "without the path";
    EXPECT_EQ(reasons.value(1), QStringLiteral("the archive holds no preset record"));
    EXPECT_EQ(reasons.value(2), QStringLiteral("not a regular file"));
    EXPECT_TRUE(reasons.value(3).contains(u"levels of nesting")) << qPrintable(reasons.value(3));
}

TEST_F(QNBPresetImportTest, AfterCancellingThereIsNeitherPresetNorReason)
{
    QNBPresetImport import({path(QStringLiteral("vanished.qnbp")), presetFile(QStringLiteral("a.qnbp"))});
    ASSERT_NO_FATAL_FAILURE(waitFor(import));
    EXPECT_EQ(import.leftOut().size(), 1);
    import.cancel();
    EXPECT_TRUE(import.leftOut().isEmpty());
    EXPECT_TRUE(import.presets().isEmpty());
}
