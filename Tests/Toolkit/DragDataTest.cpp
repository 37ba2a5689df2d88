// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/DragData.h"

#include <QFile>

#include <gmock/gmock.h>

using ::testing::ElementsAre;

namespace {

/// What the library asks for, by its own way and in its own words, which are others in each of its versions.
QVariant retrieved(const DragData &data, const QString &format, QMetaType type)
{
    struct Asking : QMimeData
    {
        using QMimeData::retrieveData;
    };
    return (data.*(&Asking::retrieveData))(format, type);
}

std::shared_ptr<PromisedFile> promised()
{
    const QString name = QStringLiteral("a b.txt");
    return std::make_shared<PromisedFile>(name, [name](const QUrl &folder) {
        QFile file(folder.toLocalFile() + u'/' + name);
        return file.open(QIODevice::WriteOnly) ? name : QString();
    });
}

} // namespace

TEST(DragDataTest, AFileIsPromisedInEveryTypeInWhichAListOfAddressesIsAskedFor)
{
    const DragData data(std::make_unique<QMimeData>(), DragOperation::Move, promised(), {});
    const QString format = PasteboardType::filenames;
    const auto urls = retrieved(data, format, QMetaType::fromType<QList<QUrl>>());
    ASSERT_EQ(urls.metaType(), QMetaType::fromType<QList<QUrl>>());
    ASSERT_EQ(urls.value<QList<QUrl>>().size(), 1);
    const QUrl url = urls.value<QList<QUrl>>().constFirst();
    EXPECT_EQ(url.fileName(), QStringLiteral("a b.txt"));
    EXPECT_EQ(retrieved(data, format, QMetaType::fromType<QByteArray>()).toByteArray(),
              url.toEncoded() + "\r\n");
    EXPECT_THAT(data.urls(), ElementsAre(url));
    EXPECT_EQ(data.data(format), url.toEncoded() + "\r\n");
}

TEST(DragDataTest, AddressesThatWereDeclaredAreFoundInThatTypeToo)
{
    const QUrl url = QUrl::fromLocalFile(QStringLiteral("/tmp/a b.txt"));
    auto declared = std::make_unique<QMimeData>();
    declared->setUrls({url});
    const DragData data(std::move(declared), DragOperation::Move, {}, {});
    EXPECT_THAT(
        retrieved(data, PasteboardType::filenames, QMetaType::fromType<QList<QUrl>>()).value<QList<QUrl>>(),
        ElementsAre(url));
}

TEST(DragDataTest, WhereNobodyTellsOfTheDropTheFileIsThereOnceItWasAskedFor)
{
    ASSERT_FALSE(DirectSave::isAvailable());
    const auto file = promised();
    DragData data(std::make_unique<QMimeData>(), DragOperation::Move, file, {});
    data.announcePromise();
    EXPECT_FALSE(file->isWritten());
    EXPECT_TRUE(QFile::exists(data.urls().value(0).toLocalFile()));
}
