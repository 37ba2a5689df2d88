// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBPresetFile.h"
#include "Source/Model/QNBHierarchyDepth.h"

#include "Platform/PropertyLists/KeyedUnarchiver.h"
#include "Tests/Session/Umask.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

QNBPresetRecordPtr preset(const QString &label)
{
    const QVariantMap stored{
        {QNBPresetKey::label, label},
        {QNBPresetKey::scriptFile, QStringLiteral("open.sh")},
        {QStringLiteral("extra"), QVariantList{1LL, 2.5, true}},
        {QNBPresetKey::fileHierarchy,
         QVariantMap{{QStringLiteral("isFolder"), true},
                     {QStringLiteral("permissions"), QStringLiteral("764")},
                     {QStringLiteral("children"),
                      QVariantList{QVariantMap{{QStringLiteral("filename"), QStringLiteral("a.txt")},
                                               {QStringLiteral("permissions"), QStringLiteral("640")}}}}}}};
    return QNBPresetRecord::fromStored(PropertyListDocument::fromVariant(stored)->root());
}

} // namespace

class QNBPresetFileTest : public ::testing::Test
{
protected:
    QString write(const QNBPresetRecord &record)
    {
        QString name;
        const Result<> written = QNBPresetFile::write(record, folder_.path(), &name);
        EXPECT_TRUE(written) << qPrintable(written.error);
        return name;
    }
    Result<QNBPresetRecordPtr> read(const QString &name) const
    {
        return QNBPresetFile::read(folder_.filePath(name));
    }

    QTemporaryDir folder_;
};

TEST_F(QNBPresetFileTest, ALabelWithSlashOrColonIsExportedUnderItsCleanedUpName)
{
    EXPECT_EQ(write(*preset(QStringLiteral("Client: 2026/Q1 ~draft"))),
              QStringLiteral("Client 2026Q1 draft.qnbp"));
    EXPECT_TRUE(QFileInfo::exists(folder_.filePath(QStringLiteral("Client 2026Q1 draft.qnbp"))));
}

TEST_F(QNBPresetFileTest, ALabelOfUnsafeCharactersOnlyIsExportedAsQNBPreset)
{
    EXPECT_EQ(write(*preset(QStringLiteral("/~:"))), QStringLiteral("QNB Preset.qnbp"));
    EXPECT_EQ(QNBPresetFile::fileNameForLabel(QString()), QStringLiteral("QNB Preset.qnbp"));
}

TEST_F(QNBPresetFileTest, ImportIsLabelledByTheFileNameWhateverLabelItHolds)
{
    const QString name = write(*preset(QStringLiteral("Another Label")));
    ASSERT_TRUE(QFile::rename(folder_.filePath(name), folder_.filePath(QStringLiteral("Client X.qnbp"))));
    const Result<QNBPresetRecordPtr> read = this->read(QStringLiteral("Client X.qnbp"));
    ASSERT_TRUE(read) << qPrintable(read.error);
    const QNBPresetRecordPtr imported = *read;
    EXPECT_EQ(imported->label(), QStringLiteral("Client X"));
}

TEST_F(QNBPresetFileTest, TheFilesExtensionIsNotChecked)
{
    const QString name = write(*preset(QStringLiteral("A")));
    for (const auto &[file, label] :
         {std::pair{QStringLiteral("v1.2 final.zip"), QStringLiteral("v1.2 final")},
          std::pair{QStringLiteral("plain"), QStringLiteral("plain")},
          std::pair{QStringLiteral(".qnbp"), QStringLiteral(".qnbp")}}) {
        ASSERT_TRUE(QFile::copy(folder_.filePath(name), folder_.filePath(file)));
        const Result<QNBPresetRecordPtr> read = this->read(file);
        ASSERT_TRUE(read) << qPrintable(read.error);
        const QNBPresetRecordPtr imported = *read;
        EXPECT_EQ(imported->label(), label);
    }
}

TEST_F(QNBPresetFileTest, EveryKeyAndTheTreeSurviveWithoutUids)
{
    const QNBPresetRecordPtr original = preset(QStringLiteral("A"));
    const Result<QNBPresetRecordPtr> read = this->read(write(*original));
    ASSERT_TRUE(read) << qPrintable(read.error);
    const QNBPresetRecordPtr imported = *read;
    EXPECT_EQ(imported->toStored(), original->toStored());
    EXPECT_NE(imported->fileHierarchy()->uid(), original->fileHierarchy()->uid());
    QFile file(folder_.filePath(QStringLiteral("A.qnbp")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QVariantMap archived =
        KeyedUnarchiver::unarchiveObject(file.readAll()).value.value_or(QVariant()).toMap();
    EXPECT_EQ(archived.value(QNBPresetKey::fileHierarchy),
              QVariant(original->fileHierarchy()->toDictionary()));
}

TEST_F(QNBPresetFileTest, TheArchiveHoldsTheLabelAsItStood)
{
    for (const QVariant &label : {QVariant(QStringLiteral("Client: 2026/Q1 ~draft")), QVariant(12LL)}) {
        const QNBPresetRecordPtr record = preset({});
        record->setValueForKey(label, QNBPresetKey::label);
        QFile file(folder_.filePath(write(*record)));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QVariant archived = KeyedUnarchiver::unarchiveObject(file.readAll()).value.value_or(QVariant());
        EXPECT_EQ(archived.toMap().value(QNBPresetKey::label), label) << qPrintable(file.fileName());
    }
}

TEST_F(QNBPresetFileTest, AnExistingFileOfThatNameIsReplaced)
{
    const QNBPresetRecordPtr record = preset(QStringLiteral("A"));
    write(*record);
    record->setValueForKey(QStringLiteral("new"), QStringLiteral("extra"));
    EXPECT_EQ((*read(write(*record)))->valueForKey(QStringLiteral("extra")), QVariant(QStringLiteral("new")));
}

TEST_F(QNBPresetFileTest, TheUmaskDecidesWhoMayReadAnExportedPreset)
{
    for (const unsigned mask : {022U, 027U, 077U}) {
        const Umask umask(mask);
        const QString path = folder_.filePath(write(*preset(QStringLiteral("A"))));
        struct stat information = {};
        ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &information), 0);
        EXPECT_EQ(information.st_mode & 07777, 0666U & ~mask) << std::oct << mask;
        ASSERT_TRUE(QFile::remove(path));
    }
}

TEST_F(QNBPresetFileTest, ALinkPlantedInASharedFolderIsReplacedAndNotFollowed)
{
    QFile victim(folder_.filePath(QStringLiteral(".bashrc")));
    ASSERT_TRUE(victim.open(QIODevice::WriteOnly) && victim.write("mine") == 4);
    victim.close();
    ASSERT_TRUE(QFile::link(victim.fileName(), folder_.filePath(QStringLiteral("Invoice.qnbp"))));
    const QString name = write(*preset(QStringLiteral("Invoice")));
    EXPECT_FALSE(QFileInfo(folder_.filePath(name)).isSymLink());
    EXPECT_EQ(read(name).error, QString());
    ASSERT_TRUE(victim.open(QIODevice::ReadOnly));
    EXPECT_EQ(victim.readAll(), "mine");
}

TEST_F(QNBPresetFileTest, AFailedWriteSaysSoAndStillNamesTheFile)
{
    QString name;
    const Result<> written =
        QNBPresetFile::write(*preset(QStringLiteral("A")), folder_.filePath(QStringLiteral("absent")), &name);
    EXPECT_FALSE(written);
    EXPECT_FALSE(written.error.isEmpty());
    EXPECT_EQ(name, QStringLiteral("A.qnbp"));
}

TEST_F(QNBPresetFileTest, ALabelThatIsNoFileNameIsRefusedNotShortened)
{
    QString name;
    EXPECT_FALSE(QNBPresetFile::write(*preset(QString(300, u'x')), folder_.path(), &name));
    EXPECT_FALSE(
        QNBPresetFile::write(*preset(QStringLiteral("a") + QChar(u'\0') + u'b'), folder_.path(), &name));
    EXPECT_TRUE(QDir(folder_.path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

TEST_F(QNBPresetFileTest, AFileIsRefusedThatTheListOfPresetsCouldNotBeSavedWith)
{
    const QNBHierarchyItemPtr root = QNBHierarchyItem::init();
    QNBHierarchyItemPtr deepest = root;
    const auto addLevel = [&deepest] {
        const QNBHierarchyItemPtr child = QNBHierarchyItem::init();
        deepest->addChild(child);
        deepest = child;
    };
    for (int level = 0; level < QNBHierarchyDepth::deepest; ++level)
        addLevel();
    QNBPresetRecord record;
    record.setFileHierarchy(root);
    QString name;
    ASSERT_TRUE(QNBPresetFile::write(record, folder_.path(), &name));
    EXPECT_EQ(read(name).error, QString());

    addLevel();
    ASSERT_TRUE(QNBPresetFile::write(record, folder_.path(), &name));
    EXPECT_FALSE(read(name).error.isEmpty());
}

TEST_F(QNBPresetFileTest, FilesWithoutEntriesAreNoPresets)
{
    const auto refused = [this](const QByteArray &bytes) {
        QFile file(folder_.filePath(QStringLiteral("x.qnbp")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
        file.close();
        const Result<QNBPresetRecordPtr> result = read(QStringLiteral("x.qnbp"));
        return !result && !result.error.isEmpty();
    };
    EXPECT_TRUE(refused({}));
    EXPECT_TRUE(refused("not an archive"));
    EXPECT_TRUE(
        refused(KeyedArchiver::archivedDataWithRootObject(QVariantMap()).bytes.value_or(QByteArray())));
    EXPECT_TRUE(refused(
        KeyedArchiver::archivedDataWithRootObject(QStringLiteral("text")).bytes.value_or(QByteArray())));
    EXPECT_FALSE(read(QStringLiteral("absent.qnbp")));
}
