// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/BinaryPropertyListWriter.h"
#include "Platform/PropertyLists/KeyedArchiver.h"
#include "Platform/PropertyLists/KeyedUnarchiver.h"
#include "Platform/PropertyLists/PropertyListDocument.h"
#include "Platform/PropertyLists/PropertyListVariant.h"
#include "Tests/Platform/PropertyLists/BinaryDocument.h"

#include <gtest/gtest.h>

namespace {

PropertyListDocument::Ptr parsedDocument(const QByteArray &bytes)
{
    QString error;
    const PropertyListDocument::Ptr document = PropertyListDocument::parse(bytes, &error);
    EXPECT_TRUE(document) << qPrintable(error);
    return document;
}

PropertyListDocument::Ptr unarchived(const QByteArray &bytes)
{
    QString error;
    const PropertyListDocument::Ptr document = KeyedUnarchiver::unarchivedDocument(bytes, &error);
    EXPECT_TRUE(document) << qPrintable(error);
    return document;
}

/// \a different keys, each \a times; the value is the number of the entry.
struct Entries
{
    int different = 0;
    int times = 0;

    int count() const { return different * times; }
    QByteArray key(int entry) const { return QByteArray::number(entry % different); }
    QVariantMap expected() const
    {
        QVariantMap map;
        for (int i = 0; i < count(); ++i)
            map.insert(QString::fromLatin1(key(i)), QString::number(i));
        return map;
    }
};

/// Every walk through the nodes meets each key once, with the value of its last entry.
void expectEachKeyOnce(const PropertyListNode &dictionary, const Entries &entries)
{
    ASSERT_TRUE(dictionary.isDictionary());
    ASSERT_EQ(dictionary.count(), entries.different);
    const QVariantMap expected = entries.expected();
    QVariantMap walked;
    for (qsizetype i = 0; i < dictionary.count(); ++i) {
        const QString &key = dictionary.keyAt(i);
        EXPECT_FALSE(walked.contains(key)) << qPrintable(key);
        walked.insert(key, dictionary.valueAt(i).toVariant());
        EXPECT_EQ(dictionary.value(key).toVariant(), expected.value(key));
    }
    EXPECT_EQ(walked, expected);
    EXPECT_EQ(dictionary.toVariant(), QVariant(expected));
    BinaryPropertyListWriter writer;
    const PropertyList::WriteResult written = writer.finish(writer.value(dictionary));
    ASSERT_TRUE(written) << qPrintable(written.error);
    EXPECT_EQ(*PropertyList::read(*written.bytes).value, QVariant(expected));
    KeyedArchiver archiver;
    const PropertyList::WriteResult archived = archiver.finish(archiver.value(dictionary));
    ASSERT_TRUE(archived) << qPrintable(archived.error);
    EXPECT_EQ(*KeyedUnarchiver::unarchiveObject(*archived.bytes).value, QVariant(expected));
}

class RepeatedKeys : public testing::TestWithParam<Entries>
{
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Sizes, RepeatedKeys,
                         testing::Values(Entries{1, 2}, Entries{3, 1}, Entries{3, 2}, Entries{8, 2},
                                         Entries{9, 2}, Entries{40, 1}, Entries{40, 3}, Entries{1, 1000}),
                         [](const auto &entries) {
                             return std::to_string(entries.param.different) + "Keys" +
                                    std::to_string(entries.param.times) + "Times";
                         });

TEST_P(RepeatedKeys, ABinaryDocumentHasEachKeyOnceWhetherItRepeatsTheReferenceOrTheText)
{
    for (const bool sameObject : {true, false}) {
        BinaryDocument document;
        BinaryDocument::Refs known;
        BinaryDocument::Refs keys;
        BinaryDocument::Refs values;
        for (int i = 0; i < GetParam().count(); ++i) {
            const QByteArray key = GetParam().key(i);
            if (sameObject && i >= GetParam().different)
                keys.push_back(known[std::size_t(i % GetParam().different)]);
            else if (i % 2 == 0)
                keys.push_back(document.string(key));
            else
                keys.push_back(document.wideString(QString::fromLatin1(key)));
            known.push_back(keys.back());
            values.push_back(document.string(QByteArray::number(i)));
        }
        const BinaryDocument::Ref dictionary = document.dictionary(keys, values);
        const PropertyListDocument::Ptr read = parsedDocument(document.bytes(dictionary));
        ASSERT_TRUE(read);
        expectEachKeyOnce(read->root(), GetParam());
    }
}

TEST_P(RepeatedKeys, AnXMLDocumentHasEachKeyOnce)
{
    QByteArray xml = "<dict>";
    for (int i = 0; i < GetParam().count(); ++i)
        xml += "<key>" + GetParam().key(i) + "</key><string>" + QByteArray::number(i) + "</string>";
    const PropertyListDocument::Ptr read = parsedDocument(xml + "</dict>");
    ASSERT_TRUE(read);
    expectEachKeyOnce(read->root(), GetParam());
}

TEST_P(RepeatedKeys, AnArchiveHasEachKeyOnceWhetherItRepeatsTheReferenceOrTheText)
{
    for (const bool sameObject : {true, false}) {
        BinaryDocument document;
        // Objects 0 to 2 of the archive are null, the dictionary and its class; the keys and values follow.
        BinaryDocument::Refs objects{document.string("$null"), 0, 0};
        BinaryDocument::Refs keys;
        BinaryDocument::Refs values;
        const auto archive = [&](BinaryDocument::Ref object) {
            objects.push_back(object);
            return document.uid(quint32(objects.size() - 1));
        };
        for (int i = 0; i < GetParam().count(); ++i) {
            if (sameObject && i >= GetParam().different)
                keys.push_back(keys[std::size_t(i % GetParam().different)]);
            else
                keys.push_back(archive(document.string(GetParam().key(i))));
            values.push_back(archive(document.string(QByteArray::number(i))));
        }
        const BinaryDocument::Refs fields{document.string("NS.keys"), document.string("NS.objects"),
                                          document.string("$class")};
        objects[1] =
            document.dictionary(fields, {document.array(keys), document.array(values), document.uid(2)});
        objects[2] = document.dictionary(
            {document.string("$classname"), document.string("$classes")},
            {document.string("NSDictionary"), document.array({document.string("NSDictionary")})});
        const BinaryDocument::Ref top = document.dictionary(
            {document.string("$top"), document.string("$objects")},
            {document.dictionary({document.string("root")}, {document.uid(1)}), document.array(objects)});
        const PropertyListDocument::Ptr read = unarchived(document.bytes(top));
        ASSERT_TRUE(read);
        expectEachKeyOnce(read->root(), GetParam());
    }
}

TEST_P(RepeatedKeys, ADictionaryInlinedInAnArchiveHasEachKeyOnce)
{
    QByteArray xml = "<dict><key>$top</key><dict><key>root</key><dict>";
    for (int i = 0; i < GetParam().count(); ++i)
        xml += "<key>" + GetParam().key(i) + "</key><string>" + QByteArray::number(i) + "</string>";
    const PropertyListDocument::Ptr read =
        unarchived(xml + "</dict></dict><key>$objects</key><array><string>$null</string></array></dict>");
    ASSERT_TRUE(read);
    expectEachKeyOnce(read->root(), GetParam());
}

TEST(RepeatedKeysOfShared, DictionariesThatShareAKeyArrayKeepTheirOwnValues)
{
    // More keys than an archive's reader copies for each dictionary, so that they refer to one list.
    constexpr int count = 40;
    QByteArray keys;
    QByteArray objects = "<string>$null</string>";
    const auto reference = [](int number) {
        return "<dict><key>CF$UID</key><integer>" + QByteArray::number(number) + "</integer></dict>";
    };
    // 1: the root, an array of the two dictionaries 2 and 3; 4: the keys; 5 and 6: classes.
    const auto dictionary = [&](const QByteArray &value) {
        return "<dict><key>NS.keys</key>" + reference(4) + "<key>NS.objects</key><array>" +
               ("<string>" + value + "</string>").repeated(count) + "<string>last " + value +
               "</string></array><key>$class</key>" + reference(5) + "</dict>";
    };
    const auto classNamed = [](const QByteArray &name) {
        return "<dict><key>$classname</key><string>" + name + "</string></dict>";
    };
    for (int i = 0; i < count; ++i)
        keys += "<string>" + QByteArray::number(i) + "</string>";
    objects += "<dict><key>NS.objects</key><array>" + reference(2) + reference(3) +
               "</array><key>$class</key>" + reference(6) + "</dict>" + dictionary("a") + dictionary("b") +
               "<array>" + keys + "<string>0</string></array>" + classNamed("NSDictionary") +
               classNamed("NSArray");
    const PropertyListDocument::Ptr read =
        unarchived("<dict><key>$top</key><dict><key>root</key>" + reference(1) +
                   "</dict><key>$objects</key><array>" + objects + "</array></dict>");
    ASSERT_TRUE(read);
    for (int i = 0; i < 2; ++i) {
        const PropertyListNode node = read->root().at(i);
        const QString value = i == 0 ? QStringLiteral("a") : QStringLiteral("b");
        ASSERT_EQ(node.count(), count);
        EXPECT_EQ(node.value(u"0").string(), QStringLiteral("last ") + value);
        EXPECT_EQ(node.value(u"1").string(), value);
        EXPECT_EQ(node.value(QString::number(count - 1)).string(), value);
    }
}
