// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/KeyedArchiver.h"

#include "Platform/PropertyLists/KeyedUnarchiver.h"
#include "Tests/Platform/PropertyLists/TaggedContent.h"

#include <QSet>
#include <gmock/gmock.h>
#include <limits>

using PropertyList::ReadResult;
using PropertyList::UID;
using PropertyList::WriteResult;
using TaggedContent::canonical;
using ::testing::HasSubstr;

namespace {

QVariantMap everyType()
{
    const QVariantMap inner{{QStringLiteral("n"), 1LL}, {QStringLiteral("empty"), QVariantMap()}};
    return {
        {QString(), QStringLiteral("empty key")},
        {QStringLiteral("string"), QStringLiteral("caf\u00e9 \U0001f600")},
        {QStringLiteral("loneSurrogate"), QString(QChar(0xd800))},
        {QStringLiteral("nul"), QString::fromUtf16(u"a\0b", 3)},
        {QStringLiteral("nullMarker"), QStringLiteral("$null")},
        {QStringLiteral("$null"), QStringLiteral("as a key")},
        {QStringLiteral("fieldNames"),
         QVariantList{QStringLiteral("NS.keys"), QStringLiteral("$class"), QStringLiteral("NSDictionary")}},
        {QStringLiteral("null"), QVariant()},
        {QStringLiteral("true"), true},
        {QStringLiteral("false"), false},
        {QStringLiteral("one"), 1LL},
        {QStringLiteral("realOne"), 1.0},
        {QStringLiteral("least"), std::numeric_limits<qlonglong>::min()},
        {QStringLiteral("most"), std::numeric_limits<qulonglong>::max()},
        {QStringLiteral("infinite"), std::numeric_limits<double>::infinity()},
        {QStringLiteral("date"), QDateTime(QDate(1950, 1, 1), QTime(1, 2, 3, 456), Qt::UTC)},
        {QStringLiteral("fineDate"), PropertyList::dateValue(1e-6)},
        {QStringLiteral("data"), QByteArray("\x00\xff", 2)},
        {QStringLiteral("list"), QVariantList{1LL, true, 1.0, QVariantList(), inner, inner}},
        {QStringLiteral("uidInName"), QVariantMap{{QStringLiteral("CF$UID"), 3LL}}},
    };
}

/// The property list that the archive is.
QVariantMap layoutOf(const WriteResult &archive)
{
    EXPECT_TRUE(archive) << archive.error.toStdString();
    const ReadResult result = PropertyList::read(archive.bytes.value_or(QByteArray()));
    EXPECT_TRUE(result) << result.error.toStdString();
    return result.value.value_or(QVariant()).toMap();
}

QVariantList objectsOf(const QVariantMap &layout)
{
    return layout.value(QStringLiteral("$objects")).toList();
}

quint64 uidOf(const QVariant &value)
{
    EXPECT_EQ(value.metaType(), QMetaType::fromType<UID>());
    return value.value<UID>().value;
}

QVariant rootOf(const QVariantMap &layout)
{
    return objectsOf(layout).value(
        qsizetype(uidOf(layout.value(QStringLiteral("$top")).toMap().value(QStringLiteral("root")))));
}

QVariantList classesOf(const QVariantMap &layout, const QVariantMap &object)
{
    const QVariantMap description =
        objectsOf(layout).value(qsizetype(uidOf(object.value(QStringLiteral("$class"))))).toMap();
    EXPECT_EQ(description.value(QStringLiteral("$classname")),
              description.value(QStringLiteral("$classes")).toList().value(0));
    return description.value(QStringLiteral("$classes")).toList();
}

void expectRoundTrip(const QVariant &value)
{
    const WriteResult archive = KeyedArchiver::archivedDataWithRootObject(value);
    ASSERT_TRUE(archive) << archive.error.toStdString();
    const ReadResult result = KeyedUnarchiver::unarchiveObject(*archive.bytes);
    ASSERT_TRUE(result) << result.error.toStdString();
    EXPECT_EQ(canonical(*result.value).toStdString(), canonical(value).toStdString());
}

std::string reasonFor(const QVariant &value)
{
    const WriteResult archive = KeyedArchiver::archivedDataWithRootObject(value);
    EXPECT_FALSE(archive);
    return archive.error.toStdString();
}

KeyedArchiver::Ref nestedArrays(KeyedArchiver &archiver, int levels)
{
    KeyedArchiver::Ref ref = archiver.array({});
    for (int i = 1; i < levels; ++i)
        ref = archiver.array(std::span(&ref, 1));
    return ref;
}

} // namespace

TEST(KeyedArchiver, EveryTypeSurvivesARoundTrip)
{
    expectRoundTrip(everyType());
    for (const QVariant &value : everyType())
        expectRoundTrip(value);
}

TEST(KeyedArchiver, ParsedValuesAreArchivedWithoutMaterialisingThem)
{
    const PropertyListDocument::Ptr document =
        PropertyListDocument::parse(PropertyList::write(everyType()).bytes.value(), nullptr);
    ASSERT_TRUE(document);
    KeyedArchiver archiver;
    const WriteResult archive = archiver.finish(archiver.value(document->root()));
    ASSERT_TRUE(archive) << archive.error.toStdString();
    EXPECT_EQ(canonical(KeyedUnarchiver::unarchiveObject(*archive.bytes).value.value()).toStdString(),
              canonical(everyType()).toStdString());
}

TEST(KeyedArchiver, FrameIsThatOfTheOriginalPlatform)
{
    const QVariantMap layout = layoutOf(KeyedArchiver::archivedDataWithRootObject(QVariantMap()));
    EXPECT_EQ(layout.keys(), (QStringList{QStringLiteral("$archiver"), QStringLiteral("$objects"),
                                          QStringLiteral("$top"), QStringLiteral("$version")}));
    EXPECT_EQ(layout.value(QStringLiteral("$version")), QVariant(100000LL));
    EXPECT_EQ(layout.value(QStringLiteral("$archiver")), QVariant(QStringLiteral("NSKeyedArchiver")));
    EXPECT_EQ(layout.value(QStringLiteral("$top")).toMap().keys(), QStringList{QStringLiteral("root")});
    EXPECT_EQ(objectsOf(layout).value(0), QVariant(QStringLiteral("$null")));
}

TEST(KeyedArchiver, ContainersAreMutableOrNotAsAsked)
{
    using Mutability = KeyedArchiver::Mutability;
    const QString object = QStringLiteral("NSObject");
    const QString dictionary = QStringLiteral("NSDictionary");
    const QString array = QStringLiteral("NSArray");
    const QVariantList expected[][2] = {{{QStringLiteral("NSMutableDictionary"), dictionary, object},
                                         {QStringLiteral("NSMutableArray"), array, object}},
                                        {{dictionary, object}, {array, object}}};
    for (const Mutability mutability : {Mutability::Mutable, Mutability::Immutable}) {
        KeyedArchiver archiver;
        const KeyedArchiver::Ref key = archiver.string(u"k");
        const KeyedArchiver::Ref elements[] = {key, archiver.null()};
        const KeyedArchiver::Ref value = archiver.array(elements, mutability);
        const QVariantMap layout = layoutOf(
            archiver.finish(archiver.dictionary(std::span(&key, 1), std::span(&value, 1), mutability)));
        const QVariantMap root = rootOf(layout).toMap();
        EXPECT_EQ(root.keys(), (QStringList{QStringLiteral("$class"), QStringLiteral("NS.keys"),
                                            QStringLiteral("NS.objects")}));
        EXPECT_EQ(classesOf(layout, root), expected[int(mutability)][0]);
        const QVariantList keys = root.value(QStringLiteral("NS.keys")).toList();
        const QVariantList values = root.value(QStringLiteral("NS.objects")).toList();
        ASSERT_EQ(keys.size(), 1);
        ASSERT_EQ(values.size(), 1);
        EXPECT_EQ(objectsOf(layout).value(qsizetype(uidOf(keys[0]))), QVariant(QStringLiteral("k")));
        const QVariantMap list = objectsOf(layout).value(qsizetype(uidOf(values[0]))).toMap();
        EXPECT_EQ(classesOf(layout, list), expected[int(mutability)][1]);
        const QVariantList parts = list.value(QStringLiteral("NS.objects")).toList();
        ASSERT_EQ(parts.size(), 2);
        EXPECT_EQ(uidOf(parts[0]), uidOf(keys[0]));
        EXPECT_EQ(classesOf(layout, objectsOf(layout).value(qsizetype(uidOf(parts[1]))).toMap()),
                  (QVariantList{QStringLiteral("NSNull"), object}));
    }
}

TEST(KeyedArchiver, EqualScalarsOfOneTypeShareOneReference)
{
    KeyedArchiver archiver;
    const QDateTime date(QDate(2020, 1, 1), QTime(0, 0), Qt::UTC);
    EXPECT_EQ(archiver.string(u"1"), archiver.string(u"1"));
    EXPECT_EQ(archiver.string(u"$null"), archiver.string(u"$null"));
    EXPECT_EQ(archiver.integer(1), archiver.unsignedInteger(1));
    EXPECT_EQ(archiver.real(1), archiver.real(1));
    EXPECT_EQ(archiver.boolean(true), archiver.boolean(true));
    EXPECT_EQ(archiver.date(date), archiver.date(date));
    EXPECT_EQ(archiver.data(QByteArrayView("1")), archiver.data(QByteArrayView("1")));
    const QSet<KeyedArchiver::Ref> all{archiver.null(),
                                       archiver.string(u"1"),
                                       archiver.string(u"$null"),
                                       archiver.integer(1),
                                       archiver.real(1),
                                       archiver.boolean(true),
                                       archiver.data(QByteArrayView("1")),
                                       archiver.date(date),
                                       archiver.real(0),
                                       archiver.real(-0.0),
                                       archiver.boolean(false),
                                       archiver.integer(0)};
    EXPECT_EQ(all.size(), 12);
}

TEST(KeyedArchiver, AStringThatLooksLikeNullIsAStringObject)
{
    const QVariantMap layout = layoutOf(KeyedArchiver::archivedDataWithRootObject(QStringLiteral("$null")));
    const QVariantMap root = rootOf(layout).toMap();
    EXPECT_EQ(root.value(QStringLiteral("NS.string")), QVariant(QStringLiteral("$null")));
    EXPECT_EQ(classesOf(layout, root),
              (QVariantList{QStringLiteral("NSMutableString"), QStringLiteral("NSString"),
                            QStringLiteral("NSObject")}));
}

TEST(KeyedArchiver, NullIsNoObjectAsTheRootAndAnObjectInAContainer)
{
    const QVariantMap bare = layoutOf(KeyedArchiver::archivedDataWithRootObject(QVariant()));
    EXPECT_EQ(uidOf(bare.value(QStringLiteral("$top")).toMap().value(QStringLiteral("root"))), 0U);
    const QVariantMap layout =
        layoutOf(KeyedArchiver::archivedDataWithRootObject(QVariantList{QVariant(), QVariant()}));
    const QVariantList parts = rootOf(layout).toMap().value(QStringLiteral("NS.objects")).toList();
    ASSERT_EQ(parts.size(), 2);
    EXPECT_EQ(uidOf(parts[0]), uidOf(parts[1]));
    EXPECT_NE(uidOf(parts[0]), 0U);
}

TEST(KeyedArchiver, DatesAreObjectsWithSecondsSince2001)
{
    const QVariantMap layout = layoutOf(KeyedArchiver::archivedDataWithRootObject(
        QDateTime(QDate(2001, 1, 2), QTime(0, 0, 0, 500), Qt::UTC)));
    const QVariantMap root = rootOf(layout).toMap();
    EXPECT_EQ(root.value(QStringLiteral("NS.time")), QVariant(86400.5));
    EXPECT_EQ(classesOf(layout, root), (QVariantList{QStringLiteral("NSDate"), QStringLiteral("NSObject")}));
}

TEST(KeyedArchiver, OfARepeatedKeyTheLastEntryCounts)
{
    for (const int others : {0, 40}) {
        KeyedArchiver archiver;
        std::vector<KeyedArchiver::Ref> keys{archiver.string(u"k"), archiver.string(u"k")};
        std::vector<KeyedArchiver::Ref> values{archiver.integer(1), archiver.integer(2)};
        QVariantMap expected{{QStringLiteral("k"), 2LL}};
        for (int i = 0; i < others; ++i) {
            keys.push_back(archiver.string(QString::number(i)));
            values.push_back(archiver.integer(i));
            expected.insert(QString::number(i), qlonglong(i));
        }
        const WriteResult archive = archiver.finish(archiver.dictionary(keys, values));
        ASSERT_TRUE(archive);
        EXPECT_EQ(rootOf(layoutOf(archive)).toMap().value(QStringLiteral("NS.keys")).toList().size(),
                  others + 1);
        EXPECT_EQ(canonical(KeyedUnarchiver::unarchiveObject(*archive.bytes).value.value()),
                  canonical(expected));
    }
}

TEST(KeyedArchiver, WhatAnArchiveCannotHoldFailsAsAWhole)
{
    EXPECT_THAT(reasonFor(QVariantList{QVariant::fromValue(UID{1})}), HasSubstr("UID"));
    EXPECT_THAT(reasonFor(QVariantMap{{QStringLiteral("k"), QChar(u'x')}}), HasSubstr("QChar"));
    EXPECT_FALSE(reasonFor(QDateTime()).empty());
    KeyedArchiver archiver;
    const KeyedArchiver::Ref number = archiver.integer(7);
    const KeyedArchiver::Ref text = archiver.string(u"x");
    EXPECT_TRUE(archiver.finish(text));
    archiver.dictionary(std::span(&number, 1), std::span(&text, 1));
    EXPECT_FALSE(archiver.finish(text));
    KeyedArchiver uneven;
    const KeyedArchiver::Ref key = uneven.string(u"x");
    uneven.dictionary(std::span(&key, 1), {});
    EXPECT_FALSE(uneven.finish(uneven.null()));
}

TEST(KeyedArchiver, FinishMayBeCalledAgainAfterMoreWasAdded)
{
    KeyedArchiver archiver;
    const KeyedArchiver::Ref first = archiver.string(u"first");
    const WriteResult before = archiver.finish(first);
    const KeyedArchiver::Ref both[] = {first, archiver.string(u"root"), archiver.integer(100000)};
    const WriteResult after = archiver.finish(archiver.array(both));
    ASSERT_TRUE(before);
    ASSERT_TRUE(after);
    EXPECT_EQ(canonical(KeyedUnarchiver::unarchiveObject(*before.bytes).value.value()),
              canonical(QStringLiteral("first")));
    EXPECT_EQ(canonical(KeyedUnarchiver::unarchiveObject(*after.bytes).value.value()),
              canonical(QVariantList{QStringLiteral("first"), QStringLiteral("root"), 100000LL}));
}

TEST(KeyedArchiver, NothingIsWrittenThatTheReaderRefuses)
{
    KeyedArchiver atLimit;
    const WriteResult deep = atLimit.finish(nestedArrays(atLimit, PropertyList::Limits::depth));
    ASSERT_TRUE(deep) << deep.error.toStdString();
    EXPECT_TRUE(KeyedUnarchiver::unarchivedDocument(*deep.bytes, nullptr));
    KeyedArchiver overLimit;
    EXPECT_FALSE(overLimit.finish(nestedArrays(overLimit, PropertyList::Limits::depth + 1)));

    // 2^n values for n small objects: the last that is written is read, the first that is not is refused.
    int written = 0;
    for (int levels = 1; levels < 64; ++levels) {
        KeyedArchiver archiver;
        KeyedArchiver::Ref ref = archiver.string(u"leaf");
        for (int i = 0; i < levels; ++i) {
            const KeyedArchiver::Ref twice[] = {ref, ref};
            ref = archiver.array(twice);
        }
        if (const WriteResult archive = archiver.finish(ref)) {
            written = levels;
            ASSERT_TRUE(KeyedUnarchiver::unarchivedDocument(*archive.bytes, nullptr)) << levels;
        }
    }
    EXPECT_EQ(written, 13); // 2^13 - 1 containers; the next level passes ten thousand
}

TEST(KeyedArchiver, ValuesAreArchivedToTheDepthLimitAndRefusedBeyond)
{
    QVariant value = QVariantList();
    for (int i = 1; i < PropertyList::Limits::depth; ++i)
        value = QVariantList{value};
    const WriteResult archive = KeyedArchiver::archivedDataWithRootObject(value);
    ASSERT_TRUE(archive) << archive.error.toStdString();
    EXPECT_TRUE(KeyedUnarchiver::unarchivedDocument(*archive.bytes, nullptr));
    value = QVariantMap{{QStringLiteral("k"), value}};
    EXPECT_THAT(reasonFor(value), HasSubstr("nesting"));
}

TEST(KeyedArchiver, ReferencesOfEveryWidthAreRead)
{
    for (const int count : {200,    250,    251,    252,    253,    254,    255,    256,    257,    300,
                            65'520, 65'530, 65'531, 65'532, 65'533, 65'534, 65'535, 65'536, 65'537, 66'000}) {
        QVariantList list;
        for (int i = 0; i < count; ++i)
            list.append(QString::number(i));
        const WriteResult archive = KeyedArchiver::archivedDataWithRootObject(list);
        ASSERT_TRUE(archive);
        const ReadResult result = KeyedUnarchiver::unarchiveObject(*archive.bytes);
        ASSERT_TRUE(result) << count << ": " << result.error.toStdString();
        EXPECT_EQ(*result.value, QVariant(list)) << count;
    }
}
