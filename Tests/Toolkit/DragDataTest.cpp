// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/DragData.h"

#include <QFile>

#include <gmock/gmock.h>

using ::testing::ElementsAre;

namespace {

/// The type in which every version of the library asks for addresses.
constexpr QMetaType listOfAddresses = QMetaType::fromType<QVariantList>();

/// What the library asks for, by its own way: not every version of it makes a list of what is none.
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
    const QVariant urls = retrieved(data, format, listOfAddresses);
    ASSERT_EQ(urls.metaType(), listOfAddresses);
    ASSERT_EQ(urls.toList().size(), 1);
    const QUrl url = urls.toList().constFirst().toUrl();
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
    EXPECT_EQ(retrieved(data, PasteboardType::filenames, listOfAddresses), QVariant(QVariantList{url}));
    EXPECT_THAT(data.urls(), ElementsAre(url));
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
