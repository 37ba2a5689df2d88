// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/Pasteboard.h"

#include "Toolkit/DraggingInfo.h"

#include <QMimeData>
#include <QSysInfo>
#include <QUrl>
#include <gtest/gtest.h>

namespace {

const QString firstType = QStringLiteral("ZebraType");
const QString secondType = QStringLiteral("AppleType");

class PasteboardTest : public ::testing::Test
{
protected:
    QMimeData data;
    Pasteboard pasteboard{data};
};

TEST_F(PasteboardTest, TypesKeepTheOrderInWhichTheyWereDeclared)
{
    pasteboard.declareTypes({firstType, PasteboardType::filesPromise, secondType});
    const QStringList declared{firstType, PasteboardType::filesPromise, secondType};
    EXPECT_EQ(pasteboard.types(), declared);
    pasteboard.setDataForType("b", secondType);
    pasteboard.setDataForType("a", firstType);
    EXPECT_EQ(pasteboard.types(), declared);
}

TEST_F(PasteboardTest, DeclaringForgetsWhatWasThere)
{
    pasteboard.declareTypes({firstType});
    pasteboard.setDataForType("a", firstType);
    pasteboard.declareTypes({secondType});
    EXPECT_EQ(pasteboard.types(), QStringList(secondType));
    EXPECT_FALSE(pasteboard.hasDataForType(firstType));
    EXPECT_TRUE(pasteboard.dataForType(firstType).isNull());
}

TEST_F(PasteboardTest, DataComesBackAsItWasSet)
{
    pasteboard.declareTypes({firstType});
    EXPECT_TRUE(pasteboard.dataForType(firstType).isNull());
    const QByteArray bytes("\0\xff\n\0", 4);
    pasteboard.setDataForType(bytes, firstType);
    EXPECT_TRUE(pasteboard.hasDataForType(firstType));
    EXPECT_EQ(pasteboard.dataForType(firstType), bytes);
    EXPECT_TRUE(pasteboard.dataForType(secondType).isNull());
}

TEST_F(PasteboardTest, PropertyListsComeBackAsTheyWereSet)
{
    pasteboard.declareTypes({PasteboardType::filesPromise});
    const QVariant extensions = QVariantList{QStringLiteral("qnbp")};
    pasteboard.setPropertyListForType(extensions, PasteboardType::filesPromise);
    EXPECT_EQ(pasteboard.propertyListForType(PasteboardType::filesPromise), extensions);
    EXPECT_FALSE(pasteboard.propertyListForType(firstType).isValid());
}

TEST_F(PasteboardTest, WhatIsNoPropertyListIsNotSet)
{
    pasteboard.declareTypes({firstType});
    pasteboard.setPropertyListForType(QVariant::fromValue(QUrl()), firstType);
    EXPECT_TRUE(pasteboard.dataForType(firstType).isNull());
}

TEST_F(PasteboardTest, DataThatIsNoPropertyListReadsAsNone)
{
    for (const QByteArray &bytes :
         {QByteArray("bplist00"), QByteArray("<plist>"), QByteArray(4096, '\xff')}) {
        data.setData(firstType, bytes);
        EXPECT_FALSE(pasteboard.propertyListForType(firstType).isValid());
        EXPECT_EQ(pasteboard.dataForType(firstType), bytes);
    }
}

TEST_F(PasteboardTest, FilenamesAreTheLocalFilesOfAListOfUrls)
{
    data.setData(PasteboardType::filenames, QByteArray("file:///tmp/a%20b.qnbp\r\n"
                                                       "https://example.org/c.qnbp\r\n"
                                                       "file://localhost/tmp/%C3%A4.qnbp\r\n"
                                                       "file://elsewhere.example/tmp/d.qnbp\r\n"
                                                       "file:relative.qnbp\r\n"
                                                       "file://") +
                                                QSysInfo::machineHostName().toUtf8() +
                                                QByteArray("/tmp/e%23.qnbp\r\n"));
    const QVariantList expected{QStringLiteral("/tmp/a b.qnbp"), QStringLiteral("/tmp/ä.qnbp"),
                                QStringLiteral("/tmp/e#.qnbp")};
    EXPECT_EQ(pasteboard.propertyListForType(PasteboardType::filenames).toList(), expected);
}

TEST_F(PasteboardTest, UrlsWithoutALocalFileAreNoFilenames)
{
    data.setUrls({QUrl(QStringLiteral("https://example.org/"))});
    EXPECT_TRUE(pasteboard.hasDataForType(PasteboardType::filenames));
    EXPECT_FALSE(pasteboard.propertyListForType(PasteboardType::filenames).isValid());
}

TEST_F(PasteboardTest, FilenamesThatWereSetAreReadAsPaths)
{
    pasteboard.declareTypes({PasteboardType::filenames});
    const QVariantList paths{QStringLiteral("/tmp/100% #1?.qnbp"), QStringLiteral("/tmp/b")};
    pasteboard.setPropertyListForType(paths, PasteboardType::filenames);
    EXPECT_EQ(pasteboard.propertyListForType(PasteboardType::filenames).toList(), paths);
    EXPECT_EQ(data.urls().constLast(), QUrl(QStringLiteral("file:///tmp/b")));
}

TEST_F(PasteboardTest, KnowsItsOwnProcessAndShowsNoMarkOfIt)
{
    EXPECT_FALSE(pasteboard.isFromThisProcess());
    pasteboard.declareTypes({firstType});
    EXPECT_TRUE(pasteboard.isFromThisProcess());
    EXPECT_EQ(pasteboard.types(), QStringList(firstType));

    // Another process writes the same type, and a mark of its own.
    QMimeData foreign;
    for (const QString &format : data.formats())
        foreign.setData(format, format == firstType ? data.data(format) : QByteArray(32, '0'));
    EXPECT_GT(foreign.formats().size(), 1);
    EXPECT_FALSE(Pasteboard(foreign).isFromThisProcess());
}

TEST_F(PasteboardTest, ADragIsReadOnly)
{
    pasteboard.declareTypes({firstType});
    const DraggingInfo drag(data, DragOperation::Move | DragOperation::Link);
    EXPECT_EQ(drag.draggingPasteboard().types(), QStringList(firstType));
    EXPECT_EQ(drag.draggingSourceOperationMask().toInt(), 18u);
    Pasteboard readOnly(std::as_const(data));
    readOnly.declareTypes({secondType});
    readOnly.setDataForType("a", firstType);
    readOnly.setPropertyListForType(true, firstType);
    EXPECT_EQ(data.formats().constFirst(), firstType);
    EXPECT_TRUE(data.data(firstType).isEmpty());
}

} // namespace
