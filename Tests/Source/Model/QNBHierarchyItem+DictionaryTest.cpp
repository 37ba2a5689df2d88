// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/KeyedUnarchiver.h"
#include "Platform/PropertyLists/PropertyList.h"
#include "Platform/PropertyLists/PropertyListDocument.h"
#include "Source/Model/QNBHierarchyItem.h"

#include <gtest/gtest.h>

namespace {

QVariantMap parsed(const char *xmlBody)
{
    const PropertyList::ReadResult result = PropertyList::read(
        "<?xml version=\"1.0\"?><plist version=\"1.0\">" + QByteArray(xmlBody) + "</plist>");
    EXPECT_TRUE(result) << qPrintable(result.error);
    return result.value.value_or(QVariant()).toMap();
}

PropertyListDocument::Ptr parsedNode(const QByteArray &xml)
{
    QString error;
    PropertyListDocument::Ptr document = PropertyListDocument::parse(xml, &error);
    EXPECT_TRUE(document) << qPrintable(error);
    return document;
}

QVariantMap permissionsOf(const char *digits)
{
    return QNBHierarchyItem::initWithDictionary(
               QVariantMap{{QStringLiteral("permissions"), QString::fromLatin1(digits)}})
        ->customPermissions();
}

QVariantMap triple(int u, int g, int o)
{
    return {{QStringLiteral("u"), u}, {QStringLiteral("g"), g}, {QStringLiteral("o"), o}};
}

QString writtenPermissions(const char *digits)
{
    return QNBHierarchyItem::initWithDictionary(
               QVariantMap{{QStringLiteral("permissions"), QString::fromLatin1(digits)}})
        ->toDictionary()
        .value(QStringLiteral("permissions"))
        .toString();
}

/// A document whose dictionaries are what a checked one never is: its root has the key "children" twice, each
/// time with two items.
class RepeatingSource final : public PropertyListSource
{
public:
    PropertyListType type(Handle node) const override
    {
        return node == Name       ? PropertyListType::String
               : node == Children ? PropertyListType::Array
                                  : PropertyListType::Dictionary;
    }
    QVariant scalar(Handle) const override { return name_; }
    const QString &string(Handle) const override { return name_; }
    bool boolean(Handle) const override { return false; }
    qsizetype count(Handle node) const override { return node == Item ? 0 : 2; }
    Handle element(Handle, qsizetype) const override { return Item; }
    Handle key(Handle, qsizetype) const override { return Name; }
    Handle valueAt(Handle, qsizetype) const override { return Children; }

    enum Node : Handle { Root, Name, Children, Item };

private:
    QString name_ = QStringLiteral("children");
};

/// A folder nested \a depth times, as a dictionary.
QVariantMap nested(int depth)
{
    QVariantMap item{{QStringLiteral("filename"), QStringLiteral("deepest")}};
    for (int level = 1; level < depth; ++level)
        item = {{QStringLiteral("isFolder"), true}, {QStringLiteral("children"), QVariantList{item}}};
    return item;
}

const QVariantMap sampleTree = {
    {QStringLiteral("filename"), QStringLiteral("Jobs")},
    {QStringLiteral("isFolder"), true},
    {QStringLiteral("color"), QStringLiteral("red")},
    {QStringLiteral("permissions"), QStringLiteral("755")},
    {QStringLiteral("children"),
     QVariantList{QVariantMap{{QStringLiteral("filename"), QStringLiteral("brief.txt")},
                              {QStringLiteral("contentFilename"), QStringLiteral("Brief.txt")},
                              {QStringLiteral("permissions"), QStringLiteral("640")}},
                  QVariantMap{{QStringLiteral("filename"), QStringLiteral("Büro 📁")},
                              {QStringLiteral("isFolder"), true},
                              {QStringLiteral("permissions"), QStringLiteral("764")}}}}};

} // namespace

TEST(QNBHierarchyItemDictionary, FolderWithAnEmptyChildrenArrayWritesBackWithoutChildrenAndUid)
{
    const QNBHierarchyItemPtr item =
        QNBHierarchyItem::initWithDictionary(QVariantMap{{QStringLiteral("filename"), QStringLiteral("A")},
                                                         {QStringLiteral("isFolder"), true},
                                                         {QStringLiteral("children"), QVariantList()}});
    EXPECT_TRUE(item->isDirectory());
    EXPECT_EQ(item->numberOfChildren(), 0u);
    const QVariantMap written = item->toDictionary();
    EXPECT_EQ(written.value(QStringLiteral("filename")).toString(), QStringLiteral("A"));
    EXPECT_EQ(written.value(QStringLiteral("isFolder")), QVariant(true));
    EXPECT_FALSE(written.contains(QStringLiteral("children")));
    EXPECT_FALSE(written.contains(QStringLiteral("uid")));
}

TEST(QNBHierarchyItemDictionary, FileWrittenBackNeverContainsIsFolder)
{
    const QNBHierarchyItemPtr item =
        QNBHierarchyItem::initWithDictionary(QVariantMap{{QStringLiteral("isFolder"), false}});
    EXPECT_EQ(item->toDictionary().keys(), QStringList{QStringLiteral("permissions")});
}

TEST(QNBHierarchyItemDictionary, PermissionsAreThreeDigitsAndOtherLengthsAreIgnored)
{
    EXPECT_EQ(permissionsOf("750"), triple(7, 5, 0));
    EXPECT_EQ(writtenPermissions("750"), QStringLiteral("750"));
    EXPECT_EQ(permissionsOf("7500"), triple(7, 6, 4));
    EXPECT_EQ(writtenPermissions("7500"), QStringLiteral("764"));
    EXPECT_EQ(permissionsOf("75"), triple(7, 6, 4));
    EXPECT_EQ(writtenPermissions("75"), QStringLiteral("764"));
}

TEST(QNBHierarchyItemDictionary, PermissionCharactersThatAreNoDigitsReadAsZero)
{
    EXPECT_EQ(permissionsOf("7x9"), triple(7, 0, 9));
    EXPECT_EQ(permissionsOf("-1 "), triple(0, 1, 0));
}

TEST(QNBHierarchyItemDictionary, PermissionsWithoutAnyEntryAreNotWritten)
{
    const QNBHierarchyItemPtr item = QNBHierarchyItem::init();
    item->setCustomPermissions({});
    EXPECT_FALSE(item->toDictionary().contains(QStringLiteral("permissions")));
    item->setCustomPermissions({{QStringLiteral("g"), 5}});
    EXPECT_EQ(item->toDictionary().value(QStringLiteral("permissions")).toString(), QStringLiteral("050"));
    item->setCustomPermissions(triple(13, 6, 4));
    EXPECT_EQ(item->toDictionary().value(QStringLiteral("permissions")).toString(), QStringLiteral("1364"));
}

TEST(QNBHierarchyItemDictionary, WritingWithUidAndReadingKeepsEveryUid)
{
    const QNBHierarchyItemPtr item = QNBHierarchyItem::initWithDictionary(sampleTree);
    const QNBHierarchyItemPtr again = QNBHierarchyItem::initWithDictionary(item->toDictionaryWithUID(true));
    EXPECT_EQ(again->uid(), item->uid());
    ASSERT_EQ(again->numberOfChildren(), 2u);
    EXPECT_EQ(again->childAtIndex(0)->uid(), item->childAtIndex(0)->uid());
    EXPECT_EQ(again->childAtIndex(1)->uid(), item->childAtIndex(1)->uid());
    EXPECT_EQ(again->toDictionaryWithUID(true), item->toDictionaryWithUID(true));
}

TEST(QNBHierarchyItemDictionary, AUidOfAnotherShapeIsKeptAsItIs)
{
    for (const QString &uid : {QStringLiteral("abc"), QString(40, u'A'), QString(40, u'z')}) {
        const QNBHierarchyItemPtr item =
            QNBHierarchyItem::initWithDictionary(QVariantMap{{QStringLiteral("uid"), uid}});
        EXPECT_EQ(item->uid(), uid);
        EXPECT_FALSE(item->isEqualTo(*QNBHierarchyItem::init()));
        EXPECT_TRUE(item->isEqualTo(*item));
    }
}

TEST(QNBHierarchyItemDictionary, LoadingTwiceGivesDifferentUids)
{
    EXPECT_NE(QNBHierarchyItem::initWithDictionary(sampleTree)->uid(),
              QNBHierarchyItem::initWithDictionary(sampleTree)->uid());
}

TEST(QNBHierarchyItemDictionary, TreeRoundTripsWithOrderAndParents)
{
    const QNBHierarchyItemPtr parent = QNBHierarchyItem::init();
    const QNBHierarchyItemPtr item = QNBHierarchyItem::initWithDictionary(sampleTree, parent);
    EXPECT_EQ(item->toDictionary(), sampleTree);
    EXPECT_EQ(item->parent(), parent);
    EXPECT_EQ(item->childAtIndex(1)->parent(), item);
    EXPECT_EQ(item->childAtIndex(0)->contentFilename(), QStringLiteral("Brief.txt"));
}

TEST(QNBHierarchyItemDictionary, ItemDictionaryHoldsWhatSaysSomething)
{
    EXPECT_EQ(QNBHierarchyItem::itemDictionaryWithFilename(QString(), false, nullptr), QVariantMap());
    const QVariantList none;
    EXPECT_EQ(QNBHierarchyItem::itemDictionaryWithFilename(QStringLiteral("a"), true, &none),
              (QVariantMap{{QStringLiteral("filename"), QStringLiteral("a")},
                           {QStringLiteral("children"), QVariantList()},
                           {QStringLiteral("isFolder"), true}}));
}

TEST(QNBHierarchyItemDictionary, IsFolderIsABooleanValue)
{
    const auto isFolder = [](const char *value) {
        const QByteArray body = "<dict><key>isFolder</key>" + QByteArray(value) + "</dict>";
        return QNBHierarchyItem::initWithDictionary(parsed(body.constData()))->isDirectory();
    };
    EXPECT_TRUE(isFolder("<true/>"));
    EXPECT_FALSE(isFolder("<false/>"));
    EXPECT_TRUE(isFolder("<integer>1</integer>"));
    EXPECT_FALSE(isFolder("<integer>0</integer>"));
    EXPECT_TRUE(isFolder("<real>0.5</real>"));
    EXPECT_TRUE(isFolder("<string>YES</string>"));
    EXPECT_FALSE(isFolder("<string>no</string>"));
    EXPECT_FALSE(isFolder("<array/>"));
}

TEST(QNBHierarchyItemDictionary, WrongTypesCountAsAbsentAndAreReported)
{
    const QVariantMap wrong = {{QStringLiteral("filename"), 12},
                               {QStringLiteral("color"), QVariantList()},
                               {QStringLiteral("contentFilename"), true},
                               {QStringLiteral("permissions"), 755},
                               {QStringLiteral("uid"), QByteArray("x")},
                               {QStringLiteral("isFolder"), QVariantMap()},
                               {QStringLiteral("children"), QStringLiteral("none")}};
    const PropertyListDocument::Ptr document = PropertyListDocument::fromVariant(wrong);
    QNBHierarchyItem::ReadReport report;
    const QNBHierarchyItemPtr item = QNBHierarchyItem::initWithDictionary(document->root(), {}, &report);
    EXPECT_EQ(report.losses, 7);
    EXPECT_FALSE(report.first.isEmpty());
    EXPECT_EQ(item->toDictionary(), (QVariantMap{{QStringLiteral("permissions"), QStringLiteral("764")}}));
    EXPECT_EQ(item->uid().size(), 40);
}

TEST(QNBHierarchyItemDictionary, KeysThatAreNoItemsAreReported)
{
    const QVariantMap item = {{QStringLiteral("filename"), QStringLiteral("a")},
                              {QStringLiteral("Filename"), QStringLiteral("b")},
                              {QStringLiteral("comment"), 1}};
    const PropertyListDocument::Ptr document = PropertyListDocument::fromVariant(item);
    QNBHierarchyItem::ReadReport report;
    EXPECT_EQ(QNBHierarchyItem::initWithDictionary(document->root(), {}, &report)->filename(),
              QStringLiteral("a"));
    EXPECT_EQ(report.losses, 2);
}

TEST(QNBHierarchyItemDictionary, ChildrenThatAreNoDictionariesAreLeftOut)
{
    const QVariantMap folder = {
        {QStringLiteral("children"),
         QVariantList{1, QVariantMap{{QStringLiteral("filename"), QStringLiteral("kept")}}, QVariantList()}}};
    const PropertyListDocument::Ptr document = PropertyListDocument::fromVariant(folder);
    QNBHierarchyItem::ReadReport report;
    const QNBHierarchyItemPtr item = QNBHierarchyItem::initWithDictionary(document->root(), {}, &report);
    ASSERT_EQ(item->numberOfChildren(), 1u);
    EXPECT_EQ(item->childAtIndex(0)->filename(), QStringLiteral("kept"));
    EXPECT_EQ(report.losses, 2);
}

TEST(QNBHierarchyItemDictionary, ANodeThatIsNoDictionaryReadsAsAnEmptyOne)
{
    const QNBHierarchyItemPtr item = QNBHierarchyItem::initWithDictionary(PropertyListNode());
    EXPECT_EQ(item->toDictionary(), QNBHierarchyItem::init()->toDictionary());
}

TEST(QNBHierarchyItemDictionary, PropertyListAndArchiveHoldTheSameAsTheDictionary)
{
    const QNBHierarchyItemPtr item = QNBHierarchyItem::initWithDictionary(sampleTree);
    BinaryPropertyListWriter writer;
    const PropertyList::WriteResult list = writer.finish(item->encode(writer));
    ASSERT_TRUE(list) << qPrintable(list.error);
    EXPECT_EQ(PropertyList::read(*list.bytes).value, QVariant(sampleTree));
    KeyedArchiver archiver;
    const PropertyList::WriteResult archive = archiver.finish(item->encode(archiver));
    ASSERT_TRUE(archive) << qPrintable(archive.error);
    EXPECT_EQ(KeyedUnarchiver::unarchiveObject(*archive.bytes).value, QVariant(sampleTree));
}

TEST(QNBHierarchyItemDictionary, OfRepeatedKeysTheLastCountsAndNothingIsReadIntoItemsThatAreGone)
{
    const QNBHierarchyItemPtr item =
        QNBHierarchyItem::initWithDictionary(parsedNode("<dict><key>filename</key><string>first</string>"
                                                        "<key>children</key><array><dict/><dict/></array>"
                                                        "<key>children</key><array><dict/></array>"
                                                        "<key>filename</key><string>last</string></dict>")
                                                 ->root());
    EXPECT_EQ(item->filename(), QStringLiteral("last"));
    EXPECT_EQ(item->numberOfChildren(), 1u);
}

TEST(QNBHierarchyItemDictionary, TheReaderHoldsOnToTheItemsItStillHasToRead)
{
    const PropertyListDocument document(std::make_unique<RepeatingSource>(), RepeatingSource::Root);
    const QNBHierarchyItemPtr item = QNBHierarchyItem::initWithDictionary(document.root());
    ASSERT_EQ(item->numberOfChildren(), 2u);
    EXPECT_EQ(item->childAtIndex(1)->parent(), item);
}

TEST(QNBHierarchyItemDictionary, DeepestTreeThatReadersAllowIsReadAndWritten)
{
    const int depth = PropertyList::Limits::depth / 2 - 1;
    const QNBHierarchyItemPtr item = QNBHierarchyItem::initWithDictionary(nested(depth));
    BinaryPropertyListWriter writer;
    const PropertyList::WriteResult list = writer.finish(item->encode(writer));
    ASSERT_TRUE(list) << qPrintable(list.error);
    QString error;
    const PropertyListDocument::Ptr document = PropertyListDocument::parse(*list.bytes, &error);
    ASSERT_TRUE(document) << qPrintable(error);
    const QNBHierarchyItemPtr root = QNBHierarchyItem::initWithDictionary(document->root());
    int levels = 1;
    for (const QNBHierarchyItem *at = root.get(); at->numberOfChildren() == 1; ++levels)
        at = at->childAtIndex(0).get();
    EXPECT_EQ(levels, depth);
}

TEST(QNBHierarchyItemDictionary, ATreeOverTheLimitIsNotWrittenAtAll)
{
    const QNBHierarchyItemPtr root = QNBHierarchyItem::init();
    QNBHierarchyItemPtr deepest = root;
    for (int depth = 0; depth < PropertyList::Limits::depth; ++depth) {
        const QNBHierarchyItemPtr child = QNBHierarchyItem::init();
        deepest->addChild(child);
        deepest = child;
    }
    BinaryPropertyListWriter writer;
    const PropertyList::WriteResult list = writer.finish(root->encode(writer));
    EXPECT_FALSE(list);
    EXPECT_FALSE(list.error.isEmpty());
}
