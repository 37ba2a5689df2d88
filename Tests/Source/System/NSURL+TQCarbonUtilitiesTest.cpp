// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/System/NSURL+TQCarbonUtilities.h"

#include "Platform/Files/FileURL.h"
#include "Tests/Platform/Files/FinderFixture.h"

#include <QDir>
#include <QFile>
#include <QList>

#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr quint32 textType = 0x54455854; // TEXT
constexpr quint32 editor = 0x74747874;   // ttxt

/// The attribute with these 16 bytes first.
QByteArray attributeOfBytes(const char *bytes)
{
    return QByteArray(bytes, 16) + QByteArray(16, '\0');
}

class NSURLTest : public FinderFixture
{
protected:
    QUrl url(const QString &name) const { return QUrl::fromLocalFile(in(name)); }

    QUrl fileURL() const { return QUrl::fromLocalFile(makeFile()); }
    QUrl folderURL() const { return QUrl::fromLocalFile(makeFolder()); }

    /// URLs that are of no file, and of files that are not there.
    QList<QUrl> urlsOfNothing() const
    {
        return {QUrl(),
                url(QStringLiteral("missing")),
                QUrl(QStringLiteral("file:relative")),
                QUrl(QStringLiteral("/proc")),
                QUrl(QStringLiteral("http:///proc")),
                QUrl(QStringLiteral("file://server/proc")),
                QUrl(QStringLiteral("file:///proc%00"))};
    }
};

} // namespace

TEST_F(NSURLTest, EveryOperationFailsForAURLOfNothing)
{
    for (const QUrl &url : urlsOfNothing()) {
        const std::string name = url.toString().toStdString();
        FSRef reference;
        EXPECT_FALSE(getFSRef(url, reference)) << name;
        FSSpec fileSpec;
        EXPECT_FALSE(getFSSpec(url, fileSpec)) << name;
        EXPECT_TRUE(URLByDeletingLastPathComponent(url).isEmpty()) << name;
        EXPECT_TRUE(fileSystemPathHFSStyle(url).isNull()) << name;
        EXPECT_TRUE(resolveAliasFile(url).isEmpty()) << name;
        quint16 flags = 1;
        quint32 type = 2;
        quint32 creator = 3;
        EXPECT_FALSE(finderInfoFlagsTypeCreator(url, &flags, &type, &creator)) << name;
        EXPECT_EQ(flags + type + creator, 6U) << name;
        EXPECT_FALSE(setFinderInfoFlagsMaskTypeCreator(url, 0, 0, 0, 0)) << name;
        EXPECT_EQ(finderLocation(url), QPointF()) << name;
        EXPECT_FALSE(setFinderLocation(url, {1, 1})) << name;
        EXPECT_FALSE(hasCustomIcon(url)) << name;
    }
}

TEST_F(NSURLTest, AReferenceLeadsBackToTheURL)
{
    for (const QUrl &url : {fileURL(), folderURL(), QUrl::fromLocalFile(QStringLiteral("/"))}) {
        FSRef reference;
        ASSERT_TRUE(getFSRef(url, reference));
        EXPECT_EQ(URLWithFSRef(reference), url);
    }
}

TEST_F(NSURLTest, AReferenceToWhatIsGoneLeadsNowhere)
{
    FSRef reference;
    ASSERT_TRUE(getFSRef(fileURL(), reference));
    ASSERT_TRUE(QFile::remove(in(QStringLiteral("file"))));
    EXPECT_TRUE(URLWithFSRef(reference).isEmpty());
    EXPECT_TRUE(URLWithFSRef(FSRef()).isEmpty());
}

TEST_F(NSURLTest, AFileSpecIsTheNameInItsFolder)
{
    FSRef folder;
    ASSERT_TRUE(getFSRef(QUrl::fromLocalFile(root()), folder));
    FSSpec fileSpec;
    ASSERT_TRUE(getFSSpec(fileURL(), fileSpec));
    EXPECT_EQ(fileSpec.volume, folder.device);
    EXPECT_EQ(fileSpec.parentDirectory, folder.number);
    EXPECT_EQ(fileSpec.name, "file");
}

TEST_F(NSURLTest, TheParentIsTheFolderThatTheEntryIsIn)
{
    const QUrl root = QUrl::fromLocalFile(FileFixture::root());
    EXPECT_EQ(URLByDeletingLastPathComponent(fileURL()), root);
    EXPECT_EQ(URLByDeletingLastPathComponent(folderURL()), root);
    EXPECT_EQ(URLByDeletingLastPathComponent(QUrl::fromLocalFile(makeFolder() + u'/')), root);
    EXPECT_EQ(URLByDeletingLastPathComponent(QUrl::fromLocalFile(makeFolder() + QStringLiteral("/."))), root);
    EXPECT_EQ(URLByDeletingLastPathComponent(QUrl::fromLocalFile(QStringLiteral("/proc"))),
              QUrl::fromLocalFile(QStringLiteral("/")));
    EXPECT_TRUE(URLByDeletingLastPathComponent(QUrl::fromLocalFile(QStringLiteral("/"))).isEmpty());
}

TEST_F(NSURLTest, WhatIsNoAliasIsItsOwnTarget)
{
    const QUrl withSlash = QUrl::fromLocalFile(makeFolder() + u'/');
    for (const QUrl &url : {fileURL(), folderURL(), withSlash})
        EXPECT_EQ(resolveAliasFile(url), url);
}

TEST_F(NSURLTest, AliasChainsAreFollowedToTheirEnd)
{
    const QUrl file = fileURL();
    makeFolder(QStringLiteral("folder"));
    makeLink(QStringLiteral("absolute"), in(QStringLiteral("file")));
    makeLink(QStringLiteral("folder/relative"), QStringLiteral("../absolute"));
    const QString end = makeLink(QStringLiteral("end"), QStringLiteral("folder/relative"));
    EXPECT_EQ(resolveAliasFile(url(QStringLiteral("absolute"))), file);
    EXPECT_EQ(resolveAliasFile(url(QStringLiteral("folder/relative"))), file);
    EXPECT_EQ(resolveAliasFile(QUrl::fromLocalFile(end)), file);
}

TEST_F(NSURLTest, AliasesToFoldersAreAliasesAlsoWithASlash)
{
    const QUrl folder = folderURL();
    const QString link = makeLink(QStringLiteral("link"), QStringLiteral("folder"));
    EXPECT_EQ(resolveAliasFile(QUrl::fromLocalFile(link)), folder);
    EXPECT_EQ(resolveAliasFile(QUrl::fromLocalFile(link + u'/')), folder);
}

TEST_F(NSURLTest, AliasesIntoNothingAndInACircleFail)
{
    makeLink(QStringLiteral("dangling"), QStringLiteral("missing"));
    makeLink(QStringLiteral("self"), QStringLiteral("self"));
    makeLink(QStringLiteral("one"), QStringLiteral("two"));
    makeLink(QStringLiteral("two"), QStringLiteral("one"));
    for (const QString &name : {QStringLiteral("dangling"), QStringLiteral("self"), QStringLiteral("one")})
        EXPECT_TRUE(resolveAliasFile(url(name)).isEmpty()) << qPrintable(name);
}

TEST_F(NSURLTest, AnAliasMayLeadToANameThatIsNoText)
{
    const QByteArray target = QFile::encodeName(root()) + "/\xFF\xFE";
    ASSERT_EQ(::mkdir(target.constData(), 0700), 0);
    const QByteArray link = QFile::encodeName(in(QStringLiteral("link")));
    ASSERT_EQ(::symlink(target.constData(), link.constData()), 0);
    const QUrl resolved = resolveAliasFile(url(QStringLiteral("link")));
    EXPECT_EQ(pathOfFileURL(resolved), target);
    EXPECT_TRUE(setFinderLocation(resolved, {1, 2}));
    EXPECT_EQ(finderLocation(resolved), QPointF(1, 2));
    EXPECT_EQ(::rmdir(target.constData()), 0); // the temporary folder cannot
}

TEST_F(NSURLTest, ReadsFlagsTypeAndCreator)
{
    const QUrl url = fileURL();
    setAttribute(url.toLocalFile(), attributeOfBytes("TEXTttxt\x84\x21\0\0\0\0\0\0"));
    quint16 flags = 0;
    quint32 type = 0;
    quint32 creator = 0;
    ASSERT_TRUE(finderInfoFlagsTypeCreator(url, &flags, &type, &creator));
    EXPECT_EQ(flags, 0x8421);
    EXPECT_EQ(type, textType);
    EXPECT_EQ(creator, editor);
}

TEST_F(NSURLTest, ReadsOnlyWhatIsAskedFor)
{
    const QUrl url = fileURL();
    setAttribute(url.toLocalFile(), attributeOfBytes("TEXTttxt\x84\x21\0\0\0\0\0\0"));
    quint16 flags = 0;
    quint32 type = 0;
    quint32 creator = 0;
    EXPECT_TRUE(finderInfoFlagsTypeCreator(url, nullptr, nullptr, nullptr));
    EXPECT_TRUE(finderInfoFlagsTypeCreator(url, &flags, nullptr, nullptr));
    EXPECT_TRUE(finderInfoFlagsTypeCreator(url, nullptr, &type, nullptr));
    EXPECT_TRUE(finderInfoFlagsTypeCreator(url, nullptr, nullptr, &creator));
    EXPECT_EQ(flags, 0x8421);
    EXPECT_EQ(type, textType);
    EXPECT_EQ(creator, editor);
}

TEST_F(NSURLTest, SetsTheFlagsOfTheMaskAndAlwaysClearsHasBeenInited)
{
    const QUrl url = fileURL();
    const QList<int> words = {0x0000, 0xFFFF, 0x0100, 0x000E, 0x0400, 0xA5A5, 0x5A5A, 0xFEFF};
    for (const int old : words) {
        for (const int flags : words) {
            for (const int mask : words) {
                QByteArray attribute = numberedBytes();
                attribute[8] = static_cast<char>(old >> 8);
                attribute[9] = static_cast<char>(old & 0xFF);
                setAttribute(url.toLocalFile(), attribute);
                ASSERT_TRUE(setFinderInfoFlagsMaskTypeCreator(url, static_cast<quint16>(flags),
                                                              static_cast<quint16>(mask), textType, editor));
                quint16 result = 0;
                ASSERT_TRUE(finderInfoFlagsTypeCreator(url, &result, nullptr, nullptr));
                ASSERT_EQ(result, ((old & ~mask) | (flags & mask)) & 0xFEFF)
                    << old << ' ' << flags << ' ' << mask;
            }
        }
    }
}

TEST_F(NSURLTest, SetsTypeAndCreatorInEveryCase)
{
    const QUrl url = fileURL();
    for (const quint32 code : {textType, 0U, 0xFFFFFFFFU, 0x80000001U}) {
        setAttribute(url.toLocalFile(), numberedBytes());
        ASSERT_TRUE(setFinderInfoFlagsMaskTypeCreator(url, 0, 0, code, ~code));
        quint32 type = 1;
        quint32 creator = 1;
        ASSERT_TRUE(finderInfoFlagsTypeCreator(url, nullptr, &type, &creator));
        EXPECT_EQ(type, code);
        EXPECT_EQ(creator, ~code);
    }
}

TEST_F(NSURLTest, SettingFlagsTypeAndCreatorLeavesTheRest)
{
    const QUrl url = fileURL();
    setAttribute(url.toLocalFile(), numberedBytes());
    ASSERT_TRUE(setFinderInfoFlagsMaskTypeCreator(url, 0x8000, 0xFFFF, textType, editor));
    EXPECT_EQ(attributeOf(url.toLocalFile()), QByteArray("TEXTttxt\x80\0", 10) + numberedBytes().sliced(10));
}

TEST_F(NSURLTest, TheLocationIsVerticalThenHorizontalOnDisk)
{
    const QUrl url = fileURL();
    ASSERT_TRUE(setFinderLocation(url, {300, -2}));
    EXPECT_EQ(attributeOf(url.toLocalFile()), attributeOfBytes("\0\0\0\0\0\0\0\0\0\0\xFF\xFE\x01\x2C\0\0"));
    EXPECT_EQ(finderLocation(url), QPointF(300, -2));
}

TEST_F(NSURLTest, SettingTheLocationLeavesTheRest)
{
    for (const QUrl &url : {fileURL(), folderURL()}) {
        setAttribute(url.toLocalFile(), numberedBytes());
        ASSERT_TRUE(setFinderLocation(url, {-1, -1}));
        EXPECT_EQ(attributeOf(url.toLocalFile()), numberedBytes().replace(10, 4, "\xFF\xFF\xFF\xFF"));
    }
}

TEST_F(NSURLTest, LocationsAreCutOffTowardsZeroAndAtTheEndsOfTheRange)
{
    constexpr qreal infinity = std::numeric_limits<qreal>::infinity();
    const QList<std::pair<qreal, qreal>> coordinates = {
        {0, 0},           {0.9, 0},           {-0.9, 0},
        {1.5, 1},         {-1.5, -1},         {100, 100},
        {-100, -100},     {32767, 32767},     {32767.9, 32767},
        {-32768, -32768}, {-32768.9, -32768}, {32768, 32767},
        {-32769, -32768}, {65536, 32767},     {1e300, 32767},
        {-1e300, -32768}, {infinity, 32767},  {-infinity, -32768}};
    const QUrl url = fileURL();
    for (const auto &[given, stored] : coordinates) {
        ASSERT_TRUE(setFinderLocation(url, {given, 7})) << given;
        EXPECT_EQ(finderLocation(url), QPointF(stored, 7)) << given;
        ASSERT_TRUE(setFinderLocation(url, {7, given})) << given;
        EXPECT_EQ(finderLocation(url), QPointF(7, stored)) << given;
    }
}

TEST_F(NSURLTest, ALocationThatIsNoNumberIsRefused)
{
    const QUrl url = fileURL();
    setAttribute(url.toLocalFile(), numberedBytes());
    EXPECT_FALSE(setFinderLocation(url, {std::numeric_limits<qreal>::quiet_NaN(), 1}));
    EXPECT_FALSE(setFinderLocation(url, {1, std::numeric_limits<qreal>::quiet_NaN()}));
    EXPECT_EQ(attributeOf(url.toLocalFile()), numberedBytes());
}

TEST_F(NSURLTest, HasCustomIconIsOneBit)
{
    for (const QUrl &url : {fileURL(), folderURL()}) {
        EXPECT_FALSE(hasCustomIcon(url));
        setAttribute(url.toLocalFile(), attributeOfBytes("\0\0\0\0\0\0\0\0\x04\0\0\0\0\0\0\0"));
        EXPECT_TRUE(hasCustomIcon(url));
        setAttribute(url.toLocalFile(),
                     attributeOfBytes("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFB\xFF\xFF\xFF\xFF\xFF\xFF\xFF"));
        EXPECT_FALSE(hasCustomIcon(url));
    }
}

TEST_F(NSURLTest, WhereNothingIsKeptReadingAndWritingFail)
{
    const QUrl url = QUrl::fromLocalFile(fileWithoutAttributes());
    quint16 flags = 1;
    EXPECT_FALSE(finderInfoFlagsTypeCreator(url, &flags, nullptr, nullptr));
    EXPECT_EQ(flags, 1);
    EXPECT_FALSE(setFinderInfoFlagsMaskTypeCreator(url, 0, 0, 0, 0));
    EXPECT_EQ(finderLocation(url), QPointF());
    EXPECT_FALSE(setFinderLocation(url, {1, 1}));
    EXPECT_FALSE(hasCustomIcon(url));
}

TEST_F(NSURLTest, WritingToALinkOrAPipeFails)
{
    const QString file = makeFile();
    const QUrl link = QUrl::fromLocalFile(makeLink(QStringLiteral("link"), file));
    const QUrl pipe = QUrl::fromLocalFile(makePipe());
    for (const QUrl &url : {link, pipe}) {
        EXPECT_FALSE(setFinderInfoFlagsMaskTypeCreator(url, 0, 0, 0, 0));
        EXPECT_FALSE(setFinderLocation(url, {1, 1}));
    }
    EXPECT_FALSE(attributeOf(file));
}
