// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/BinaryPropertyListWriter.h"

#include "Platform/PropertyLists/BinaryPropertyListFormat.h"
#include "Platform/PropertyLists/PropertyListDocument.h"
#include "Platform/PropertyLists/PropertyListVariant.h"

#include <QPoint>
#include <gtest/gtest.h>
#include <numeric>

using Ref = BinaryPropertyListWriter::Ref;
using namespace BinaryPropertyListFormat;

namespace {

/// Far beyond the scalars that a new writer has room for, so that room is made several times.
constexpr int manyScalars = 10'000;

QVariantList numbersAndNames(int first, int count)
{
    QVariantList result;
    for (int i = first; i < first + count; ++i)
        result << qlonglong(i) << QString::number(i) << QVariant(double(i)) << (i % 2 == 0);
    return result;
}

QByteArray documentOf(const BinaryPropertyListWriter &writer, Ref top)
{
    const PropertyList::WriteResult written = writer.finish(top);
    EXPECT_TRUE(written) << qPrintable(written.error);
    return written.bytes.value_or(QByteArray());
}

QVariant valueOf(const QByteArray &bytes)
{
    const PropertyList::ReadResult result = PropertyList::read(bytes);
    EXPECT_TRUE(result) << qPrintable(result.error);
    return result.value.value_or(QVariant());
}

quint64 inTrailer(const QByteArray &bytes, qsizetype field, qsizetype size)
{
    return load(reinterpret_cast<const uchar *>(bytes.constData()) + bytes.size() - trailerSize + field,
                size);
}

/// As many UIDs with a string behind them, each an object of its own unless \a shared.
QByteArray documentWithUIDs(int count, bool shared)
{
    BinaryPropertyListWriter writer;
    std::vector<Ref> elements;
    for (int i = 0; i < count; ++i)
        elements.push_back(shared ? writer.uid(quint64(i)) : writer.unsharedUID(quint64(i)));
    elements.push_back(writer.string(u"last"));
    return documentOf(writer, writer.array(elements));
}

} // namespace

TEST(BinaryPropertyListWriter, RewindingComesBackToTheSameDocument)
{
    for (const int before : {0, 10, manyScalars}) {
        for (const int after : {1, 10, manyScalars}) {
            BinaryPropertyListWriter writer;
            const QVariantList values = numbersAndNames(0, before);
            const Ref top = writer.value(values);
            const QByteArray expected = documentOf(writer, top);
            const BinaryPropertyListWriter::Mark mark = writer.mark();
            for (int round = 0; round < 3; ++round) {
                // Half of them are there already.
                const Ref more = writer.value(QVariant(numbersAndNames(before - after / 2, after)));
                EXPECT_NE(documentOf(writer, more), expected);
                writer.rewind(mark);
                ASSERT_EQ(documentOf(writer, top), expected) << before << ' ' << after << ' ' << round;
            }
        }
    }
}

TEST(BinaryPropertyListWriter, ScalarsFromBeforeTheMarkAreFoundAfterRewindingAndLaterOnesAreNot)
{
    BinaryPropertyListWriter writer;
    std::vector<Ref> before;
    for (int i = 0; i < manyScalars; ++i)
        before.push_back(writer.string(QString::number(i)));
    const BinaryPropertyListWriter::Mark mark = writer.mark();
    for (int i = manyScalars; i < 4 * manyScalars; ++i)
        writer.string(QString::number(i));
    writer.rewind(mark);

    for (int i = 0; i < manyScalars; ++i)
        ASSERT_EQ(writer.string(QString::number(i)), before[std::size_t(i)]) << i;
    EXPECT_EQ(writer.mark().objects, mark.objects);
    // What was forgotten is stored again, once.
    const Ref forgotten = writer.string(QString::number(manyScalars));
    EXPECT_EQ(forgotten, mark.objects);
    EXPECT_EQ(writer.string(QString::number(manyScalars)), forgotten);
    EXPECT_EQ(valueOf(documentOf(writer, forgotten)), QVariant(QString::number(manyScalars)));
}

TEST(BinaryPropertyListWriter, RewindingForgetsAValueThatCannotBeWritten)
{
    BinaryPropertyListWriter writer;
    const Ref top = writer.string(u"good");
    const BinaryPropertyListWriter::Mark mark = writer.mark();
    writer.value(QVariant(QPoint(1, 2)));
    EXPECT_FALSE(writer.finish(top));
    writer.rewind(mark);
    EXPECT_EQ(valueOf(documentOf(writer, top)), QVariant(QStringLiteral("good")));

    // One from before the mark stays.
    writer.value(QVariant(QPoint(1, 2)));
    writer.rewind(writer.mark());
    EXPECT_FALSE(writer.finish(top));
}

TEST(BinaryPropertyListWriter, OfARepeatedKeyTheLastEntryIsWrittenHoweverManyThereAre)
{
    for (const int different : {1, 8, 16, 17, 1000}) {
        for (const int times : {2, 3, 20}) {
            BinaryPropertyListWriter writer;
            std::vector<Ref> keys;
            std::vector<Ref> values;
            QVariantMap expected;
            for (int i = 0; i < different * times; ++i) {
                const QString key = QString::number(i % different);
                keys.push_back(writer.string(key));
                values.push_back(writer.integer(i));
                expected.insert(key, qlonglong(i));
            }
            const QByteArray bytes = documentOf(writer, writer.dictionary(keys, values));
            EXPECT_EQ(valueOf(bytes), QVariant(expected));
            QString error;
            const PropertyListDocument::Ptr document = PropertyListDocument::parse(bytes, &error);
            ASSERT_TRUE(document) << qPrintable(error);
            EXPECT_EQ(document->root().count(), different);
        }
    }
}

TEST(BinaryPropertyListWriter, ADictionaryOfKeysThatAreNoStringsOrLackAValueIsRefused)
{
    BinaryPropertyListWriter writer;
    const Ref text = writer.string(u"text");
    const Ref number = writer.integer(1);
    const BinaryPropertyListWriter::Mark mark = writer.mark();
    EXPECT_FALSE(writer.finish(writer.dictionary(std::array{number}, std::array{text})));
    writer.rewind(mark);
    EXPECT_FALSE(writer.finish(writer.dictionary(std::array{text, number}, std::array{text})));
    writer.rewind(mark);
    EXPECT_TRUE(writer.finish(writer.dictionary(std::array{text}, std::array{number})));
}

TEST(BinaryPropertyListWriter, ReferencesAreAsWideAsTheNumberOfObjectsNeeds)
{
    for (const auto &[objects, width] : {std::pair(254, 1),
                                         {255, 1},
                                         {256, 2},
                                         {257, 2},
                                         {65'534, 2},
                                         {65'535, 2},
                                         {65'536, 4},
                                         {65'537, 4}}) {
        BinaryPropertyListWriter writer;
        std::vector<Ref> elements;
        QVariantList expected;
        // The array itself is the last object.
        for (int i = 0; i < objects - 1; ++i) {
            elements.push_back(writer.integer(i));
            expected.append(qlonglong(i));
        }
        const QByteArray bytes = documentOf(writer, writer.array(elements));
        EXPECT_EQ(inTrailer(bytes, trailerReferenceSize, 1), quint64(width)) << objects;
        EXPECT_EQ(inTrailer(bytes, trailerObjectCount, 8), quint64(objects));
        EXPECT_EQ(inTrailer(bytes, trailerTopObject, 8), quint64(objects - 1));
        EXPECT_EQ(valueOf(bytes), QVariant(expected)) << objects;
    }
}

TEST(BinaryPropertyListWriter, OffsetsAreAsWideAsThePlaceOfTheirTableNeeds)
{
    for (const auto &[place, width] :
         {std::pair(254, 1), {255, 1}, {256, 2}, {257, 2}, {65'535, 2}, {65'536, 4}, {65'537, 4}}) {
        // A data object's marker and count take 3 bytes up to a size of 255, then 4.
        const qsizetype size = place - qsizetype(header.size()) - (place > 300 ? 4 : 3);
        BinaryPropertyListWriter writer;
        const QByteArray data(size, 'd');
        const QByteArray bytes = documentOf(writer, writer.data(data));
        EXPECT_EQ(inTrailer(bytes, trailerOffsetTable, 8), quint64(place));
        EXPECT_EQ(inTrailer(bytes, trailerOffsetSize, 1), quint64(width)) << place;
        EXPECT_EQ(bytes.size(), place + width + trailerSize);
        EXPECT_EQ(valueOf(bytes), QVariant(data)) << place;
    }
}

TEST(BinaryPropertyListWriter, AnUnsharedUIDIsAnObjectOfItsOwn)
{
    BinaryPropertyListWriter writer;
    const Ref shared = writer.uid(5);
    const Ref first = writer.unsharedUID(5);
    const Ref second = writer.unsharedUID(5);
    EXPECT_NE(first, shared);
    EXPECT_NE(second, first);
    EXPECT_EQ(writer.uid(5), shared);
    // Nor is it found where no shared one was added before.
    const Ref lonely = writer.unsharedUID(6);
    EXPECT_NE(writer.uid(6), lonely);
    const QVariant five = QVariant::fromValue(PropertyList::UID{5});
    const QVariant six = QVariant::fromValue(PropertyList::UID{6});
    EXPECT_TRUE(PropertyList::equal(
        valueOf(documentOf(writer, writer.array(std::array{shared, first, second, lonely}))),
        QVariantList{five, five, five, six}));
}

TEST(BinaryPropertyListWriter, UnsharedUIDsAreForgottenByRewindingToo)
{
    BinaryPropertyListWriter writer;
    const Ref top = writer.array(std::array{writer.unsharedUID(1), writer.uid(1)});
    const QByteArray expected = documentOf(writer, top);
    const BinaryPropertyListWriter::Mark mark = writer.mark();
    for (quint64 i = 0; i < manyScalars; ++i) {
        writer.unsharedUID(i);
        writer.uid(i);
    }
    writer.rewind(mark);
    EXPECT_EQ(documentOf(writer, top), expected);
}

TEST(PropertyListSourceUIDs, ARunEndsAtWhatIsNoUIDAtTheEndAndAtTheRoom)
{
    // Counts at every width of references.
    for (const int count : {0, 1, 200, 300, 70'000}) {
        for (const bool shared : {false, true}) {
            QString error;
            const PropertyListDocument::Ptr document =
                PropertyListDocument::parse(documentWithUIDs(count, shared), &error);
            ASSERT_TRUE(document) << qPrintable(error);
            const PropertyListNode root = document->root();
            ASSERT_EQ(root.count(), count + 1);
            std::vector<quint64> values(static_cast<std::size_t>(count) + 10);
            const auto uids = [&](qsizetype index, std::size_t room) {
                return root.source()->uids(root.handle(), index, std::span(values).first(room));
            };
            ASSERT_EQ(uids(0, values.size()), std::size_t(count)) << shared;
            std::vector<quint64> expected(static_cast<std::size_t>(count));
            std::iota(expected.begin(), expected.end(), quint64(0));
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), values.begin())) << count;
            // From the text on there is none, and none is asked for.
            EXPECT_EQ(uids(count, values.size()), 0U);
            EXPECT_EQ(uids(count + 1, values.size()), 0U);
            EXPECT_EQ(uids(0, 0), 0U);
            if (count > 0) {
                ASSERT_EQ(uids(count - 1, values.size()), 1U);
                EXPECT_EQ(values.front(), quint64(count - 1));
                EXPECT_EQ(uids(0, std::size_t(count) - 1), std::size_t(count) - 1);
            }
        }
    }
}

TEST(PropertyListSourceUIDs, EverySourceAnswersTheSame)
{
    const QVariantList values{QVariant::fromValue(PropertyList::UID{1}),
                              QVariant::fromValue(PropertyList::UID{70'000}),
                              QVariant::fromValue(PropertyList::UID{quint64(1) << 40}), qlonglong(3),
                              QVariant::fromValue(PropertyList::UID{4})};
    QString error;
    for (const PropertyListDocument::Ptr &document :
         {PropertyListDocument::parse(*PropertyList::write(values).bytes, &error),
          PropertyListDocument::fromVariant(values)}) {
        ASSERT_TRUE(document) << qPrintable(error);
        const PropertyListNode root = document->root();
        std::array<quint64, 8> found = {};
        EXPECT_EQ(root.source()->uids(root.handle(), 0, found), 3U);
        EXPECT_EQ(found[0], 1U);
        EXPECT_EQ(found[1], 70'000U);
        EXPECT_EQ(found[2], quint64(1) << 40);
        EXPECT_EQ(root.source()->uids(root.handle(), 3, found), 0U);
        EXPECT_EQ(root.source()->uids(root.handle(), 4, found), 1U);
        EXPECT_EQ(found[0], 4U);
    }
}
