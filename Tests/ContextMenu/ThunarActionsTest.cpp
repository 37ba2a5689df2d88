// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/ThunarActions.h"

#include <QByteArrayList>
#include <gtest/gtest.h>

namespace {

const QByteArrayList ours = {"<action>\n\t<unique-id>quenby-1</unique-id>\n</action>",
                             "<action>\n\t<unique-id>quenby-2</unique-id>\n</action>"};
const QByteArray block = ours.join('\n') + '\n';

QByteArray withActions(const QByteArray &file, const QByteArrayList &actions)
{
    QString error;
    const std::optional<QByteArray> result = ThunarActions::withActions(file, actions, &error);
    EXPECT_TRUE(result) << qPrintable(error) << '\n' << file.constData();
    return result.value_or("failed");
}

/// Files of other people, in every form that they may have.
const QByteArray theirs[] = {
    ThunarActions::emptyFile(),
    "<actions></actions>",
    "<actions>\n</actions>",
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<actions>\n<action>\n\t<icon>a</icon>\n"
    "\t<unique-id>1700000000000000-1</unique-id>\n</action>\n</actions>",
    "\xef\xbb\xbf<actions><action><name>mark</name></action></actions>\n",
    "<actions>\r\n  <action>\r\n    <name>lines</name>\r\n  </action>\r\n</actions>\r\n",
    "<!-- </actions> <action> --><actions><action><name><![CDATA[</actions><unique-id>quenby-]]></name>"
    "<!-- <unique-id>quenby-1</unique-id> --></action></actions ><!-- after -->\n\n",
    "<!DOCTYPE actions [\n <!ELEMENT actions (action)+>\n <!ENTITY x \"</actions>\">\n]>\n"
    "<actions >\n\n <action a='>' b=\"/>\"><name>&#x3c;&amp;&lt;\xc3\xbc \xe6\xbc\xa2 \xf0\x9f\x98\x80</name>"
    "</action>\n\n</actions>  \n",
    "<actions><action/><other><action><unique-id>quenby-5</unique-id></action></other>text</actions>",
    "<actions><action><unique-id>not-quenby-5</unique-id><name>quenby-5</name></action></actions>",
    "<actions><action><deeper><unique-id>quenby-5</unique-id></deeper></action></actions>",
};

} // namespace

TEST(ThunarActionsTest, ActionsGoBehindAllOthers)
{
    EXPECT_EQ(withActions("<actions>\n<action><name>x</name></action>\n</actions>\n", ours),
              "<actions>\n<action><name>x</name></action>\n" + block + "</actions>\n");
}

TEST(ThunarActionsTest, EverythingElseStaysByteForByte)
{
    for (const QByteArray &file : theirs) {
        const QByteArray merged = withActions(file, ours);
        EXPECT_TRUE(merged.contains(block)) << merged.constData();
        EXPECT_EQ(QByteArray(merged).replace(block, ""), file);
        EXPECT_EQ(withActions(merged, ours), merged);
        EXPECT_EQ(withActions(merged, {}), file);
        EXPECT_EQ(withActions(file, {}), file);
    }
}

TEST(ThunarActionsTest, OursAreReplacedWhereTheyAre)
{
    const QByteArray file = "<actions>\n<action><name>a</name></action>\n<action><icon/><unique-id> quenby-7 "
                            "</unique-id></action>\n<action><name>b</name></action>\n"
                            "<action><unique-id>quenby-x</unique-id></action></actions>\n";
    EXPECT_EQ(withActions(file, ours), "<actions>\n<action><name>a</name></action>\n" + block +
                                           "<action><name>b</name></action>\n</actions>\n");
    EXPECT_EQ(withActions(file, {}),
              "<actions>\n<action><name>a</name></action>\n<action><name>b</name></action>\n</actions>\n");
}

TEST(ThunarActionsTest, ADamagedFileIsRefused)
{
    for (const char *file :
         {"", "no XML", "<actions>", "<actions><action></actions>",
          "<actions><action><name>a</action></actions>", "<actions></actions><actions></actions>",
          "<others></others>", "<actions>&unknown;</actions>",
          "<actions><action><unique-id>quenby-1</unique-id></action>", "<actions></actions>rest",
          "<actions>\xff</actions>", "<actions>\x01</actions>", "<actions/>", "\xff\xfe<"}) {
        QString error;
        EXPECT_FALSE(ThunarActions::withActions(file, ours, &error)) << file;
        EXPECT_FALSE(error.isEmpty()) << file;
    }
}

TEST(ThunarActionsTest, AFileInAnotherEncodingIsRefused)
{
    QString error;
    EXPECT_FALSE(ThunarActions::withActions(
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><actions>\xfc</actions>", ours, &error));
    EXPECT_FALSE(error.isEmpty());
}
