// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Shared/Source/QNBShared.h"

#include "Tests/Platform/Files/FinderFixture.h"

#include <QDir>
#include <QList>

#include <gtest/gtest.h>

namespace {

constexpr int flagWords = 0x10000;
constexpr quint64 largestLabel = 9;

class QNBFinderLabelTest : public FinderFixture
{
protected:
    static QByteArray attributeWithFlags(int flags)
    {
        QByteArray attribute = numberedBytes();
        attribute[8] = static_cast<char>(flags >> 8);
        attribute[9] = static_cast<char>(flags & 0xFF);
        return attribute;
    }
};

} // namespace

TEST_F(QNBFinderLabelTest, ChangesOnlyTheThreeLabelBitsOfEveryFlagWord)
{
    for (int flags = 0; flags < flagWords; ++flags) {
        for (quint64 label = 0; label <= largestLabel; ++label) {
            const int result = QNBFinderFlagsWithLabel(static_cast<quint16>(flags), label);
            ASSERT_EQ(result & 0xFFF1, flags & 0xFFF1) << flags << " with label " << label;
            ASSERT_EQ((result & 0x000E) >> 1, static_cast<int>(label % 8))
                << flags << " with label " << label;
        }
    }
}

TEST_F(QNBFinderLabelTest, ChangesOnlyTheThreeLabelBitsOfEveryFlagWordOnDisk)
{
    const QString file = makeFile();
    for (int flags = 0; flags < flagWords; ++flags) {
        const quint64 label = static_cast<quint64>(flags) % (largestLabel + 1);
        setAttribute(file, attributeWithFlags(flags));
        QNBSetFinderLabelForPath(label, file);
        const int expected = (flags & 0xFFF1) | static_cast<int>(label % 8) << 1;
        ASSERT_EQ(attributeOf(file), attributeWithFlags(expected)) << flags << " with label " << label;
    }
}

TEST_F(QNBFinderLabelTest, OfAFolderOnlyTheLabelChangesAndOtherFlagsSurvive)
{
    const QString folder = makeFolder();
    constexpr int customIconAndInvisible = 0x4400;
    setAttribute(folder, attributeWithFlags(customIconAndInvisible | 0x0100 | 3 << 1));
    QNBSetFinderLabelForPath(6, folder);
    EXPECT_EQ(attributeOf(folder), attributeWithFlags(customIconAndInvisible | 0x0100 | 6 << 1));
    QNBSetFinderLabelForPath(0, folder);
    EXPECT_EQ(attributeOf(folder), attributeWithFlags(customIconAndInvisible | 0x0100));
}

TEST_F(QNBFinderLabelTest, OfAnEntryWithoutInformationIsAllThereIs)
{
    for (const QString &path : {makeFile(), makeFolder()}) {
        QNBSetFinderLabelForPath(7, path);
        EXPECT_EQ(attributeOf(path), QByteArray(9, '\0') + '\x0E' + QByteArray(22, '\0'));
    }
}

TEST_F(QNBFinderLabelTest, OfANameOutsideTheTableIsSeven)
{
    EXPECT_EQ(QNBFinderFlagsWithLabel(0, QNBFinderLabelForColor(QStringLiteral("clearColor"))), 7 << 1);
    const QString file = makeFile();
    QNBSetFinderLabelForPath(QNBNotFound, file);
    EXPECT_EQ(attributeOf(file)->at(9), 7 << 1);
}

TEST_F(QNBFinderLabelTest, ReachesHostileNames)
{
    for (const QString &name :
         {QStringLiteral("a b"), QStringLiteral("\"quoted'"), QStringLiteral("new\nline"),
          QStringLiteral("50%41"), QStringLiteral("-rf"), QStringLiteral("Ünïcode"), QStringLiteral("a:b?#c"),
          QStringLiteral("..name")}) {
        const QString file = makeFile(name);
        QNBSetFinderLabelForPath(1, file);
        ASSERT_TRUE(attributeOf(file)) << qPrintable(name);
        EXPECT_EQ(attributeOf(file)->at(9), 1 << 1) << qPrintable(name);
    }
}

TEST_F(QNBFinderLabelTest, ReachesAFolderByAPathWithASlashAtItsEnd)
{
    const QString folder = makeFolder();
    QNBSetFinderLabelForPath(2, folder + u'/');
    ASSERT_TRUE(attributeOf(folder));
    EXPECT_EQ(attributeOf(folder)->at(9), 2 << 1);
}

TEST_F(QNBFinderLabelTest, ARelativePathBeginsInTheCurrentFolder)
{
    const QString before = QDir::currentPath();
    const QString file = makeFile();
    ASSERT_TRUE(QDir::setCurrent(root()));
    QNBSetFinderLabelForPath(3, QStringLiteral("file"));
    EXPECT_TRUE(QDir::setCurrent(before));
    ASSERT_TRUE(attributeOf(file));
    EXPECT_EQ(attributeOf(file)->at(9), 3 << 1);
}

TEST_F(QNBFinderLabelTest, OfALinkTouchesNeitherLinkNorTarget)
{
    const QString file = makeFile();
    const QString folder = makeFolder();
    QNBSetFinderLabelForPath(4, makeLink(QStringLiteral("to a file"), file));
    QNBSetFinderLabelForPath(4, makeLink(QStringLiteral("to a folder"), folder) + u'/');
    EXPECT_FALSE(attributeOf(file));
    EXPECT_FALSE(attributeOf(folder));
}

TEST_F(QNBFinderLabelTest, WhereNoneCanBeKeptNothingHappens)
{
    const QString file = makeFile();
    const QString pathWithNull = file + QChar(QChar::Null) + u'x';
    for (const QString &path : {QString(), in(QStringLiteral("missing")), file + QStringLiteral("/below"),
                                pathWithNull, fileWithoutAttributes(), makePipe()})
        QNBSetFinderLabelForPath(5, path);
    EXPECT_FALSE(attributeOf(file));
    EXPECT_EQ(namesIn(root()).size(), 2);
}

TEST_F(QNBFinderLabelTest, EachLabelHasTheColorThatLeadsToIt)
{
    EXPECT_EQ(QNBColorForFinderLabel(0), QString());
    EXPECT_EQ(QNBColorForFinderLabel(6), QStringLiteral("red"));
    for (quint64 label = 0; label < 8; ++label)
        EXPECT_EQ(QNBFinderLabelForColor(QNBColorForFinderLabel(label)), label);
    EXPECT_EQ(QNBColorForFinderLabel(8), QString());
    EXPECT_EQ(QNBColorForFinderLabel(QNBNotFound), QString());
}
