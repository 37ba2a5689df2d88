// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Fuzz/PropertyListChecks.h"
#include "Tests/Platform/PropertyLists/BinaryDocument.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <vector>

using PropertyList::Form;
using PropertyListChecks::readsBackEqual;

namespace {

constexpr int seed = 20240229;
constexpr int flips = 10'000;
constexpr int absurdDepth = 1'000'000;
/// Far above what any of these takes, even under a sanitizer, and far below what following every reference
/// or a quadratic reader would take.
constexpr qint64 bounded = 10'000;

QByteArray contents(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

QFileInfoList filesIn(const QString &folder)
{
    const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files, QDir::Name);
    EXPECT_FALSE(files.isEmpty()) << qPrintable(folder);
    return files;
}

QByteArray sample(Form form)
{
    const QVariantMap inner{
        {QStringLiteral("filename"), QStringLiteral("über")},
        {QStringLiteral("children"), QVariantList{QVariantMap(), qlonglong(70'000), -1.5}}};
    const QVariantMap value{{QStringLiteral("label"), QStringLiteral("A label of over fifteen characters")},
                            {QStringLiteral("data"), QByteArray("\0\1\2", 3)},
                            {QStringLiteral("date"), PropertyList::dateValue(725'846'400)},
                            {QStringLiteral("tree"), inner},
                            {QStringLiteral("yes"), true}};
    return *PropertyList::write(value, form).bytes;
}

/// A document whose objects are an outer one, repeated, and one innermost.
QByteArray nestedBinary(int levels)
{
    QByteArray bytes("bplist00");
    QByteArray offsets;
    const auto appendNumber = [](QByteArray &to, quint64 number, int size) {
        for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
            to.append(char(number >> shift));
    };
    for (int level = 0; level < levels; ++level) {
        appendNumber(offsets, quint64(bytes.size()), 4);
        bytes.append(level + 1 == levels ? '\xa0' : '\xa1');
        if (level + 1 < levels)
            appendNumber(bytes, quint64(level) + 1, 4);
    }
    const quint64 table = quint64(bytes.size());
    bytes.append(offsets);
    bytes.append(QByteArray(6, '\0')).append('\4').append('\4');
    appendNumber(bytes, quint64(levels), 8);
    appendNumber(bytes, 0, 8);
    appendNumber(bytes, table, 8);
    return bytes;
}

class BrokenPropertyListForms : public testing::TestWithParam<Form>
{
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Forms, BrokenPropertyListForms, testing::Values(Form::Binary, Form::XML),
                         [](const auto &form) { return form.param == Form::Binary ? "Binary" : "XML"; });

TEST_P(BrokenPropertyListForms, EveryTruncationIsRefused)
{
    const QByteArray whole = sample(GetParam());
    ASSERT_TRUE(PropertyList::read(whole));
    // What may be missing is the line feed at the end.
    const qsizetype needed = whole.trimmed().size();
    for (qsizetype size = 0; size < needed; ++size) {
        // The same bytes with nothing behind them, so that a sanitizer sees a read past the end.
        const std::vector<char> exact(whole.constData(), whole.constData() + size);
        const PropertyList::ReadResult result =
            PropertyList::read(QByteArray::fromRawData(exact.data(), size));
        EXPECT_FALSE(result) << size;
        EXPECT_FALSE(result.error.isEmpty()) << size;
    }
}

TEST_P(BrokenPropertyListForms, FlippedBytesAreRefusedOrReadAndWrittenBack)
{
    const QByteArray whole = sample(GetParam());
    std::mt19937 random(seed);
    int read = 0;
    for (int i = 0; i < flips; ++i) {
        QByteArray bytes = whole;
        for (unsigned count = 1 + random() % 3; count > 0; --count)
            bytes[qsizetype(random() % std::size_t(bytes.size()))] = char(random());
        const QString complaint = readsBackEqual(bytes);
        ASSERT_EQ(complaint, QString()) << "flip " << i << ": " << qPrintable(complaint);
        QString error;
        read += PropertyListDocument::parse(bytes, &error) != nullptr;
    }
    // Both outcomes were met.
    EXPECT_GT(read, 0);
    EXPECT_LT(read, flips);
}

TEST(BrokenPropertyLists, EveryNamedDefectIsRefusedWithAReason)
{
    QElapsedTimer timer;
    timer.start();
    for (const QFileInfo &file : filesIn(QStringLiteral(QUENBY_TEST_DATA "/broken-property-lists"))) {
        const PropertyList::ReadResult result = PropertyList::read(contents(file.filePath()));
        EXPECT_FALSE(result) << qPrintable(file.fileName());
        EXPECT_FALSE(result.error.isEmpty()) << qPrintable(file.fileName());
    }
    EXPECT_LT(timer.elapsed(), bounded);
}

TEST(BrokenPropertyLists, TheCorpusOfTheFuzzTargetsHolds)
{
    for (const char *form : {"binary-plist", "xml-plist"}) {
        for (const QFileInfo &file :
             filesIn(QStringLiteral(QUENBY_FUZZ_CORPUS "/") + QString::fromLatin1(form))) {
            const QString complaint = readsBackEqual(contents(file.filePath()));
            EXPECT_EQ(complaint, QString()) << qPrintable(file.fileName() + QLatin1String(": ") + complaint);
        }
    }
}

TEST(BrokenPropertyLists, AMillionLevelsAreRefusedInBoundedTime)
{
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(PropertyList::read(nestedBinary(absurdDepth)));
    EXPECT_FALSE(PropertyList::read(QByteArray("<array>").repeated(absurdDepth)));
    EXPECT_FALSE(PropertyList::read(QByteArray("<array>").repeated(absurdDepth) +
                                    QByteArray("</array>").repeated(absurdDepth)));
    EXPECT_FALSE(PropertyList::read(QByteArray("<dict><key>k</key>").repeated(absurdDepth)));
    EXPECT_LT(timer.elapsed(), bounded);
}

TEST(BrokenPropertyLists, TheLimitOfNestingIsTheSameForReaders)
{
    constexpr int depth = PropertyList::Limits::depth;
    for (const int levels : {depth, depth + 1}) {
        PropertyList::ReadResult binary = PropertyList::read(nestedBinary(levels));
        PropertyList::ReadResult xml = PropertyList::read(QByteArray("<array>").repeated(levels) +
                                                          QByteArray("</array>").repeated(levels));
        EXPECT_EQ(bool(binary), levels == depth);
        EXPECT_EQ(bool(xml), levels == depth);
        if (binary)
            PropertyList::destroy(*binary.value);
        if (xml)
            PropertyList::destroy(*xml.value);
    }
}

TEST(BrokenPropertyLists, NestingIsCountedThroughASharedContainer)
{
    // The root, a chain of arrays, and at its end the shared chain, which the root has by itself too:
    // whichever of the two is met first, the levels of both count.
    constexpr int shared = 1500;
    constexpr int depth = PropertyList::Limits::depth;
    for (const bool sharedFirst : {true, false}) {
        for (const int levels : {depth, depth + 1}) {
            BinaryDocument document;
            BinaryDocument::Ref inner = document.array({});
            for (int level = 1; level < shared; ++level)
                inner = document.array({inner});
            BinaryDocument::Ref outer = inner;
            for (int level = 1 + shared; level < levels; ++level)
                outer = document.array({outer});
            const BinaryDocument::Ref root = document.array(sharedFirst ? BinaryDocument::Refs{inner, outer}
                                                                        : BinaryDocument::Refs{outer, inner});
            QString error;
            EXPECT_EQ(PropertyListDocument::parse(document.bytes(root), &error) != nullptr, levels == depth)
                << sharedFirst << ' ' << levels;
        }
    }
}

TEST(BrokenPropertyLists, OffsetsTooNarrowForTheNumberOfObjectsAreRefused)
{
    // 256 objects can be told apart by an offset of one byte; one more cannot. All of them are the same byte
    // of the file, so that every offset is in range.
    for (const quint64 objects : {256, 257}) {
        QByteArray bytes("bplist00");
        bytes += QByteArray(300, '\x09');
        const qsizetype table = bytes.size();
        bytes += QByteArray(qsizetype(objects), '\x08') + QByteArray(6, '\0') + '\1' + '\2';
        BinaryDocument::append(bytes, objects, 8);
        BinaryDocument::append(bytes, 0, 8);
        BinaryDocument::append(bytes, quint64(table), 8);
        EXPECT_EQ(bool(PropertyList::read(bytes)), objects == 256) << objects;
    }
}

TEST(BrokenPropertyLists, AnObjectThatRunsIntoTheOffsetTableIsRefused)
{
    // Of each type with content, the last object of a document, whole and with its last byte missing.
    for (const char *object : {"102a", "2300000000000000ff", "3300000000000000ff", "8102ff", "4261ff",
                               "526162", "6200610062", "5f10026162", "a100", "a20000", "d10000"}) {
        BinaryDocument document;
        document.string("k");
        BinaryDocument shorter = document;
        const QByteArray bytes = QByteArray::fromHex(object);
        EXPECT_TRUE(PropertyList::read(document.bytes(document.raw(bytes)))) << object;
        EXPECT_FALSE(PropertyList::read(shorter.bytes(shorter.raw(bytes.chopped(1))))) << object;
    }
}

TEST(BrokenPropertyLists, AByteThatIsNotASCIIIsFoundWhereverItStands)
{
    constexpr qsizetype longest = 40;
    for (qsizetype size = 1; size <= longest; ++size) {
        for (qsizetype at = -1; at < size; ++at) {
            QByteArray text(size, 'a');
            if (at >= 0)
                text[at] = '\x80';
            BinaryDocument document;
            EXPECT_EQ(bool(PropertyList::read(document.bytes(document.string(text)))), at < 0)
                << size << ' ' << at;
        }
    }
}

TEST(BrokenPropertyLists, MillionsOfCharacterReferencesAreReadInLinearTime)
{
    constexpr int count = 1'000'000;
    QElapsedTimer timer;
    timer.start();
    const PropertyList::ReadResult result =
        PropertyList::read("<string>" + QByteArray("&amp;").repeated(count) + "</string>");
    ASSERT_TRUE(result) << qPrintable(result.error);
    EXPECT_EQ(*result.value, QVariant(QString(count, u'&')));
    EXPECT_LT(timer.elapsed(), bounded);
}

TEST(BrokenPropertyLists, ATagOverTheLimitIsRefusedAndNothingElseThatIsAsLong)
{
    const auto tag = [](qsizetype size, char c) {
        const QByteArray start = "<dict a=\"";
        const QByteArray end = "\"/>";
        return start + QByteArray(size - start.size() - end.size(), c) + end;
    };
    for (const char c : {'a', '>', '\'', '['}) {
        EXPECT_TRUE(PropertyList::read(tag(4096, c))) << c;
        EXPECT_FALSE(PropertyList::read(tag(4097, c))) << c;
        // Neither can it be hidden.
        EXPECT_FALSE(PropertyList::read("<array><!--'--><?a '?><string><![CDATA['\"]]>'</string>" +
                                        tag(4097, c) + "</array>"))
            << c;
        const QString wide = QString::fromLatin1(tag(4097, c));
        EXPECT_FALSE(PropertyList::read(
            "\xff\xfe" + QByteArray(reinterpret_cast<const char *>(wide.utf16()), 2 * wide.size())))
            << c;
    }
    const QByteArray text = QByteArray("<dict a=\"[\">'").repeated(1000);
    const PropertyList::ReadResult read =
        PropertyList::read("<array><!--" + text + "--><?a " + text + "?><string><![CDATA[" + text + "]]>" +
                           QByteArray("'>\"").repeated(3000) + "</string></array>");
    ASSERT_TRUE(read) << qPrintable(read.error);
    EXPECT_TRUE(read.value->toList().value(0).toString().startsWith(QString::fromLatin1(text)));
}

TEST(BrokenPropertyLists, AFileOverTheSizeLimitIsRefusedUnread)
{
    // Never touched, so never in memory.
    const QByteArray huge = QByteArray::fromRawData("bplist00", 8);
    std::unique_ptr<char[]> room(new char[std::size_t(PropertyList::Limits::inputSize) + 1]);
    std::copy(huge.begin(), huge.end(), room.get());
    const QByteArray bytes = QByteArray::fromRawData(room.get(), PropertyList::Limits::inputSize + 1);
    EXPECT_FALSE(PropertyList::read(bytes));
    room[0] = '<';
    EXPECT_FALSE(PropertyList::read(bytes));
}
