// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBUniqueName.h"

#include "Source/Model/QNBHierarchyItem.h"

#include <QSet>
#include <QStringList>
#include <ctime>
#include <gtest/gtest.h>
#include <random>

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

QStringList names(std::initializer_list<const char *> utf8)
{
    QStringList list;
    for (const char *name : utf8)
        list.append(text(name));
    return list;
}

/// Unpaired surrogates become other characters that have no case: the library's own function makes one
/// character of all that it comes to.
QString lowerCase(QString name)
{
    constexpr int privateUse = 0xE000;
    for (qsizetype i = 0; i < name.size(); ++i) {
        if (name[i].isHighSurrogate() && i + 1 < name.size() && name[i + 1].isLowSurrogate())
            ++i;
        else if (name[i].isSurrogate())
            name[i] = QChar(privateUse + name[i].unicode() % 0x800);
    }
    return name.toLower();
}

/// The rule word by word: a set of the lower-case names, and one candidate after the other.
QString literally(const QString &base, const QString &extension, const QStringList &taken)
{
    QSet<QString> lowerCaseNames;
    for (const QString &name : taken) {
        if (!name.isEmpty())
            lowerCaseNames.insert(lowerCase(name));
    }
    const QString suffix = extension.isEmpty() ? QString() : u'.' + extension;
    QString candidate = base + suffix;
    for (int counter = 1; lowerCaseNames.contains(lowerCase(candidate)); ++counter)
        candidate = base + u'-' + QString::number(counter) + suffix;
    return candidate;
}

QNBHierarchyItemPtr itemCalled(const QString &name, bool isFolder = false)
{
    return QNBHierarchyItem::initWithDictionary(
        QNBHierarchyItem::itemDictionaryWithFilename(name, isFolder, nullptr));
}

QNBHierarchyItemPtr folderOf(const QStringList &childNames)
{
    QNBHierarchyItemPtr folder = itemCalled(QStringLiteral("folder"), true);
    for (const QString &name : childNames)
        folder->addChild(itemCalled(name));
    return folder;
}

TEST(QNBUniqueNameTest, AFreeNameStays)
{
    EXPECT_EQ(QNBUniqueName(text("Untitled"), {}, QStringList()), u"Untitled");
    EXPECT_EQ(QNBUniqueName(text("notes"), text("txt"), names({"notes"})), u"notes.txt");
    EXPECT_EQ(QNBUniqueName(text("Untitled"), {}, names({"Untitled-1", "Untitled-2"})), u"Untitled");
}

TEST(QNBUniqueNameTest, TheCounterStartsAtOneAndFindsTheFirstGap)
{
    EXPECT_EQ(QNBUniqueName(text("Untitled"), {}, names({"untitled"})), u"Untitled-1");
    EXPECT_EQ(QNBUniqueName(text("Untitled"), {}, names({"Untitled-3", "untitled", "UNTITLED-1"})),
              u"Untitled-2");
    EXPECT_EQ(QNBUniqueName(text("a"), {}, names({"a", "a-1", "a-1", "a-2", "a-2"})), u"a-3");
}

TEST(QNBUniqueNameTest, TheCounterStandsBeforeTheExtension)
{
    EXPECT_EQ(QNBUniqueName(text("notes"), text("txt"), names({"Notes.TXT"})), u"notes-1.txt");
    EXPECT_EQ(QNBUniqueName(text("notes"), text("TXT"), names({"Notes.TXT", "notes-1.txt"})), u"notes-2.TXT");
}

TEST(QNBUniqueNameTest, OnlyTheCounterAsItIsWrittenCounts)
{
    for (const char *other : {"a-01", "a-007", "a--1", "a-+1", "a-0", "a- 1", "a-1 ", "a-1x", "a-x1", "a-",
                              "a-99999999999999999999", "a-\u0661", "a-1.txt", "a1", "aa-1"})
        EXPECT_EQ(QNBUniqueName(text("a"), {}, names({"a", other})), u"a-1") << other;
    EXPECT_EQ(QNBUniqueName(text("a"), text("b"), names({"a.b", "a-.b", "a-1"})), u"a-1.b");
}

TEST(QNBUniqueNameTest, EmptyNamesAreInNobodysWay)
{
    EXPECT_EQ(QNBUniqueName({}, {}, names({"", ""})), u"");
    EXPECT_EQ(QNBUniqueName({}, text("txt"), names({"", ".TXT", "-1.txt"})), u"-2.txt");
}

TEST(QNBUniqueNameTest, CaseIsIgnoredBeyondAscii)
{
    EXPECT_EQ(QNBUniqueName(text("Übersicht"), {}, names({"ÜBERSICHT", "üBERSICHT-1"})), u"Übersicht-2");
    EXPECT_EQ(QNBUniqueName(text("ẞ"), {}, names({"ß"})), u"ẞ-1");
    EXPECT_EQ(QNBUniqueName(text("k"), {}, names({"\u212A"})), u"k-1") << "the Kelvin sign";
    // One character that becomes two in lower case, and two letters that are one only in upper case.
    EXPECT_EQ(QNBUniqueName(text("İ"), {}, names({"i\u0307", "İ-1"})), u"İ-2");
    EXPECT_EQ(QNBUniqueName(text("ΟΔΟΣ"), {}, names({"οδος"})), u"ΟΔΟΣ");
}

TEST(QNBUniqueNameTest, CaseIsIgnoredBesideUnpairedSurrogates)
{
    for (const QChar unpaired : {QChar(0xD801), QChar(0xDC00)}) {
        EXPECT_EQ(QNBUniqueName(text("A") + unpaired, {}, QStringList{text("a") + unpaired}),
                  text("A") + unpaired + text("-1"));
        EXPECT_EQ(QNBUniqueName(text("İ"), QString(unpaired), QStringList{text("i\u0307.") + unpaired}),
                  text("İ-1.") + unpaired);
        EXPECT_EQ(QNBUniqueName(text("A") + unpaired, {}, names({"a\uFFFD"})), text("A") + unpaired)
            << "another character";
    }
}

TEST(QNBUniqueNameTest, AHundredThousandNumberedNames)
{
    QStringList taken{text("Untitled")};
    for (int number = 100'000; number > 0; --number)
        taken.append(QStringLiteral("Untitled-%1").arg(number));
    EXPECT_EQ(QNBUniqueName(text("untitled"), {}, taken), u"untitled-100001");
    taken[50'000].clear();
    EXPECT_EQ(QNBUniqueName(text("untitled"), {}, taken), u"untitled-50001");
}

/// In seconds, what some thousand items take that share one name of a megabyte. Each look at the whole name
/// would add a millisecond.
constexpr double mostSeconds = 1;

TEST(QNBUniqueNameTest, AVeryLongNameIsLookedAtOnceHoweverManyItemsShareIt)
{
    const QString name(1'000'000, u'P');
    const QStringList taken(2'000, name);
    const std::clock_t start = std::clock();
    EXPECT_EQ(QNBUniqueName(text("Untitled"), {}, taken), u"Untitled");
    EXPECT_EQ(QNBUniqueName(name.toLower(), {}, taken), name.toLower() + text("-1"));
    EXPECT_LT(double(std::clock() - start) / CLOCKS_PER_SEC, mostSeconds);
}

TEST(UniqueNameForLevelTest, AVeryLongNameIsLookedAtOnceHoweverManyItemsShareIt)
{
    const QString name(1'000'000, u'P');
    const QNBHierarchyItemPtr level = folderOf({});
    for (int i = 0; i < 2'000; ++i) {
        level->addChild(itemCalled({}));
        level->childAtIndex(i)->setFilename(name);
    }
    const std::clock_t start = std::clock();
    level->indexChildNames();
    EXPECT_EQ(uniqueNameForLevel(*level, text("Untitled"), nullptr), u"Untitled");
    EXPECT_LT(double(std::clock() - start) / CLOCKS_PER_SEC, mostSeconds);
}

TEST(QNBUniqueNameTest, IsTheRuleForRandomNames)
{
    std::mt19937 random(20'260'521);
    const auto below = [&random](int bound) {
        return static_cast<int>(random() % static_cast<unsigned>(bound));
    };
    const QStringList pieces = names({"a",      "A",  "b", "-", "-1", ".", "txt",    "TXT", "0",         "1",
                                      "2",      "10", "I", "İ", "ı",  "ß", "ẞ",      "Σ",   "σ",         "ς",
                                      "\u212A", "k",  "Ǆ", "ǆ", "𐐀",  "𐐨", "\u0661", " ",   "4294967297"}) +
                               QStringList{QString(QChar(0xD801)), QString(QChar(0xDC00))};
    const auto word = [&] {
        QString result;
        for (int count = below(4); count > 0; --count)
            result += pieces.at(below(static_cast<int>(pieces.size())));
        return result;
    };
    const auto inOtherCase = [&](const QString &name) {
        switch (below(3)) {
        case 0:
            return name.toUpper();
        case 1:
            return name.toLower();
        default:
            return name;
        }
    };
    int numbered = 0;
    for (int round = 0; round < 20'000; ++round) {
        const QString base = word();
        const QString extension = below(2) ? QString() : word();
        const QString suffix = extension.isEmpty() ? QString() : u'.' + extension;
        QStringList taken;
        for (int count = below(12); count > 0; --count) {
            const QString number = below(4) ? QString::number(below(6)) : word();
            const QString counter = below(3) ? u'-' + number : QString();
            taken.append(below(6) ? inOtherCase(base + counter + suffix) : word());
        }
        const QString expected = literally(base, extension, taken);
        numbered += expected != base + suffix;
        ASSERT_EQ(QNBUniqueName(base, extension, taken), expected)
            << "base " << qPrintable(base) << ", extension " << qPrintable(extension) << ", round " << round;
    }
    EXPECT_GT(numbered, 5'000) << "the names hardly ever clash";
}

TEST(UniqueNameForLevelTest, CountsTheChildrenOfTheLevel)
{
    const QNBHierarchyItemPtr level = folderOf(names({"Untitled", "UNTITLED-1", ""}));
    EXPECT_EQ(uniqueNameForLevel(*level, text("Untitled"), nullptr), u"Untitled-2");
    EXPECT_EQ(uniqueNameForLevel(*level, text("Untitled"), nullptr, text("txt")), u"Untitled.txt");
    EXPECT_EQ(uniqueNameForLevel(*folderOf({}), text("Untitled"), nullptr), u"Untitled");
}

TEST(UniqueNameForLevelTest, AnItemNeverClashesWithItself)
{
    const QNBHierarchyItemPtr level = folderOf(names({"a.txt", "b.txt"}));
    const QNBHierarchyItemPtr first = level->childAtIndex(0);
    EXPECT_EQ(uniqueNameForFilename(text("A.TXT"), *level, first.get()), u"A.TXT");
    EXPECT_EQ(uniqueNameForFilename(text("a.txt"), *level, level->childAtIndex(1).get()), u"a-1.txt");
    // By uid: a copy of the item is the item.
    const QNBHierarchyItemPtr copy = QNBHierarchyItem::initWithDictionary(first->toDictionaryWithUID(true));
    EXPECT_EQ(uniqueNameForFilename(text("a.txt"), *level, copy.get()), u"a.txt");
}

TEST(UniqueNameForFilenameTest, SplitsOffOnlyTheLastExtension)
{
    const QNBHierarchyItemPtr level =
        folderOf(names({"archive.tar.gz", ".profile", "done.", "notes", "a.txt"}));
    EXPECT_EQ(uniqueNameForFilename(text("archive.tar.gz"), *level, nullptr), u"archive.tar-1.gz");
    EXPECT_EQ(uniqueNameForFilename(text(".profile"), *level, nullptr), u".profile-1");
    EXPECT_EQ(uniqueNameForFilename(text("done."), *level, nullptr), u"done.-1");
    EXPECT_EQ(uniqueNameForFilename(text("Notes"), *level, nullptr), u"Notes-1");
    EXPECT_EQ(uniqueNameForFilename(text("new.txt"), *level, nullptr), u"new.txt");
}

} // namespace
