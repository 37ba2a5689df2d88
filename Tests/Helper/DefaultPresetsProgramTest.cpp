// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Helper/HelperFixture.h"

#include "Platform/PropertyLists/PropertyList.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>

#include <array>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/xattr.h>

using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

namespace {

/// What a preset says of an item, or what the disk does.
struct Item
{
    QString path;
    bool isFolder = false;
    uint mode = 0;
    uint label = 0;
    QByteArray bytes;

    friend bool operator==(const Item &, const Item &) = default;
    friend void PrintTo(const Item &item, std::ostream *stream)
    {
        *stream << qPrintable(item.path) << (item.isFolder ? "/ " : " ") << std::oct << item.mode << " label "
                << item.label << ", " << item.bytes.size() << " bytes";
    }
};

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

class DefaultPresetsProgramTest : public HelperFixture
{
protected:
    QVariantList presets() const
    {
        const PropertyList::ReadResult result =
            PropertyList::read(contentsOf(resources() + text("/DefaultPresets.plist")));
        EXPECT_TRUE(result) << qPrintable(result.error);
        return result.value->toList();
    }

    /// In their order, each folder before what is in it.
    static std::vector<Item> itemsOf(const QVariantMap &preset)
    {
        std::vector<Item> items;
        addChildren(preset.value(text("fileHierarchy")).toMap(), QString(), items);
        return items;
    }
    static void sortByPath(std::vector<Item> &items)
    {
        std::sort(items.begin(), items.end(),
                  [](const Item &left, const Item &right) { return left.path < right.path; });
    }
    /// The paths of what \a created says that was made, in that order.
    static QStringList pathsMadeBy(const Ended &created)
    {
        static const QRegularExpression line(text("^create (?:folder|file) (.*) \\([0-7]{3}[,)]"));
        QStringList paths;
        const QJsonObject report = created.json().object().value(text("creations"))[0].toObject();
        for (const QJsonValue &operation : report.value(text("operations")).toArray()) {
            if (const QRegularExpressionMatch match = line.match(operation.toString()); match.hasMatch())
                paths.append(match.captured(1));
        }
        return paths;
    }

    std::vector<Item> itemsOnDisk() const
    {
        std::vector<Item> items;
        for (const QString &entry : tree()) {
            Item item;
            item.isFolder = entry.endsWith(u'/');
            item.path = item.isFolder ? entry.chopped(1) : entry;
            const QByteArray path = QFile::encodeName(target() + u'/' + item.path);
            struct stat status = {};
            EXPECT_EQ(::lstat(path.constData(), &status), 0);
            item.mode = status.st_mode & 07777;
            std::array<unsigned char, 32> information{};
            if (::lgetxattr(path.constData(), "user.com.apple.FinderInfo", information.data(),
                            information.size()) == ssize_t(information.size()))
                item.label = (information[9] >> 1) & 7;
            if (!item.isFolder)
                item.bytes = contentsOf(target() + u'/' + item.path);
            items.push_back(item);
        }
        sortByPath(items);
        return items;
    }

private:
    static void addChildren(const QVariantMap &folder, const QString &prefix, std::vector<Item> &items)
    {
        static const QStringList colors = {QString(),    text("gray"),   text("green"), text("purple"),
                                           text("blue"), text("yellow"), text("red"),   text("orange")};
        for (const QVariant &child : folder.value(text("children")).toList()) {
            const QVariantMap dictionary = child.toMap();
            Item item;
            item.path = prefix + dictionary.value(text("filename")).toString();
            item.isFolder = dictionary.value(text("isFolder")).toBool();
            item.mode = dictionary.value(text("permissions"), text("764")).toString().toUInt(nullptr, 8);
            item.label = uint(colors.indexOf(dictionary.value(text("color")).toString()));
            const QString content = dictionary.value(text("contentFilename")).toString();
            if (!content.isEmpty())
                item.bytes =
                    contentsOf(resources() + text("/QNB Default AppSupport/File Content/") + content);
            items.push_back(item);
            if (item.isFolder)
                addChildren(dictionary, item.path + u'/', items);
        }
    }
};

} // namespace

TEST_F(DefaultPresetsProgramTest, EachIsCreatedAsItIsDescribedAndUndone)
{
    const QVariantList all = presets();
    ASSERT_FALSE(all.isEmpty());
    for (const QVariant &entry : all) {
        const QVariantMap preset = entry.toMap();
        const QString label = preset.value(text("label")).toString();
        SCOPED_TRACE(qPrintable(label));
        const Ended created = create(label, {text("--no-script"), text("--json")});
        ASSERT_EQ(created.code, 0) << created.errors.constData();
        std::vector<Item> expected = itemsOf(preset);
        EXPECT_FALSE(expected.empty());
        QStringList order;
        for (const Item &item : expected)
            order.append(item.path);
        EXPECT_EQ(pathsMadeBy(created), order);
        sortByPath(expected);
        EXPECT_THAT(itemsOnDisk(), ElementsAreArray(expected));
        const Ended undone = run({text("--undo")});
        EXPECT_EQ(undone.code, 0) << undone.errors.constData();
        EXPECT_THAT(tree(), IsEmpty());
    }
}

TEST_F(DefaultPresetsProgramTest, TheirScriptsRunWithoutBeingAskedAbout)
{
    for (const QVariant &entry : presets()) {
        const QVariantMap preset = entry.toMap();
        SCOPED_TRACE(qPrintable(preset.value(text("label")).toString()));
        const Ended created = create(preset.value(text("label")).toString(), {text("--json")});
        EXPECT_EQ(created.code, 0) << created.errors.constData();
        const QJsonObject script =
            created.json().object().value(text("creations"))[0].toObject().value(text("script")).toObject();
        EXPECT_EQ(script.value(text("outcome")), text("exited"));
        for (const Item &item : itemsOnDisk())
            EXPECT_FALSE(item.bytes.contains("[[PROJECT NAME]]")) << qPrintable(item.path);
        ASSERT_TRUE(QDir(target()).removeRecursively());
        ASSERT_TRUE(QDir().mkpath(target()));
    }
}
