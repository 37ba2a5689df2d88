// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/PropertyList.h"
#include "Source/Model/QNBPresetFile.h"
#include "Tests/Exchange/ArchivePeer.h"
#include "Tests/Platform/PropertyLists/TaggedContent.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

using TaggedContent::canonical;

namespace {

/// The presets that come with the product: what people really give away.
class PresetFileExchange : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QFile file(QStringLiteral(QUENBY_DEFAULT_PRESETS));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const PropertyList::ReadResult read = PropertyList::read(file.readAll());
        ASSERT_TRUE(read) << read.error.toStdString();
        for (const QVariant &stored : read.value->toList())
            presets_.append(QNBPresetRecord::fromStored(PropertyListDocument::fromVariant(stored)->root()));
        ASSERT_GE(presets_.size(), 6);
    }

    ArchivePeer peer_;
    QList<QNBPresetRecordPtr> presets_;
};

} // namespace

TEST_F(PresetFileExchange, OurPresetFilesAreReadByGNUstep)
{
    for (const QNBPresetRecordPtr &preset : std::as_const(presets_)) {
        QString name;
        const Result<> written = QNBPresetFile::write(*preset, peer_.folder(), &name);
        ASSERT_TRUE(written) << written.error.toStdString();
        const std::optional<QVariant> read = TaggedContent::fromJson(
            peer_.outputOf(QStringLiteral(QUENBY_ARCHIVE_TOOL), {QStringLiteral("read"), peer_.path(name)}));
        ASSERT_TRUE(read);
        EXPECT_EQ(canonical(*read).toStdString(), canonical(preset->toStored()).toStdString());
    }
}

TEST_F(PresetFileExchange, GNUstepsArchivesAreImportedAsPresets)
{
    const QString imported = QStringLiteral("Client X.qnbp");
    for (const QNBPresetRecordPtr &preset : std::as_const(presets_)) {
        QVariantMap stored = preset->toStored();
        const PropertyList::WriteResult content = PropertyList::write(stored, PropertyList::Form::XML);
        ASSERT_TRUE(content) << content.error.toStdString();
        peer_.write(QStringLiteral("content.plist"), *content.bytes);
        peer_.outputOf(QStringLiteral(QUENBY_ARCHIVE_TOOL),
                       {QStringLiteral("write"), QStringLiteral("xml"), QStringLiteral("mutable"),
                        peer_.path(QStringLiteral("content.plist")), peer_.path(imported)});
        const Result<QNBPresetRecordPtr> read = QNBPresetFile::read(peer_.path(imported));
        ASSERT_TRUE(read) << read.error.toStdString();
        stored.insert(QNBPresetKey::label, QStringLiteral("Client X"));
        EXPECT_EQ(canonical((*read)->toStored()).toStdString(), canonical(stored).toStdString());
    }
}
