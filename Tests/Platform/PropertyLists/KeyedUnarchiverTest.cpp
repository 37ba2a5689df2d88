// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/KeyedUnarchiver.h"

#include "Tests/Platform/PropertyLists/ArchiveBuilder.h"
#include "Tests/Platform/PropertyLists/TaggedContent.h"
#include "Tests/Session/FileContent.h"

#include <QDir>
#include <gmock/gmock.h>

using namespace ArchiveBuilder;
using PropertyList::ReadResult;
using TaggedContent::canonical;
using ::testing::HasSubstr;

static const QString folder = QStringLiteral(QUENBY_TEST_DATA "/archives/");

static std::vector<std::string> archivesIn(const QString &path)
{
    std::vector<std::string> names;
    for (const QString &name : QDir(path).entryList({QStringLiteral("*.archive")}, QDir::Files, QDir::Name))
        names.push_back(name.toStdString());
    return names;
}

static std::string testName(const ::testing::TestParamInfo<std::string> &info)
{
    std::string name = info.param;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return !std::isalnum(c); }, '_');
    return name;
}

static void expectContent(const QByteArray &archive, const QVariant &content)
{
    const ReadResult result = KeyedUnarchiver::unarchiveObject(archive);
    ASSERT_TRUE(result) << result.error.toStdString();
    EXPECT_EQ(canonical(*result.value).toStdString(), canonical(content).toStdString());
}

static std::string reasonFor(const QByteArray &archive)
{
    const ReadResult result = KeyedUnarchiver::unarchiveObject(archive);
    EXPECT_FALSE(result);
    EXPECT_FALSE(result.error.isEmpty());
    return result.error.toStdString();
}

class SampleArchive : public ::testing::TestWithParam<std::string>
{
};

TEST_P(SampleArchive, IsReadToTheContentBesideIt)
{
    const QString path = folder + QString::fromStdString(GetParam());
    const QByteArray bytes = contentOf(path);
    ASSERT_FALSE(bytes.isEmpty());
    const QByteArray json = contentOf(path + QStringLiteral(".json"));
    if (json.isEmpty()) {
        reasonFor(bytes);
        return;
    }
    const std::optional<QVariant> content = TaggedContent::fromJson(json);
    ASSERT_TRUE(content);
    expectContent(bytes, *content);
}

TEST_P(SampleArchive, IsRefusedWhereverItIsCutOff)
{
    const QByteArray bytes = contentOf(folder + QString::fromStdString(GetParam()));
    // A large sample is cut at fewer places: all of its last bytes, where the tables are, and some before.
    for (qsizetype size = 0; size<bytes.size(); size += bytes.size() - size> 5000 ? 61 : 1)
        ASSERT_FALSE(KeyedUnarchiver::unarchiveObject(bytes.first(size))) << size << " bytes";
}

INSTANTIATE_TEST_SUITE_P(KeyedUnarchiver, SampleArchive, ::testing::ValuesIn(archivesIn(folder)), testName);

class MalformedArchive : public ::testing::TestWithParam<std::string>
{
};

TEST_P(MalformedArchive, IsRefusedWithAReason)
{
    reasonFor(contentOf(folder + QStringLiteral("malformed/") + QString::fromStdString(GetParam())));
}

INSTANTIATE_TEST_SUITE_P(KeyedUnarchiver, MalformedArchive,
                         ::testing::ValuesIn(archivesIn(folder + QStringLiteral("malformed"))), testName);

TEST(KeyedUnarchiver, UnknownClassIsNamedInTheReason)
{
    EXPECT_THAT(reasonFor(contentOf(folder + QStringLiteral("malformed/unknown-class.archive"))),
                HasSubstr("NSAttributedString"));
    EXPECT_THAT(reasonFor(contentOf(folder + QStringLiteral("malformed/unknown-class-deep.archive"))),
                HasSubstr("XYZPreset"));
}

TEST(KeyedUnarchiver, StringsAreReadFromEitherField)
{
    const QStringList classes{QStringLiteral("NSMutableString"), QStringLiteral("NSString")};
    const QString text = QStringLiteral("\u00e9\u65e5");
    expectContent(object(classes, {{QStringLiteral("NS.string"), text}}), text);
    expectContent(object(classes, {{QStringLiteral("NS.bytes"), text.toUtf8()}}), text);
    expectContent(object(classes, {{QStringLiteral("NS.bytes"), QByteArray()}}), QString());
    const QString marked = QStringLiteral("\ufeffx");
    expectContent(object(classes, {{QStringLiteral("NS.bytes"), marked.toUtf8()}}), marked);
    expectContent(object(classes, {{QStringLiteral("NS.string"), uid(3)}}, {text}), text);
}

TEST(KeyedUnarchiver, DataIsReadBareAndWrapped)
{
    const QByteArray data("\x00\x01\xff", 3);
    expectContent(bytesOf(archive({data})), data);
    expectContent(object({QStringLiteral("NSMutableData"), QStringLiteral("NSData")},
                         {{QStringLiteral("NS.data"), data}}),
                  data);
    expectContent(object({QStringLiteral("NSData")}, {{QStringLiteral("NS.data"), uid(3)}}, {data}), data);
}

TEST(KeyedUnarchiver, DatesAreReadBareWrappedAndAsCalendarDates)
{
    const QDateTime date(QDate(2020, 2, 29), QTime(12, 34, 56, 250), Qt::UTC);
    const double seconds = PropertyList::dateSeconds(date).value_or(0);
    expectContent(bytesOf(archive({date})), date);
    expectContent(object({QStringLiteral("NSDate")}, {{QStringLiteral("NS.time"), seconds}}), date);
    expectContent(object({QStringLiteral("NSCalendarDate"), QStringLiteral("NSDate")},
                         {{QStringLiteral("$0"), seconds}, {QStringLiteral("$1"), uid(99)}}),
                  date);
    expectContent(object({QStringLiteral("NSDate")}, {{QStringLiteral("NS.time"), 86400LL}}),
                  QDateTime(QDate(2001, 1, 2), QTime(0, 0), Qt::UTC));
}

TEST(KeyedUnarchiver, NumbersAreReadBareAndWrapped)
{
    const QStringList number{QStringLiteral("NSNumber"), QStringLiteral("NSValue")};
    const QVariantList bare{7LL, -1LL, 2.5, true, false, qulonglong(1) << 63};
    for (const QVariant &value : bare) {
        expectContent(bytesOf(archive({value})), value);
        expectContent(object(number, {{QStringLiteral("NS.number"), value}}), value);
    }
    expectContent(object(number, {{QStringLiteral("NS.intval"), 7LL}}), 7LL);
    expectContent(object(number, {{QStringLiteral("NS.intval"), uid(3)}}, {7LL}), 7LL);
    expectContent(object(number, {{QStringLiteral("NS.dblval"), 2.5}}), 2.5);
    expectContent(object(number, {{QStringLiteral("NS.dblval"), 2LL}}), 2.0);
    expectContent(object(number, {{QStringLiteral("NS.boolval"), true}}), true);
    expectContent(object(number, {{QStringLiteral("NS.boolval"), 1LL}}), true);
    expectContent(object(number, {{QStringLiteral("NS.boolval"), 0LL}}), false);
}

TEST(KeyedUnarchiver, OnlyReferenceZeroAndTheNullObjectAreNull)
{
    const QStringList array{QStringLiteral("NSArray")};
    const QString marker = QStringLiteral("$null");
    const QVariantMap null{{QStringLiteral("$class"), uid(4)}};
    const QVariantMap markerString{{QStringLiteral("$class"), uid(6)}, {QStringLiteral("NS.string"), marker}};
    const QVariantList elements{uid(0), uid(3), uid(5), uid(7)};
    expectContent(
        object(array, {{QStringLiteral("NS.objects"), elements}},
               {null, classNamed({QStringLiteral("NSNull")}), markerString,
                classNamed({QStringLiteral("NSMutableString"), QStringLiteral("NSString")}), marker}),
        QVariantList{QVariant(), QVariant(), marker, marker});
    expectContent(bytesOf(archive({}, {{QStringLiteral("root"), uid(0)}})), QVariant());
}

TEST(KeyedUnarchiver, SetsAndOrderedSetsAreArrays)
{
    const QVariantList elements{uid(3), uid(4)};
    const QVariantList content{QStringLiteral("a"), QStringLiteral("b")};
    for (const QStringList &classes :
         {QStringList{QStringLiteral("NSSet")},
          QStringList{QStringLiteral("NSMutableSet"), QStringLiteral("NSSet")},
          QStringList{QStringLiteral("NSOrderedSet")},
          QStringList{QStringLiteral("NSMutableOrderedSet"), QStringLiteral("NSOrderedSet")},
          QStringList{QStringLiteral("NSMutableArray"), QStringLiteral("NSArray")}}) {
        expectContent(object(classes, {{QStringLiteral("NS.objects"), elements}}, content), content);
        expectContent(
            object(classes,
                   {{QStringLiteral("NS.object.0"), uid(3)}, {QStringLiteral("NS.object.1"), uid(4)}},
                   content),
            content);
    }
}

TEST(KeyedUnarchiver, NumberedFieldsAreTakenInTheOrderOfTheirNumbers)
{
    QVariantMap fields;
    QVariantList content;
    QVariantMap dictionaryFields;
    QVariantMap dictionary;
    for (int i = 0; i < 25; ++i) { // as text, 10 sorts before 9
        fields.insert(QStringLiteral("NS.object.%1").arg(i), uid(quint64(i) + 3));
        dictionaryFields.insert(QStringLiteral("NS.key.%1").arg(i), uid(quint64(i) + 3));
        dictionaryFields.insert(QStringLiteral("NS.object.%1").arg(i), uid(quint64(25 - i) + 2));
        content.append(QStringLiteral("value %1").arg(i));
    }
    for (int i = 0; i < 25; ++i)
        dictionary.insert(content[i].toString(), content[24 - i]);
    expectContent(object({QStringLiteral("NSArray")}, fields, content), content);
    expectContent(object({QStringLiteral("NSDictionary")}, dictionaryFields, content), dictionary);
    expectContent(object({QStringLiteral("NSArray")}, {}), QVariantList());
    expectContent(object({QStringLiteral("NSDictionary")}, {}), QVariantMap());
}

TEST(KeyedUnarchiver, ClassIsToldByMembershipNotByItsName)
{
    const QVariantMap fields{{QStringLiteral("NS.keys"), QVariantList{uid(3)}},
                             {QStringLiteral("NS.objects"), QVariantList{uid(3)}}};
    const QVariantMap content{{QStringLiteral("x"), QStringLiteral("x")}};
    expectContent(object({QStringLiteral("ABCRecord"), QStringLiteral("NSMutableDictionary"),
                          QStringLiteral("NSDictionary")},
                         fields, {QStringLiteral("x")}),
                  content);
    QVariantMap disguised = classNamed({QStringLiteral("ABCRecord")});
    disguised.insert(QStringLiteral("$classname"), QStringLiteral("NSDictionary"));
    QVariantMap root = fields;
    root.insert(QStringLiteral("$class"), uid(2));
    EXPECT_THAT(reasonFor(bytesOf(archive({root, disguised, QStringLiteral("x")}))),
                HasSubstr("unknown class"));
}

TEST(KeyedUnarchiver, TheOnlyTopKeyNeedNotBeRoot)
{
    const QVariantList objects{QStringLiteral("one"), QStringLiteral("two")};
    expectContent(bytesOf(archive(objects, {{QStringLiteral("$0"), uid(2)}})), QStringLiteral("two"));
    expectContent(
        bytesOf(archive(objects, {{QStringLiteral("other"), uid(1)}, {QStringLiteral("root"), uid(2)}})),
        QStringLiteral("two"));
}

TEST(KeyedUnarchiver, InlinedValuesAreTakenWhereAReferenceIsUsual)
{
    const QVariantMap inlinedDate{{QStringLiteral("NS.time"), 0.0},
                                  {QStringLiteral("$class"), classNamed({QStringLiteral("NSDate")})}};
    const QVariantList elements{QStringLiteral("text"),
                                7LL,
                                2.5,
                                true,
                                inlinedDate,
                                QVariantList{uid(3), 1LL},
                                QVariantMap{{QStringLiteral("plain"), uid(3)}}};
    const QVariantList content{QStringLiteral("text"),
                               7LL,
                               2.5,
                               true,
                               PropertyList::dateValue(0),
                               QVariantList{QStringLiteral("x"), 1LL},
                               QVariantMap{{QStringLiteral("plain"), QStringLiteral("x")}}};
    expectContent(object({QStringLiteral("NSArray")}, {{QStringLiteral("NS.objects"), elements}},
                         {QStringLiteral("x")}),
                  content);
    expectContent(object({QStringLiteral("NSArray")}, {{QStringLiteral("NS.objects"), uid(3)}},
                         {QVariantList{uid(4), 1LL}, QStringLiteral("x")}),
                  QVariantList{QStringLiteral("x"), 1LL});
    expectContent(bytesOf(archive({}, {{QStringLiteral("root"), QStringLiteral("inlined root")}})),
                  QStringLiteral("inlined root"));
}

TEST(KeyedUnarchiver, XmlArchivesAreReadLikeBinaryOnes)
{
    const QByteArray xml = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0"><dict>
<key>$archiver</key><string>NSKeyedArchiver</string>
<key>$objects</key><array>
 <string>$null</string>
 <dict><key>NS.objects</key><array><dict><key>CF$UID</key><integer>5</integer></dict><dict><key>CF$UID</key><integer>0</integer></dict></array>
  <key>$class</key><dict><key>CF$UID</key><integer>3</integer></dict>
  <key>NS.keys</key><array><dict><key>CF$UID</key><integer>2</integer></dict><dict><key>CF$UID</key><integer>4</integer></dict></array></dict>
 <string>label</string>
 <dict><key>$classes</key><array><string>NSMutableDictionary</string><string>NSDictionary</string><string>NSObject</string></array><key>$classname</key><string>NSMutableDictionary</string></dict>
 <string>nothing</string>
 <string>caf&#233;</string>
</array>
<key>$top</key><dict><key>root</key><dict><key>CF$UID</key><integer>1</integer></dict></dict>
<key>$version</key><integer>100000</integer>
</dict></plist>)";
    expectContent(xml, QVariantMap{{QStringLiteral("label"), QStringLiteral("caf\u00e9")},
                                   {QStringLiteral("nothing"), QVariant()}});
    for (qsizetype size = 0; size < xml.lastIndexOf("</plist>"); ++size)
        ASSERT_FALSE(KeyedUnarchiver::unarchiveObject(xml.first(size))) << size << " bytes";
}

TEST(KeyedUnarchiver, SharedObjectsAreReadOnceAndSeenEverywhere)
{
    const QVariantMap list{{QStringLiteral("NS.objects"), QVariantList{uid(4)}},
                           {QStringLiteral("$class"), uid(2)}};
    const QByteArray bytes =
        object({QStringLiteral("NSArray")}, {{QStringLiteral("NS.objects"), QVariantList{uid(3), uid(3)}}},
               {list, QStringLiteral("x")});
    const QVariantList once{QStringLiteral("x")};
    expectContent(bytes, QVariantList{QVariant(once), QVariant(once)});
    const PropertyListDocument::Ptr document = KeyedUnarchiver::unarchivedDocument(bytes, nullptr);
    ASSERT_TRUE(document);
    EXPECT_EQ(document->root().at(0).handle(), document->root().at(1).handle());
    EXPECT_EQ(&document->root().at(0).at(0).string(), &document->root().at(1).at(0).string());
}

TEST(KeyedUnarchiver, NestingIsReadUpToTheLimitAndNoFurther)
{
    EXPECT_TRUE(KeyedUnarchiver::unarchivedDocument(nestedArrays(PropertyList::Limits::depth), nullptr));
    EXPECT_THAT(reasonFor(nestedArrays(PropertyList::Limits::depth + 1)), HasSubstr("nest"));
}

TEST(KeyedUnarchiver, NestingIsCountedThroughASharedContainer)
{
    // The root has the shared chain by itself and at the end of another chain.
    constexpr int shared = 1500;
    constexpr int depth = PropertyList::Limits::depth;
    for (const bool sharedFirst : {true, false}) {
        for (const int levels : {depth, depth + 1}) {
            QVariantList objects;
            const int others = levels - 1 - shared;
            const quint64 classNumber = quint64(2 + others + shared);
            const auto add = [&](const QVariantList &elements) {
                objects.append(QVariantMap{{QStringLiteral("NS.objects"), elements},
                                           {QStringLiteral("$class"), uid(classNumber)}});
            };
            const QVariant sharedStart = uid(quint64(2 + others));
            add(sharedFirst ? QVariantList{sharedStart, uid(2)} : QVariantList{uid(2), sharedStart});
            for (int i = 0; i < others + shared; ++i)
                add(i + 1 < others + shared ? QVariantList{uid(quint64(3 + i))} : QVariantList{});
            objects.append(classNamed({QStringLiteral("NSArray")}));
            QString error;
            EXPECT_EQ(KeyedUnarchiver::unarchivedDocument(bytesOf(archive(objects)), &error) != nullptr,
                      levels == depth)
                << sharedFirst << ' ' << levels;
        }
    }
}

TEST(KeyedUnarchiver, NestingOfAMillionIsRefused)
{
    reasonFor(nestedArrays(1'000'000));
}

TEST(KeyedUnarchiver, FlippedBytesDoNoHarm)
{
    const QByteArray original = contentOf(folder + QStringLiteral("gs-basic.mutable.archive"));
    ASSERT_FALSE(original.isEmpty());
    quint32 random = 1; // a fixed sequence, so that a failure can be repeated
    int refused = 0;
    for (int round = 0; round < 10'000; ++round) {
        QByteArray bytes = original;
        for (int flips = 1 + round % 3; flips > 0; --flips) {
            random = random * 1664525 + 1013904223;
            bytes[qsizetype((random >> 8) % quint32(bytes.size()))] ^= char(1 << (random >> 5) % 8);
        }
        const ReadResult result = KeyedUnarchiver::unarchiveObject(bytes);
        if (!result) {
            ++refused;
            EXPECT_FALSE(result.error.isEmpty());
        }
    }
    EXPECT_GT(refused, 1000);
}
